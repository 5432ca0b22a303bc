// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Domain.hpp"
#include "../Output.hpp"
#include "../Printable.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <set>
#include <string_view>

namespace ovra::plex::tool
{

namespace
{

std::set<std::string> typesOf(const std::vector<fastdds::AnnouncedEndpoint>& endpoints)
{
    std::set<std::string> names;
    for (const auto& endpoint : endpoints) {
        names.insert(endpoint.type);
    }
    return names;
}

Json listOf(const Scene& scene, const std::vector<fastdds::AnnouncedEndpoint>& endpoints)
{
    Json json = Json::array();
    for (const auto& endpoint : endpoints) {
        json.push_back(toJson(scene, endpoint));
    }
    return json;
}

Json toJson(const Scene& scene, std::uint32_t domain)
{
    Json json{{"domain", domain}, {"participants", Json::array()}, {"topics", Json::array()}};
    for (const auto& [prefix, participant] : scene.participants) {
        json["participants"].push_back(tool::toJson(participant));
    }
    for (const auto& topic : scene.topics()) {
        const auto writers = scene.writersOf(topic);
        const auto readers = scene.readersOf(topic);
        auto types = typesOf(writers);
        types.merge(typesOf(readers));
        json["topics"].push_back({{"name", topic},
                                  {"types", types},
                                  {"writers", listOf(scene, writers)},
                                  {"readers", listOf(scene, readers)}});
    }
    return json;
}

void showParticipants(const Scene& scene)
{
    std::vector<std::vector<std::string>> rows{{"PARTICIPANT", "DDS", "HOST", "PROCESS"}};
    for (const auto& [prefix, participant] : scene.participants) {
        const Place place = placeOf(participant);
        rows.push_back({place.name, place.vendor, place.host, place.process});
    }
    for (bool isHead = true; const auto& line : aligned(rows)) {
        writeLine(isHead ? coloured(line, Colour::Dim) : line);
        isHead = false;
    }
}

void addRows(std::vector<std::vector<std::string>>& rows, const Scene& scene, const char* kind,
             const std::vector<fastdds::AnnouncedEndpoint>& endpoints)
{
    for (const auto& endpoint : endpoints) {
        rows.push_back({std::string("  ") + kind, shortPlace(scene, endpoint.guid), endpoint.type,
                        qosInWords(endpoint)});
    }
}

void showTopic(const Scene& scene, const std::string& topic)
{
    writeLine("");
    writeLine(coloured(printable(topic), Colour::Bold));
    std::vector<std::vector<std::string>> rows;
    addRows(rows, scene, "writer", scene.writersOf(topic));
    addRows(rows, scene, "reader", scene.readersOf(topic));
    for (const auto& line : aligned(rows)) {
        writeLine(line);
    }
}

/// Whether a shell takes a name for a word, and for nothing else: anybody on the network may name a topic.
bool isWordOfShell(const std::string& name)
{
    constexpr std::string_view others = "_-.:/+%@,";
    const auto isHarmless = [&](char c) {
        const bool isLetter =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
        return isLetter || (c >= '0' && c <= '9') || others.find(c) != std::string_view::npos;
    };
    return !name.empty() && !name.starts_with('-') && name == printable(name) &&
           std::ranges::all_of(name, isHarmless);
}

} // namespace

ExitCode list(const ListOptions& options)
{
    Domain domain(options.domain, "plex list");
    domain.settle();
    const Scene scene = domain.scene();
    if (options.json) {
        writeJson(toJson(scene, options.domain), 2);
        return ExitCode::Done;
    }
    const auto topics = scene.topics();
    writeLine("Domain " + std::to_string(options.domain) + ": " +
              counted(scene.participants.size(), "participant") + ", " + counted(topics.size(), "topic") +
              ", " + counted(scene.endpoints.size(), "endpoint"));
    if (!scene.participants.empty()) {
        writeLine("");
        showParticipants(scene);
    }
    for (const auto& topic : topics) {
        showTopic(scene, topic);
    }
    return ExitCode::Done;
}

ExitCode completeTopics(const CommonOptions& options)
{
    Domain domain(options.domain, "plex complete-topics");
    domain.settle();
    for (const auto& topic : domain.scene().topics()) {
        if (isWordOfShell(topic)) {
            writeLine(topic);
        }
    }
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
