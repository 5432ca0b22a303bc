// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Domain.hpp"
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <array>
#include <src/engine/Compatibility.hpp>

namespace ovra::plex::tool
{

namespace
{

/// A writer and a reader of one topic.
struct Pair {
    const fastdds::AnnouncedEndpoint& writer;
    const fastdds::AnnouncedEndpoint& reader;
    std::vector<ps::Refusal> refusals;
    bool isMatched; ///< maybe in spite of refusals, as Fast DDS does not go by all policies
};

bool isFastDds(const Scene& scene, const fastdds::AnnouncedEndpoint& endpoint)
{
    const auto* const participant = scene.participantOf(endpoint.guid);
    return participant != nullptr && placeOf(*participant).vendor == "Fast DDS";
}

bool isLeftToOthers(const ps::Refusal& refusal)
{
    constexpr std::array policies{"latency budget", "destination order", "presentation"};
    return std::ranges::find(policies, refusal.policy) != policies.end();
}

std::vector<Pair> pairsOf(const Scene& scene, const std::vector<fastdds::AnnouncedEndpoint>& writers,
                          const std::vector<fastdds::AnnouncedEndpoint>& readers)
{
    std::vector<Pair> pairs;
    for (const auto& writer : writers) {
        for (const auto& reader : readers) {
            auto refusals = ps::internal::refusalsBetween(writer, reader);
            const bool isMatched =
                refusals.empty() || (isFastDds(scene, writer) && isFastDds(scene, reader) &&
                                     std::ranges::all_of(refusals, isLeftToOthers));
            pairs.push_back({writer, reader, std::move(refusals), isMatched});
        }
    }
    return pairs;
}

Json toJson(const Pair& pair)
{
    Json json{{"writer", guidInWords(pair.writer.guid)},
              {"reader", guidInWords(pair.reader.guid)},
              {"matched", pair.isMatched},
              {"refusals", Json::array()}};
    for (const auto& refusal : pair.refusals) {
        json["refusals"].push_back(
            {{"policy", refusal.policy}, {"offered", refusal.offered}, {"asked", refusal.asked}});
    }
    return json;
}

void showEndpoints(const Scene& scene, const char* kind,
                   const std::vector<fastdds::AnnouncedEndpoint>& endpoints)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& endpoint : endpoints) {
        rows.push_back({std::string("  ") + kind, shortPlace(scene, endpoint.guid), endpoint.type,
                        hasKey(endpoint.guid) ? "with a key" : "without a key", qosInWords(endpoint)});
    }
    for (const auto& line : aligned(rows)) {
        writeLine(line);
    }
}

void showPair(const Scene& scene, const Pair& pair)
{
    const std::string ends =
        shortPlace(scene, pair.writer.guid) + " → " + shortPlace(scene, pair.reader.guid);
    writeLine("  " + ends + "  " +
              (pair.isMatched ? coloured("matched", Colour::Green) : coloured("not matched", Colour::Red)));
    for (const auto& refusal : pair.refusals) {
        writeLine("      " + toString(refusal) +
                  (pair.isMatched ? " (Fast DDS does not go by it, others do)" : ""));
    }
}

} // namespace

ExitCode info(const InfoOptions& options)
{
    Domain domain(options.domain, "plex info");
    domain.settle(); // more than one of the endpoints is to be known
    waitForTopic(domain, options.topic);
    const Scene scene = domain.scene();
    const auto writers = scene.writersOf(options.topic);
    const auto readers = scene.readersOf(options.topic);
    const auto pairs = pairsOf(scene, writers, readers);
    if (options.json) {
        Json json{{"domain", options.domain},
                  {"topic", options.topic},
                  {"writers", Json::array()},
                  {"readers", Json::array()},
                  {"pairs", Json::array()}};
        for (const auto& writer : writers) {
            json["writers"].push_back(tool::toJson(scene, writer));
        }
        for (const auto& reader : readers) {
            json["readers"].push_back(tool::toJson(scene, reader));
        }
        for (const auto& pair : pairs) {
            json["pairs"].push_back(toJson(pair));
        }
        writeLine(json.dump(2));
        return ExitCode::Done;
    }
    const auto matched = static_cast<std::uint64_t>(std::ranges::count_if(pairs, &Pair::isMatched));
    writeLine(coloured(options.topic, Colour::Bold) + ": " + counted(writers.size(), "writer") + ", " +
              counted(readers.size(), "reader") + ", " + std::to_string(matched) + " of " +
              counted(pairs.size(), "pair") + " matched");
    showEndpoints(scene, "writer", writers);
    showEndpoints(scene, "reader", readers);
    if (!pairs.empty()) {
        writeLine("");
    }
    for (const auto& pair : pairs) {
        showPair(scene, pair);
    }
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
