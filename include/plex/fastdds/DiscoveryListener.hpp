// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/core/policy/QosPolicies.hpp>
#include <fastdds/dds/domain/DomainParticipantListener.hpp>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#if PLEX_FASTDDS_GENERATION >= 3
#include <fastdds/rtps/common/Guid.hpp>
#else
#include <fastdds/rtps/common/Guid.h>
#endif

namespace ovra::plex::fastdds
{

#if PLEX_FASTDDS_GENERATION >= 3
namespace rtps = eprosima::fastdds::rtps;
#else
namespace rtps = eprosima::fastrtps::rtps;
#endif

using Guid = rtps::GUID_t;
using GuidPrefix = rtps::GuidPrefix_t;

/// What an endpoint announces of itself: its address and the policies by which a writer and a reader find out
/// whether they fit (DDS 1.4, 2.2.3; XTypes 1.3, 7.6.3). A writer announces what it offers, a reader what it
/// asks for.
struct AnnouncedEndpoint {
    Guid guid;
    std::string topic;
    std::string type;
    eprosima::fastdds::dds::ReliabilityQosPolicyKind reliability{};
    eprosima::fastdds::dds::DurabilityQosPolicyKind durability{};
    Duration_t deadline;
    Duration_t latencyBudget;
    eprosima::fastdds::dds::LivelinessQosPolicyKind liveliness{};
    Duration_t livelinessLease;
    eprosima::fastdds::dds::OwnershipQosPolicyKind ownership{};
    eprosima::fastdds::dds::DestinationOrderQosPolicyKind destinationOrder{};
    eprosima::fastdds::dds::PresentationQosPolicyAccessScopeKind accessScope{};
    bool coherentAccess = false;
    bool orderedAccess = false;
    std::vector<std::string> partitions;
    std::vector<DataRepresentationId> representations; ///< empty: XCDR version 1
};

/// What a participant announces of itself.
struct AnnouncedParticipant {
    GuidPrefix prefix;
    std::array<std::uint8_t, 2> vendor{}; ///< RTPS 2.5, 9.3.2
    std::string name;
    std::map<std::string, std::string> properties;
    std::string version; ///< of Fast DDS, "3.1.2"; generation 2 neither announces it nor tells it of others
};

/// Whether the version of a participant of Fast DDS is told, unless it is of generation 2.
inline constexpr bool tellsVersions = PLEX_FASTDDS_GENERATION >= 3;

/// Whether participants answer a new one by an announcement to all, which others that are new hear as well.
/// Fast DDS has answered the new one alone since 2.14.5, 3.1.3 and 3.2.0.
#if PLEX_FASTDDS_GENERATION >= 3
inline constexpr bool answersReachAll =
    FASTDDS_VERSION_MAJOR == 3 &&
    (FASTDDS_VERSION_MINOR == 0 || (FASTDDS_VERSION_MINOR == 1 && FASTDDS_VERSION_MICRO <= 2));
#else
inline constexpr bool answersReachAll = FASTRTPS_VERSION_MINOR == 14 && FASTRTPS_VERSION_MICRO <= 4;
#endif

/// Hears what a participant discovers, of its own endpoints as well, under the names of both generations.
///
/// Threads: DDS calls it from several, with locks held: an override must neither call DDS nor wait.
class DiscoveryListener : public eprosima::fastdds::dds::DomainParticipantListener
{
public:
    virtual void announced(const AnnouncedParticipant& participant) = 0;
    virtual void gone(const GuidPrefix& participant) = 0;
    virtual void announced(const AnnouncedEndpoint& endpoint) = 0;
    virtual void gone(const Guid& endpoint) = 0;

private:
    using Participant = eprosima::fastdds::dds::DomainParticipant;

    /// Takes over the policies that both generations keep by the same kinds of objects.
    template <class Reliability, class Durability, class Liveliness, class Presentation, class Partition>
    static void copyPolicies(AnnouncedEndpoint& endpoint, const Reliability& reliability,
                             const Durability& durability, const Liveliness& liveliness,
                             const Presentation& presentation, const Partition& partition)
    {
        endpoint.reliability = reliability.kind;
        endpoint.durability = durability.kind;
        endpoint.liveliness = liveliness.kind;
        endpoint.livelinessLease = liveliness.lease_duration;
        endpoint.accessScope = presentation.access_scope;
        endpoint.coherentAccess = presentation.coherent_access;
        endpoint.orderedAccess = presentation.ordered_access;
        for (auto name = partition.begin(); name != partition.end(); ++name) {
            endpoint.partitions.emplace_back(name->name());
        }
    }

    template <class Properties>
    static std::map<std::string, std::string> copyOf(const Properties& properties)
    {
        std::map<std::string, std::string> copy;
        for (auto property = properties.begin(); property != properties.end(); ++property) {
            copy.emplace(property->first(), property->second());
        }
        return copy;
    }

#if PLEX_FASTDDS_GENERATION >= 3
    static std::string versionOf(const rtps::ProductVersion_t& version)
    {
        return version.major == 0 ? ""
                                  : std::to_string(version.major) + "." + std::to_string(version.minor) +
                                        "." + std::to_string(version.patch);
    }

