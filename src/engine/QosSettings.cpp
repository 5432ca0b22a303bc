// SPDX-License-Identifier: Apache-2.0
#include "QosSettings.hpp"

#include "Compatibility.hpp"
#include "src/profiles/ProfileText.hpp"

#include <plex/fastdds/Transports.hpp>

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>
#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/publisher/qos/PublisherQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>
#include <fastdds/dds/subscriber/qos/SubscriberQos.hpp>

#include <array>
#include <fstream>
#include <sstream>
#include <type_traits>
#include <utility>

namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

namespace
{

const std::string fileProperty = "dds.qos.profile.file";

/// The elements by which profiles of a kind stand in a file; Fast DDS makes no difference between two.
std::set<std::string> elementsOf(ProfileType kind)
{
    switch (kind) {
    case ProfileType::Participant:
        return {"participant"};
    case ProfileType::Topic:
        return {"topic"};
    case ProfileType::Writer:
    case ProfileType::Publisher:
        return {"data_writer", "publisher"};
    default:
        return {"data_reader", "subscriber"};
    }
}

/// The profiles of a kind in the file that the properties name.
std::vector<profiles::Profile> profilesOf(const Plex::Properties& properties, ProfileType kind)
{
    const auto file = properties.find(fileProperty);
    if (file == properties.end()) {
        return {};
    }
    std::ostringstream text;
    text << std::ifstream(file->second).rdbuf();
    auto found = profiles::profilesIn(text.str());
    std::erase_if(found, [elements = elementsOf(kind)](const auto& profile) {
        return !elements.contains(profile.element);
    });
    return found;
}

} // namespace

std::optional<ProfileInUse> profileInUse(const Plex::Properties& properties, ProfileType kind)
{
    if (!properties.contains("dds.qos.profile.library")) {
        return std::nullopt;
    }
    ProfileInUse used{getProfileNameByProfileType(kind, properties), "", {}};
    for (auto& profile : profilesOf(properties, kind)) {
        if (profile.name == used.name) {
            used.file = properties.at(fileProperty);
            used.says = std::move(profile.says);
        }
    }
    return used;
}

std::set<std::string> profileNames(const Plex::Properties& properties, ProfileType kind)
{
    std::set<std::string> names;
    for (const auto& profile : profilesOf(properties, kind)) {
        names.insert(profile.name);
    }
    return names;
}

