// SPDX-License-Identifier: Apache-2.0
#include "Compatibility.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fnmatch.h>
#include <string_view>

namespace ovra::plex::ps::internal
{

namespace
{

namespace dds = eprosima::fastdds::dds;
using Announced = fastdds::AnnouncedEndpoint;

/// A policy in words, and whether what a writer offers is enough for a reader.
struct Rule {
    const char* policy;
    std::string (*inWords)(const Announced&);
    bool (*suffices)(const Announced& offered, const Announced& asked);
    bool isApplied = true; ///< by Fast DDS
};

template <std::size_t Count>
std::string nameOf(const std::array<const char*, Count>& names, int kind)
{
    const auto index = static_cast<std::size_t>(kind);
    return index < Count ? names[index] : "kind " + std::to_string(kind);
}

std::string typeName(const Announced& endpoint)
{
    return endpoint.type;
}

std::string keyInWords(const Announced& endpoint)
{
    return hasKey(endpoint.guid) ? "a type with a key" : "a type without a key";
}

std::string reliability(const Announced& endpoint)
{
    return endpoint.reliability == dds::RELIABLE_RELIABILITY_QOS ? "reliable" : "best-effort";
}

std::string durability(const Announced& endpoint)
{
    return nameOf(std::array{"volatile", "transient-local", "transient", "persistent"}, endpoint.durability);
}

std::string liveliness(const Announced& endpoint)
{
    return nameOf(std::array{"automatic", "manual by participant", "manual by topic"}, endpoint.liveliness) +
           ", lease " + durationInWords(endpoint.livelinessLease);
}

std::string ownership(const Announced& endpoint)
{
    return endpoint.ownership == dds::SHARED_OWNERSHIP_QOS ? "shared" : "exclusive";
}

std::string destinationOrder(const Announced& endpoint)
{
    return endpoint.destinationOrder == dds::BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS ? "by reception"
                                                                                         : "by source";
}

std::string presentation(const Announced& endpoint)
{
    return nameOf(std::array{"instance", "topic", "group"}, endpoint.accessScope) +
           (endpoint.coherentAccess ? ", coherent" : "") + (endpoint.orderedAccess ? ", ordered" : "");
}

std::string partitions(const Announced& endpoint)
{
    std::string text;
    for (const auto& name : endpoint.partitions) {
        text += (text.empty() ? "\"" : ", \"") + name + "\"";
    }
    return text.empty() ? "\"\"" : text;
}

std::string representation(fastdds::DataRepresentationId id)
{
    switch (id) {
    case dds::XCDR_DATA_REPRESENTATION:
        return "xcdr1";
    case dds::XCDR2_DATA_REPRESENTATION:
        return "xcdr2";
    case dds::XML_DATA_REPRESENTATION:
        return "xml";
    default:
        return "representation " + std::to_string(id);
    }
}

std::string representations(const Announced& endpoint)
{
    std::string text;
    for (const auto id : endpoint.representations) {
        text += (text.empty() ? "" : ", ") + representation(id);
        if (isWriter(endpoint.guid)) {
            break; // it uses the first
        }
    }
    return text.empty() ? "xcdr1" : text;
}

bool livelinessSuffices(const Announced& offered, const Announced& asked)
{
    return offered.liveliness >= asked.liveliness && !(offered.livelinessLease > asked.livelinessLease);
}

bool presentationSuffices(const Announced& offered, const Announced& asked)
{
    return offered.accessScope >= asked.accessScope && (offered.coherentAccess || !asked.coherentAccess) &&
           (offered.orderedAccess || !asked.orderedAccess);
}

/// Whether two partition names meet: either may be a pattern (POSIX fnmatch).
bool namesMeet(const std::string& one, const std::string& other)
{
    return fnmatch(one.c_str(), other.c_str(), 0) == 0 || fnmatch(other.c_str(), one.c_str(), 0) == 0;
}

/// The partitions of an endpoint; without any it is in the unnamed one.
std::vector<std::string> partitionsOf(const Announced& endpoint)
{
    return endpoint.partitions.empty() ? std::vector<std::string>{""} : endpoint.partitions;
}

bool partitionsMeet(const Announced& offered, const Announced& asked)
{
    const auto ofReader = partitionsOf(asked);
    return std::ranges::any_of(partitionsOf(offered), [&](const auto& name) {
        return std::ranges::any_of(ofReader, [&](const auto& other) { return namesMeet(name, other); });
    });
}

bool representationIsAccepted(const Announced& offered, const Announced& asked)
{
    const auto used =
        offered.representations.empty() ? dds::XCDR_DATA_REPRESENTATION : offered.representations.front();
    if (asked.representations.empty()) {
        return used == dds::XCDR_DATA_REPRESENTATION;
    }
    return std::ranges::find(asked.representations, used) != asked.representations.end();
}

const auto identity = std::to_array<Rule>({
    {"type name", typeName,
     [](const Announced& offered, const Announced& asked) {
         return offered.type == asked.type;
     }},
    {"key", keyInWords,
     [](const Announced& offered, const Announced& asked) {
         return hasKey(offered.guid) == hasKey(asked.guid);
     }},
});

const auto policies = std::to_array<Rule>({
    {"reliability", reliability,
     [](const Announced& offered, const Announced& asked) {
         return offered.reliability >= asked.reliability;
     }},
    {"durability", durability,
     [](const Announced& offered, const Announced& asked) {
         return offered.durability >= asked.durability;
     }},
    {"deadline", [](const Announced& endpoint) { return durationInWords(endpoint.deadline); },
     [](const Announced& offered, const Announced& asked) {
         return !(offered.deadline > asked.deadline);
     }},
    {"latency budget", [](const Announced& endpoint) { return durationInWords(endpoint.latencyBudget); },
     [](const Announced& offered, const Announced& asked) {
         return !(offered.latencyBudget > asked.latencyBudget);
     },
     false},
    {"liveliness", liveliness, livelinessSuffices},
    {"ownership", ownership,
     [](const Announced& offered, const Announced& asked) {
         return offered.ownership == asked.ownership;
     }},
    {"destination order", destinationOrder,
     [](const Announced& offered, const Announced& asked) {
         return offered.destinationOrder >= asked.destinationOrder;
     },
     false},
    {"presentation", presentation, presentationSuffices, false},
    {"partition", partitions, partitionsMeet},
    {"data representation", representations, representationIsAccepted},
});

template <class Rules>
void addRefusals(const Rules& rules, const Announced& writer, const Announced& reader,
                 std::vector<Refusal>& refusals)
{
    for (const auto& rule : rules) {
        if (!rule.suffices(writer, reader)) {
            refusals.push_back({rule.policy, rule.inWords(writer), rule.inWords(reader)});
        }
    }
}

/// The first of some properties that a participant announces; implementations call them differently.
std::string firstOf(const fastdds::AnnouncedParticipant& participant,
                    std::initializer_list<const char*> names)
{
    for (const auto* const name : names) {
        const auto found = participant.properties.find(name);
        if (found != participant.properties.end()) {
            return found->second;
        }
    }
    return {};
}

} // namespace

std::string durationInWords(const fastdds::Duration_t& duration)
{
    if (fastdds::isInfinite(duration)) {
        return "infinite";
    }
    std::array<char, 32> text{};
    const auto length = std::snprintf(text.data(), text.size(), "%.9g s",
                                      static_cast<double>(duration.seconds) + duration.nanosec * 1e-9);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string vendorOf(const fastdds::AnnouncedParticipant& participant)
{
    constexpr std::array<std::uint8_t, 2> fastDds{0x01, 0x0f};
    constexpr std::array<std::uint8_t, 2> cycloneDds{0x01, 0x10};
    const auto& vendor = participant.vendor;
    if (vendor == fastDds) {
        return "Fast DDS";
    }
    if (vendor == cycloneDds) {
        return "Cyclone DDS";
    }
    return std::to_string(vendor[0]) + "." + std::to_string(vendor[1]);
}

std::string hostOf(const fastdds::AnnouncedParticipant& participant)
{
    return firstOf(participant, {"fastdds.physical_data.host", "__Hostname"});
}

std::string processOf(const fastdds::AnnouncedParticipant& participant)
{
    return firstOf(participant, {"fastdds.physical_data.process", "__Pid"});
}

bool isWriter(const fastdds::Guid& endpoint)
{
    const auto kind = endpoint.entityId.value[3] & 0x0fU;
    return kind == 0x02 || kind == 0x03;
}

bool hasKey(const fastdds::Guid& endpoint)
{
    const auto kind = endpoint.entityId.value[3] & 0x0fU;
    return kind == 0x02 || kind == 0x07;
}

std::vector<Refusal> refusalsBetween(const Announced& writer, const Announced& reader)
{
    std::vector<Refusal> refusals;
    addRefusals(identity, writer, reader, refusals);
    addRefusals(policies, writer, reader, refusals);
    return refusals;
}

bool areKeptApart(const Announced& writer, const Announced& reader)
{
    const auto keepsApart = [&](const Rule& rule) {
        return rule.isApplied && !rule.suffices(writer, reader);
    };
    return std::ranges::any_of(identity, keepsApart) || std::ranges::any_of(policies, keepsApart);
}

std::vector<Policy> policiesOf(const Announced& endpoint)
{
    std::vector<Policy> inWords;
    inWords.reserve(policies.size());
    for (const auto& rule : policies) {
        inWords.push_back({rule.policy, rule.inWords(endpoint)});
    }
    return inWords;
}

} // namespace ovra::plex::ps::internal