    /// @param data of a writer or a reader.
    template <class Data>
    static AnnouncedEndpoint endpointOf(const Data& data)
    {
        AnnouncedEndpoint endpoint;
        endpoint.guid = data.guid;
        endpoint.topic = data.topic_name.to_string();
        endpoint.type = data.type_name.to_string();
        endpoint.deadline = data.deadline.period;
        endpoint.latencyBudget = data.latency_budget.duration;
        endpoint.ownership = data.ownership.kind;
        endpoint.destinationOrder = data.destination_order.kind;
        endpoint.representations = data.representation.m_value;
        copyPolicies(endpoint, data.reliability, data.durability, data.liveliness, data.presentation,
                     data.partition);
        return endpoint;
    }

    void on_participant_discovery(Participant* /*by*/, rtps::ParticipantDiscoveryStatus reason,
                                  const rtps::ParticipantBuiltinTopicData& data, bool& shouldBeIgnored) final
    {
        shouldBeIgnored = false;
        if (reason == rtps::ParticipantDiscoveryStatus::DISCOVERED_PARTICIPANT ||
            reason == rtps::ParticipantDiscoveryStatus::CHANGED_QOS_PARTICIPANT) {
            announced(AnnouncedParticipant{data.guid.guidPrefix,
                                           {data.vendor_id[0], data.vendor_id[1]},
                                           data.participant_name.to_string(),
                                           copyOf(data.properties),
                                           versionOf(data.product_version)});
        } else {
            gone(data.guid.guidPrefix);
        }
    }

    void on_data_reader_discovery(Participant* /*by*/, rtps::ReaderDiscoveryStatus reason,
                                  const rtps::SubscriptionBuiltinTopicData& data, bool& shouldBeIgnored) final
    {
        shouldBeIgnored = false;
        if (reason == rtps::ReaderDiscoveryStatus::DISCOVERED_READER ||
            reason == rtps::ReaderDiscoveryStatus::CHANGED_QOS_READER) {
            announced(endpointOf(data));
        } else {
            gone(data.guid);
        }
    }

    void on_data_writer_discovery(Participant* /*by*/, rtps::WriterDiscoveryStatus reason,
                                  const rtps::PublicationBuiltinTopicData& data, bool& shouldBeIgnored) final
    {
        shouldBeIgnored = false;
        if (reason == rtps::WriterDiscoveryStatus::DISCOVERED_WRITER ||
            reason == rtps::WriterDiscoveryStatus::CHANGED_QOS_WRITER) {
            announced(endpointOf(data));
        } else {
            gone(data.guid);
        }
    }
#else
    using Base = eprosima::fastdds::dds::DomainParticipantListener;

    // The overloads that this generation has besides, and that are left as they are.
    using Base::on_participant_discovery;
    using Base::on_publisher_discovery;
    using Base::on_subscriber_discovery;

    /// @param data of a writer or a reader.
    template <class Data>
    static AnnouncedEndpoint endpointOf(const Data& data)
    {
        AnnouncedEndpoint endpoint;
        endpoint.guid = data.guid();
        endpoint.topic = data.topicName().to_string();
        endpoint.type = data.typeName().to_string();
        const auto& qos = data.m_qos;
        endpoint.deadline = qos.m_deadline.period;
        endpoint.latencyBudget = qos.m_latencyBudget.duration;
        endpoint.ownership = qos.m_ownership.kind;
        endpoint.destinationOrder = qos.m_destinationOrder.kind;
        endpoint.representations = qos.representation.m_value;
        copyPolicies(endpoint, qos.m_reliability, qos.m_durability, qos.m_liveliness, qos.m_presentation,
                     qos.m_partition);
        return endpoint;
    }

    void on_participant_discovery(Participant* /*by*/, rtps::ParticipantDiscoveryInfo&& found,
                                  bool& shouldBeIgnored) final
    {
        shouldBeIgnored = false;
        const auto& data = found.info;
        if (found.status == rtps::ParticipantDiscoveryInfo::DISCOVERED_PARTICIPANT ||
            found.status == rtps::ParticipantDiscoveryInfo::CHANGED_QOS_PARTICIPANT) {
            announced(AnnouncedParticipant{data.m_guid.guidPrefix,
                                           {data.m_VendorId[0], data.m_VendorId[1]},
                                           data.m_participantName.to_string(),
                                           copyOf(data.m_properties),
                                           {}});
        } else {
            gone(data.m_guid.guidPrefix);
        }
    }

    void on_subscriber_discovery(Participant* /*by*/, rtps::ReaderDiscoveryInfo&& found) final
    {
        if (found.status == rtps::ReaderDiscoveryInfo::DISCOVERED_READER ||
            found.status == rtps::ReaderDiscoveryInfo::CHANGED_QOS_READER) {
            announced(endpointOf(found.info));
        } else {
            gone(found.info.guid());
        }
    }

    void on_publisher_discovery(Participant* /*by*/, rtps::WriterDiscoveryInfo&& found) final
    {
        if (found.status == rtps::WriterDiscoveryInfo::DISCOVERED_WRITER ||
            found.status == rtps::WriterDiscoveryInfo::CHANGED_QOS_WRITER) {
            announced(endpointOf(found.info));
        } else {
            gone(found.info.guid());
        }
    }
#endif
};

} // namespace ovra::plex::fastdds