namespace
{

// --- In words --------------------------------------------------------------------------------------------

using Announced = fastdds::AnnouncedEndpoint;

/// What readers and writers announce of their own settings.
template <class Qos>
void announceEndpoint(const Qos& qos, Announced& announced)
{
    announced.reliability = qos.reliability().kind;
    announced.durability = qos.durability().kind;
    announced.deadline = qos.deadline().period;
    announced.latencyBudget = qos.latency_budget().duration;
    announced.liveliness = qos.liveliness().kind;
    announced.livelinessLease = qos.liveliness().lease_duration;
    announced.ownership = qos.ownership().kind;
    announced.destinationOrder = qos.destination_order().kind;
}

void announce(const dds::DataWriterQos& qos, Announced& announced)
{
    announceEndpoint(qos, announced);
    announced.guid.entityId.value[3] = 0x03; // a writer's (RTPS 2.5, 9.3.1.2)
    announced.representations = qos.representation().m_value;
}

void announce(const dds::DataReaderQos& qos, Announced& announced)
{
    announceEndpoint(qos, announced);
    announced.guid.entityId.value[3] = 0x04; // a reader's
    auto copy = qos;
    announced.representations = fastdds::representationOf(copy).m_value;
}

/// And of those of the DDS publisher or subscriber that they belong to.
template <class Qos>
void announce(const Qos& qos, Announced& announced)
{
    announced.accessScope = qos.presentation().access_scope;
    announced.coherentAccess = qos.presentation().coherent_access;
    announced.orderedAccess = qos.presentation().ordered_access;
    announced.partitions = qos.partition().names();
}

/// A setting that peers compare, in the words in which refusals have it.
template <class Qos>
QosRow<Qos> policy(const char* name, const char* element)
{
    return {name, element, [name = std::string(name)](const Qos& qos) {
                Announced announced;
                announce(qos, announced);
                for (auto& known : policiesOf(announced)) {
                    if (known.name == name) {
                        return std::move(known.value);
                    }
                }
                return std::string();
            }};
}

std::string numberOf(const char* what, std::int32_t number)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string limitOf(const char* what, std::int32_t number)
{
    return number <= 0 ? "unlimited" : numberOf(what, number);
}

template <class Qos>
std::string memoryPolicy(const Qos& qos)
{
    switch (qos.endpoint().history_memory_policy) {
    case fastdds::HistoryMemory::PREALLOCATED_MEMORY_MODE:
        return "preallocated";
    case fastdds::HistoryMemory::PREALLOCATED_WITH_REALLOC_MEMORY_MODE:
        return "preallocated, may grow";
    case fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE:
        return "as needed";
    default:
        return "as needed, reused";
    }
}

template <class Qos>
std::string dataSharing(const Qos& qos)
{
    switch (qos.data_sharing().kind()) {
    case dds::OFF:
        return "off";
    case dds::ON:
        return "on";
    default:
        return "automatic";
    }
}

// --- Readers and writers -----------------------------------------------------------------------------------

/// The settings that readers and writers have in common.
template <class Qos>
std::vector<QosRow<Qos>> endpointRows()
{
    return {
        policy<Qos>("reliability", "qos/reliability/kind"),
        policy<Qos>("durability", "qos/durability/kind"),
        {"history", "topic/historyQos/kind",
         [](const Qos& qos) {
             return std::string(qos.history().kind == dds::KEEP_ALL_HISTORY_QOS ? "keep all" : "keep last");
         }},
        {"history depth", "topic/historyQos/depth",
         [](const Qos& qos) {
             return numberOf("sample", qos.history().depth);
         }},
        {"max samples", "topic/resourceLimitsQos/max_samples",
         [](const Qos& qos) {
             return limitOf("sample", qos.resource_limits().max_samples);
         }},
        {"max instances", "topic/resourceLimitsQos/max_instances",
         [](const Qos& qos) {
             return limitOf("instance", qos.resource_limits().max_instances);
         }},
        {"max samples per instance", "topic/resourceLimitsQos/max_samples_per_instance",
         [](const Qos& qos) {
             return limitOf("sample", qos.resource_limits().max_samples_per_instance);
         }},
        {"allocated samples", "topic/resourceLimitsQos/allocated_samples",
         [](const Qos& qos) {
             return numberOf("sample", qos.resource_limits().allocated_samples);
         }},
        {"extra samples", "topic/resourceLimitsQos/extra_samples",
         [](const Qos& qos) {
             return numberOf("sample", qos.resource_limits().extra_samples);
         }},
        {"history memory", "historyMemoryPolicy", memoryPolicy<Qos>},
        policy<Qos>("deadline", "qos/deadline"),
        policy<Qos>("latency budget", "qos/latencyBudget"),
        {"lifespan", "qos/lifespan",
         [](const Qos& qos) {
             return durationInWords(qos.lifespan().duration);
         }},
        policy<Qos>("liveliness", "qos/liveliness"),
        policy<Qos>("ownership", "qos/ownership"),
        policy<Qos>("destination order", ""),
        policy<Qos>("data representation", ""),
        {"data sharing", "qos/data_sharing", dataSharing<Qos>},
    };
}

/// Sets what readers and writers have in common to something that is nowhere the default.
template <class Qos>
void setOtherwise(Qos& qos)
{
    const bool isReliable = qos.reliability().kind == dds::RELIABLE_RELIABILITY_QOS;
    qos.reliability().kind = isReliable ? dds::BEST_EFFORT_RELIABILITY_QOS : dds::RELIABLE_RELIABILITY_QOS;
    qos.durability().kind = dds::PERSISTENT_DURABILITY_QOS;
    qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
    qos.history().depth = 7;
    qos.resource_limits().max_samples = 7;
    qos.resource_limits().max_instances = 7;
    qos.resource_limits().max_samples_per_instance = 7;
    qos.resource_limits().allocated_samples = 7;
    qos.resource_limits().extra_samples = 7;
    qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE;
    qos.deadline().period = {7, 0};
    qos.latency_budget().duration = {7, 0};
    qos.lifespan().duration = {7, 0};
    qos.liveliness().kind = dds::MANUAL_BY_TOPIC_LIVELINESS_QOS;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    qos.destination_order().kind = dds::BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS;
    qos.data_sharing().off();
}

} // namespace

