// SPDX-License-Identifier: Apache-2.0
#include "Description.hpp"

#include "Printable.hpp"

#include <algorithm>
#include <array>
#include <src/engine/Compatibility.hpp>
#include <sstream>

namespace ovra::plex::tool
{

namespace
{

/// What a policy is by default, where that is the same for all (DDS 1.4, 2.2.3).
bool isByDefault(const ps::Policy& policy)
{
    constexpr std::array<std::pair<const char*, const char*>, 7> defaults{{
        {"deadline", "infinite"},
        {"latency budget", "0 s"},
        {"liveliness", "automatic, lease infinite"},
        {"ownership", "shared"},
        {"destination order", "by reception"},
        {"presentation", "instance"},
        {"partition", "\"\""},
    }};
    return std::ranges::any_of(
        defaults, [&](const auto& each) { return policy.name == each.first && policy.value == each.second; });
}

} // namespace

Place placeOf(const fastdds::AnnouncedParticipant& participant)
{
    Place place{ps::internal::vendorOf(participant), participant.name, ps::internal::hostOf(participant),
                ps::internal::processOf(participant)};
    place.host.resize(std::min(place.host.find(':'), place.host.size())); // an address follows it
    return place;
}

std::string shortPlace(const Scene& scene, const fastdds::Guid& endpoint)
{
    const auto* const participant = scene.participantOf(endpoint);
    if (participant == nullptr) {
        return guidInWords(endpoint);
    }
    const Place place = placeOf(*participant);
    if (!place.host.empty()) {
        return printable(place.process.empty() ? place.host : place.host + " " + place.process);
    }
    return printable(place.name.empty() ? place.vendor : place.name);
}

std::string guidInWords(const fastdds::Guid& guid)
{
    std::ostringstream text;
    text << guid;
    return text.str();
}

Json toJson(const fastdds::AnnouncedParticipant& participant)
{
    const Place place = placeOf(participant);
    std::ostringstream prefix;
    prefix << participant.prefix;
    return {{"guid", prefix.str()},
            {"name", place.name},
            {"vendor", place.vendor},
            {"host", place.host},
            {"process", place.process}};
}

Json publisherJson(const Scene& scene, const fastdds::Guid& writer)
{
    Json json{{"guid", guidInWords(writer)}};
    if (const auto* const participant = scene.participantOf(writer)) {
        const Place place = placeOf(*participant);
        json["participant"] = place.name;
        json["host"] = place.host;
        json["process"] = place.process;
    }
    return json;
}

Json toJson(const Scene& scene, const fastdds::AnnouncedEndpoint& endpoint)
{
    Json json = publisherJson(scene, endpoint.guid);
    json["type"] = endpoint.type;
    json["keyed"] = hasKey(endpoint.guid);
    Json& qos = json["qos"];
    for (const auto& policy : ps::internal::policiesOf(endpoint)) {
        qos[policy.name] = policy.value;
    }
    return json;
}

std::string qosInWords(const fastdds::AnnouncedEndpoint& endpoint)
{
    constexpr std::array plain{"reliability", "durability", "data representation"};
    std::string text;
    for (const auto& policy : ps::internal::policiesOf(endpoint)) {
        if (isByDefault(policy)) {
            continue;
        }
        const bool isPlain = std::ranges::find(plain, policy.name) != plain.end();
        text += (text.empty() ? "" : ", ") + (isPlain ? "" : policy.name + " ") + policy.value;
    }
    return text;
}

} // namespace ovra::plex::tool
