// SPDX-License-Identifier: Apache-2.0
// What DDS entities are made with where no profile says so.
#include "FaultTest.hpp"
#include "MadeEntities.hpp"

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace qos = ovra::plex::ps::qos;

QoSList deadline(std::chrono::milliseconds duration)
{
    return {std::make_shared<qos::Deadline>(duration), std::make_shared<qos::Latency>(7ms)};
}

const Properties profiles{{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", "reliable"}};

} // namespace

class EntityQosTest : public FaultTest
{
protected:
    dds::DataWriterQos writerQos(const QoSList& list = {}, const Properties& properties = {})
    {
        const auto held = publisher(list, properties);
        return lastMade<dds::DataWriter>(properties.empty() ? "Publisher::create_datawriter"
                                                            : "Publisher::create_datawriter_with_profile")
            ->get_qos();
    }

    dds::DataReaderQos readerQos(const QoSList& list = {}, const Properties& properties = {})
    {
        const auto held = subscriber(list, properties);
        return lastMade<dds::DataReader>(properties.empty() ? "Subscriber::create_datareader"
                                                            : "Subscriber::create_datareader_with_profile")
            ->get_qos();
    }
};

TEST_F(EntityQosTest, WriterKeepsAllUpToItsLimits)
{
    const auto made = writerQos();
    EXPECT_EQ(made.history().kind, dds::KEEP_ALL_HISTORY_QOS);
    EXPECT_EQ(made.history().depth, 1000);
    EXPECT_EQ(made.resource_limits().max_samples, 40000);
    EXPECT_EQ(made.resource_limits().max_instances, 100);
    EXPECT_EQ(made.reliability().kind, dds::RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(made.endpoint().history_memory_policy, fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE);
    EXPECT_EQ(static_cast<int>(made.endpoint().history_memory_policy), 2);
}

TEST_F(EntityQosTest, WriterOfAnInstancePublisherHasTheDefaultDepth)
{
    const auto parent = sensorPublisher(deadline(1500ms));
    const auto publisher = parent->createInstancePublisher(*sensor("a"));
    const auto made = lastMade<dds::DataWriter>("Publisher::create_datawriter")->get_qos();
    EXPECT_EQ(made.history().kind, dds::KEEP_ALL_HISTORY_QOS);
    EXPECT_EQ(made.history().depth, dds::DataWriterQos().history().depth);
    EXPECT_EQ(made.resource_limits().max_samples, 40000);
    EXPECT_EQ(made.resource_limits().max_instances, 100);
    EXPECT_EQ(made.endpoint().history_memory_policy, fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE);
    EXPECT_EQ(made.deadline().period, fastdds::Duration_t(1, 500));
}

TEST_F(EntityQosTest, ReaderKeepsAllUpToItsLimits)
{
    const auto made = readerQos();
    EXPECT_EQ(made.history().kind, dds::KEEP_ALL_HISTORY_QOS);
    EXPECT_EQ(made.history().depth, 1000);
    EXPECT_EQ(made.resource_limits().max_samples, 40000);
    EXPECT_EQ(made.resource_limits().max_instances, 100);
    EXPECT_EQ(made.reliability().kind, dds::BEST_EFFORT_RELIABILITY_QOS);
    EXPECT_EQ(made.endpoint().history_memory_policy, fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE);
}

TEST_F(EntityQosTest, DeadlineIsThatOfTheListWithItsMillisecondsAsNanoseconds)
{
    EXPECT_EQ(writerQos(deadline(1500ms)).deadline().period, fastdds::Duration_t(1, 500));
    EXPECT_EQ(readerQos(deadline(1500ms)).deadline().period, fastdds::Duration_t(1, 500));
}

TEST_F(EntityQosTest, DeadlineOfZeroOrLessIsNone)
{
    for (const auto duration : {0ms, -1500ms}) {
        EXPECT_EQ(writerQos(deadline(duration)).deadline().period, dds::DataWriterQos().deadline().period);
        EXPECT_EQ(readerQos(deadline(duration)).deadline().period, dds::DataReaderQos().deadline().period);
    }
}

TEST_F(EntityQosTest, ListDoesNotTouchWhatIsMadeFromProfiles)
{
    EXPECT_EQ(writerQos(deadline(1500ms), profiles), writerQos({}, profiles));
    EXPECT_EQ(readerQos(deadline(1500ms), profiles), readerQos({}, profiles));
}

TEST_F(EntityQosTest, HighRateReadersDifferInReliabilityOnly)
{
    Properties properties{{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", "high-rate"}};
    auto reliable = readerQos({}, properties);
    EXPECT_EQ(reliable.reliability().kind, dds::RELIABLE_RELIABILITY_QOS);
    properties["dds.qos.profile.reader"] = "high-rate.best-effort-reader";
    auto bestEffort = readerQos({}, properties);
    EXPECT_EQ(bestEffort.reliability().kind, dds::BEST_EFFORT_RELIABILITY_QOS);
    reliable.reliability(bestEffort.reliability());
    reliable.reliable_reader_qos(bestEffort.reliable_reader_qos()); // of no use to it
    EXPECT_EQ(bestEffort, reliable);
}

TEST_F(EntityQosTest, MrvReaderKeepsTheLastSampleWhateverTheListAndTheProfilesSay)
{
    const std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>> subscriber(
        generated_dds_MrvSubscriber_vexstubif_AltAz(plex, uri, deadline(1500ms), profiles));
    const auto* const reader = lastMade<dds::DataReader>("Subscriber::create_datareader");
    dds::DataReaderQos expected;
    expected.history().kind = dds::KEEP_LAST_HISTORY_QOS;
    expected.history().depth = 1;
    expected.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE;
    EXPECT_EQ(reader->get_qos().history(), expected.history());
    EXPECT_EQ(reader->get_qos().deadline(), expected.deadline());
    EXPECT_EQ(reader->get_qos().reliability().kind, dds::BEST_EFFORT_RELIABILITY_QOS);
    EXPECT_EQ(reader->get_qos().durability().kind, dds::VOLATILE_DURABILITY_QOS);
    EXPECT_EQ(reader->get_qos().endpoint().history_memory_policy, expected.endpoint().history_memory_policy);
    EXPECT_EQ(reader->get_status_mask().to_ulong(), 0x7FE7UL);
}

} // namespace plex::test
