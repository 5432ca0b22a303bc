// SPDX-License-Identifier: Apache-2.0
#include "Pairs.hpp"

#include <algorithm>
#include <array>
#include <src/engine/Compatibility.hpp>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

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

} // namespace

std::vector<Pair> pairsOf(const Scene& scene, const std::string& topic)
{
    std::vector<Pair> pairs;
    const auto readers = scene.readersOf(topic);
    for (const auto& writer : scene.writersOf(topic)) {
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

} // namespace ovra::plex::tool