template <>
QosRows<dds::DataWriterQos> qosRows()
{
    using Qos = dds::DataWriterQos;
    QosRows<Qos> known{endpointRows<Qos>(), {}};
    for (auto& row : std::vector<QosRow<Qos>>{
             {"max blocking time", "qos/reliability/max_blocking_time",
              [](const Qos& qos) {
                  return durationInWords(qos.reliability().max_blocking_time);
              }},
             {"ownership strength", "qos/ownershipStrength",
              [](const Qos& qos) {
                  return std::to_string(qos.ownership_strength().value);
              }},
             {"publish mode", "qos/publishMode/kind",
              [](const Qos& qos) {
                  const bool isSynchronous = qos.publish_mode().kind == dds::SYNCHRONOUS_PUBLISH_MODE;
                  return std::string(isSynchronous ? "synchronous" : "asynchronous");
              }},
             {"dispose of unregistered instances", "",
              [](const Qos& qos) {
                  const bool does = qos.writer_data_lifecycle().autodispose_unregistered_instances;
                  return std::string(does ? "yes" : "no");
              }},
         }) {
        known.rows.push_back(std::move(row));
    }
    auto& other = known.other;
    const bool disposes = other.writer_data_lifecycle().autodispose_unregistered_instances;
    setOtherwise(other);
    other.representation().m_value = {dds::XCDR2_DATA_REPRESENTATION};
    other.reliability().max_blocking_time = {7, 0};
    other.ownership_strength().value = 7;
    other.publish_mode().kind = dds::ASYNCHRONOUS_PUBLISH_MODE;
    other.writer_data_lifecycle().autodispose_unregistered_instances = !disposes;
    return known;
}

template <>
QosRows<dds::DataReaderQos> qosRows()
{
    using Qos = dds::DataReaderQos;
    QosRows<Qos> known{endpointRows<Qos>(), {}};
    for (auto& row : std::vector<QosRow<Qos>>{
             {"time-based filter", "",
              [](const Qos& qos) {
                  return durationInWords(qos.time_based_filter().minimum_separation);
              }},
             {"purge of instances without writers after", "",
              [](const Qos& qos) {
                  return durationInWords(qos.reader_data_lifecycle().autopurge_no_writer_samples_delay);
              }},
             {"purge of disposed instances after", "",
              [](const Qos& qos) {
                  return durationInWords(qos.reader_data_lifecycle().autopurge_disposed_samples_delay);
              }},
         }) {
        known.rows.push_back(std::move(row));
    }
    auto& other = known.other;
    setOtherwise(other);
    fastdds::representationOf(other).m_value = {dds::XCDR2_DATA_REPRESENTATION};
    other.time_based_filter().minimum_separation = {7, 0};
    other.reader_data_lifecycle().autopurge_no_writer_samples_delay = {7, 0};
    other.reader_data_lifecycle().autopurge_disposed_samples_delay = {7, 0};
    return known;
}

// --- Publishers, subscribers and participants --------------------------------------------------------------

template <>
QosRows<dds::PublisherQos> qosRows()
{
    using Qos = dds::PublisherQos;
    return {{policy<Qos>("presentation", ""), policy<Qos>("partition", "qos/partition")}, {}};
}

template <>
QosRows<dds::SubscriberQos> qosRows()
{
    using Qos = dds::SubscriberQos;
    return {{policy<Qos>("presentation", ""), policy<Qos>("partition", "qos/partition")}, {}};
}

namespace
{

std::string transports(const dds::DomainParticipantQos& qos)
{
    std::string list;
    for (const auto& transport : fastdds::transportsOf(qos)) {
        list += (list.empty() ? "" : ", ") + transport.kind;
        if (transport.sharedMemoryBytes > 0) {
            list += " of " + std::to_string(transport.sharedMemoryBytes) + " bytes";
        }
    }
    return list;
}

} // namespace

template <>
QosRows<dds::DomainParticipantQos> qosRows()
{
    using Qos = dds::DomainParticipantQos;
    return {{{"transports", "rtps/userTransports", transports},
             {"participant lease", "rtps/builtin/discovery_config/leaseDuration",
              [](const Qos& qos) {
                  return durationInWords(qos.wire_protocol().builtin.discovery_config.leaseDuration);
              }},
             {"participant announcements every", "rtps/builtin/discovery_config/leaseAnnouncement",
              [](const Qos& qos) {
                  return durationInWords(
                      qos.wire_protocol().builtin.discovery_config.leaseDuration_announcementperiod);
              }}},
            {}};
}

} // namespace ovra::plex::ps::internal
