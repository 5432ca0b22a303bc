// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/publisher/qos/PublisherQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>
#include <fastdds/dds/subscriber/qos/SubscriberQos.hpp>

#include <array>
#include <ostream>
#include <vector>

/// Every policy by which a publisher and a subscriber may not match, on either side.
namespace plex::test
{

namespace dds = eprosima::fastdds::dds;

/// The quality of service of a peer, whichever of the two it is.
struct PeerQos {
    dds::DataWriterQos writer;
    dds::PublisherQos publisher;
    dds::DataReaderQos reader;
    dds::SubscriberQos subscriber;
};

/// A way in which a peer does not fit, and what is said of it.
struct Mismatch {
    const char* name;
    const char* library;      ///< of policies.xml, for ours
    bool isOurWriter;         ///< whether the publisher is ours, and the reader the peer's
    bool isRefused;           ///< by Fast DDS too, not only by implementations that go by all policies
    void (*change)(PeerQos&); ///< null where Fast DDS makes no such peer, but other implementations do
    const char* reason;
};

inline std::ostream& operator<<(std::ostream& out, const Mismatch& mismatch)
{
    return out << mismatch.name;
}

/// What fits a subscriber of the library "strict", and a publisher of the library "loose". The one asks for
/// as much as a profile can say: destination order and presentation it can not.
inline PeerQos fitting()
{
    PeerQos qos;
    qos.writer.deadline().period = {1, 0};
    qos.writer.liveliness().kind = dds::MANUAL_BY_TOPIC_LIVELINESS_QOS;
    qos.writer.liveliness().lease_duration = {5, 0};
    qos.writer.liveliness().announcement_period = {1, 0};
    qos.writer.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    qos.writer.data_sharing().off(); // in a process that is killed, its file would stay
    qos.publisher.partition().push_back("north");
    qos.reader.latency_budget().duration = {2, 0};
    return qos;
}

inline const auto mismatches = std::to_array<Mismatch>({
    {"ReliabilityOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.reliability().kind = dds::BEST_EFFORT_RELIABILITY_QOS; },
     "reliability: reliable asked for, best-effort offered"},
    {"ReliabilityAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.reliability().kind = dds::RELIABLE_RELIABILITY_QOS; },
     "reliability: reliable asked for, best-effort offered"},
    {"DurabilityOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.durability().kind = dds::VOLATILE_DURABILITY_QOS; },
     "durability: transient-local asked for, volatile offered"},
    {"DurabilityAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.durability().kind = dds::TRANSIENT_LOCAL_DURABILITY_QOS; },
     "durability: transient-local asked for, volatile offered"},
    {"DeadlineOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.deadline().period = {2, 0}; }, "deadline: 1 s asked for, 2 s offered"},
    {"DeadlineAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.deadline().period = {0, 500000000}; },
     "deadline: 0.5 s asked for, infinite offered"},
    {"LatencyBudgetOfferedToUs", "strict", false, false,
     [](PeerQos& qos) { qos.writer.latency_budget().duration = {2, 0}; },
     "latency budget: 0 s asked for, 2 s offered"},
    {"LatencyBudgetAskedOfUs", "loose", true, false,
     [](PeerQos& qos) { qos.reader.latency_budget().duration = {0, 0}; },
     "latency budget: 0 s asked for, 2 s offered"},
    {"LivelinessOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.liveliness().kind = dds::AUTOMATIC_LIVELINESS_QOS; },
     "liveliness: manual by topic, lease 5 s asked for, automatic, lease 5 s offered"},
    {"LivelinessAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.liveliness().kind = dds::MANUAL_BY_TOPIC_LIVELINESS_QOS; },
     "liveliness: manual by topic, lease infinite asked for, automatic, lease infinite offered"},
    {"LeaseOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.liveliness().lease_duration = {10, 0}; },
     "liveliness: manual by topic, lease 5 s asked for, manual by topic, lease 10 s offered"},
    {"LeaseAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.liveliness().lease_duration = {3, 0}; },
     "liveliness: automatic, lease 3 s asked for, automatic, lease infinite offered"},
    {"OwnershipOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { qos.writer.ownership().kind = dds::SHARED_OWNERSHIP_QOS; },
     "ownership: exclusive asked for, shared offered"},
    {"OwnershipAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.reader.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS; },
     "ownership: exclusive asked for, shared offered"},
    {"DestinationOrderAskedOfUs", "loose", true, false, nullptr,
     "destination order: by source asked for, by reception offered"},
    {"PresentationAskedOfUs", "loose", true, false,
     [](PeerQos& qos) {
         qos.subscriber.presentation().access_scope = dds::TOPIC_PRESENTATION_QOS;
         qos.subscriber.presentation().coherent_access = true;
         qos.subscriber.presentation().ordered_access = true;
     },
     "presentation: topic, coherent, ordered asked for, instance offered"},
    {"PartitionOfferedToUs", "strict", false, true,
     [](PeerQos& qos) {
         qos.publisher.partition().clear();
         qos.publisher.partition().push_back("south");
         qos.publisher.partition().push_back("s*");
     },
     R"(partition: "north" asked for, "south", "s*" offered)"},
    {"PartitionAskedOfUs", "loose", true, true,
     [](PeerQos& qos) { qos.subscriber.partition().push_back("north*"); },
     R"(partition: "north*" asked for, "" offered)"},
    {"RepresentationOfferedToUs", "strict", false, true,
     [](PeerQos& qos) { ovra::plex::fastdds::offer(qos.writer, dds::XCDR2_DATA_REPRESENTATION, true); },
     "data representation: xcdr1 asked for, xcdr2 offered"},
    {"RepresentationAskedOfUs", "loose", true, true,
     [](PeerQos& qos) {
         ovra::plex::fastdds::representationOf(qos.reader).m_value = {dds::XCDR2_DATA_REPRESENTATION};
     },
     "data representation: xcdr2 asked for, xcdr1 offered"},
});

/// Those that a peer of Fast DDS can have.
inline std::vector<Mismatch> mismatchesOfFastDds()
{
    std::vector<Mismatch> result(mismatches.begin(), mismatches.end());
    std::erase_if(result, [](const auto& mismatch) { return mismatch.change == nullptr; });
    return result;
}

} // namespace plex::test
