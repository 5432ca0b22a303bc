// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Domain.hpp"
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../Pairs.hpp"
#include "../Printable.hpp"
#include "../RawReader.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <thread>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

/// What a writer has sent.
struct Sent {
    double rate = 0.0;  ///< values a second
    double bytes = 0.0; ///< bytes a second
};

/// What each writer of a topic sends. Those of another type than the first one's are not there.
using SentByWriter = std::map<fastdds::Guid, Sent>;

/// Takes what comes for some time.
void take(RawReader& reader, double seconds, SentByWriter& sent)
{
    const auto end =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    while (Clock::now() < end && !isInterrupted()) {
        std::this_thread::sleep_for(std::min<Clock::duration>(longestWait, end - Clock::now()));
        reader.take([&](const Received& received) {
            if (received.isValue) {
                sent[received.writer].rate += 1.0;
                sent[received.writer].bytes += received.sample.size;
            }
        });
    }
}

SentByWriter measure(Domain& domain, const std::vector<fastdds::AnnouncedEndpoint>& writers,
                     const InfoOptions& options)
{
    constexpr double untilWritersKnowTheReader = 0.3; // seconds
    SentByWriter sent;
    if (writers.empty() || options.duration <= 0.0) {
        return sent;
    }
    RawReader reader(domain, options.topic, false);
    SentByWriter ignored;
    take(reader, untilWritersKnowTheReader, ignored);
    for (const auto& writer : writers) {
        if (writer.type == reader.type()) {
            sent[writer.guid] = {};
        }
    }
    take(reader, options.duration, sent);
    for (auto& [guid, each] : sent) {
        each.rate /= options.duration;
        each.bytes /= options.duration;
    }
    return sent;
}

std::optional<Sent> sentBy(const SentByWriter& sent, const fastdds::AnnouncedEndpoint& writer)
{
    const auto found = sent.find(writer.guid);
    return found == sent.end() ? std::nullopt : std::optional(found->second);
}

std::string inWords(const std::optional<Sent>& sent)
{
    return sent ? fixed(sent->rate, 1) + " values/s, " + inBytes(sent->bytes) + "/s" : "";
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
                   const std::vector<fastdds::AnnouncedEndpoint>& endpoints, const SentByWriter& sent)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& endpoint : endpoints) {
        rows.push_back({std::string("  ") + kind, shortPlace(scene, endpoint.guid), endpoint.type,
                        hasKey(endpoint.guid) ? "with a key" : "without a key", qosInWords(endpoint)});
        if (const auto each = sentBy(sent, endpoint)) {
            rows.push_back({"", "", inWords(each)});
        }
    }
    for (const auto& line : aligned(rows)) {
        writeLine(line);
    }
}

void showPair(const Scene& scene, const Pair& pair)
{
    const std::string ends =
        shortPlace(scene, pair.writer.guid) + " → " + shortPlace(scene, pair.reader.guid);
    writeLine("  " + printable(ends) + "  " +
              (pair.isMatched ? coloured("matched", Colour::Green) : coloured("not matched", Colour::Red)));
    for (const auto& refusal : pair.refusals) {
        writeLine("      " + printable(toString(refusal)) +
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
    const auto sent = measure(domain, writers, options);
    if (options.json) {
        Json json{{"domain", options.domain},
                  {"topic", options.topic},
                  {"writers", Json::array()},
                  {"readers", Json::array()},
                  {"pairs", Json::array()}};
        for (const auto& writer : writers) {
            Json each = tool::toJson(scene, writer);
            if (const auto its = sentBy(sent, writer)) {
                each["rate"] = its->rate;
                each["bytesPerSecond"] = its->bytes;
            }
            json["writers"].push_back(each);
        }
        for (const auto& reader : readers) {
            json["readers"].push_back(tool::toJson(scene, reader));
        }
        for (const auto& pair : pairs) {
            json["pairs"].push_back(toJson(pair));
        }
        writeJson(json, 2);
        return ExitCode::Done;
    }
    const auto matched = static_cast<std::uint64_t>(std::ranges::count_if(pairs, &Pair::isMatched));
    writeLine(coloured(printable(options.topic), Colour::Bold) + ": " + counted(writers.size(), "writer") +
              ", " + counted(readers.size(), "reader") + ", " + std::to_string(matched) + " of " +
              counted(pairs.size(), "pair") + " matched");
    showEndpoints(scene, "writer", writers, sent);
    showEndpoints(scene, "reader", readers, {});
    if (!pairs.empty()) {
        writeLine("");
    }
    for (const auto& pair : pairs) {
        showPair(scene, pair);
    }
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
