// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Domain.hpp"
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../Pairs.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>

namespace ovra::plex::tool
{

namespace
{

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
    const auto pairs = pairsOf(scene, options.topic);
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
