// SPDX-License-Identifier: Apache-2.0
// What the status makes of DDS's reports of losses.
#include "FaultTest.hpp"
#include "MadeEntities.hpp"

#include <plex/dds/Status.hpp>

#include <fastdds/dds/publisher/DataWriterListener.hpp>
#include <fastdds/dds/subscriber/DataReaderListener.hpp>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace ps = ovra::plex::ps;

} // namespace

class StatusFaultsTest : public FaultTest
{
protected:
    long warnings(const std::string& text) const
    {
        return log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL,
                         "The subscriber of topic " + ovra::plex::DdsUriHelper::topic(uri, true) + text);
    }

    void loseAltogether(std::int32_t count) const
    {
        dds::SampleLostStatus status;
        status.total_count = count;
        listener().on_sample_lost(reader, status);
    }

    void rejectAltogether(std::uint32_t count, dds::SampleRejectedStatusKind reason) const
    {
        dds::SampleRejectedStatus status;
        status.total_count = count;
        status.last_reason = reason;
        listener().on_sample_rejected(reader, status);
    }

    dds::DataReaderListener& listener() const
    {
        return const_cast<dds::DataReaderListener&>(*reader->get_listener());
    }

    const std::unique_ptr<ps::Subscriber<AltAz>> subscriber = EntityTest::subscriber();
    dds::DataReader* const reader = lastMade<dds::DataReader>("Subscriber::create_datareader");
    const LogCapture log;
};

TEST_F(StatusFaultsTest, LostValuesAreCountedAndToldAsTheirNumberDoubles)
{
    for (const int count : {1, 2, 3, 4}) {
        loseAltogether(count);
        EXPECT_TRUE(waitFor([&] {
            return count == 3 || warnings(" has lost " + std::to_string(count) + " values so far") == 1;
        }));
        EXPECT_EQ(ps::status(*subscriber).counters.lost, static_cast<unsigned>(count));
    }
    EXPECT_EQ(warnings(" has lost 3 values so far"), 0);
}

TEST_F(StatusFaultsTest, RejectedValuesAreToldWithTheLimit)
{
    const std::pair<dds::SampleRejectedStatusKind, const char*> reasons[] = {
        {dds::REJECTED_BY_SAMPLES_LIMIT, "max_samples"},
        {dds::REJECTED_BY_INSTANCES_LIMIT, "max_instances"},
        {dds::REJECTED_BY_SAMPLES_PER_INSTANCE_LIMIT, "max_samples_per_instance"}};
    unsigned count = 1;
    for (const auto& [reason, limit] : reasons) {
        rejectAltogether(count, reason);
        EXPECT_TRUE(waitFor([&] {
            return warnings(" has rejected " + std::to_string(count) +
                            " values so far, for want of room: " + limit + " of the history is reached") == 1;
        }));
        EXPECT_EQ(ps::status(*subscriber).counters.rejected, count);
        EXPECT_EQ(ps::status(*subscriber).counters.rejectedBy, limit);
        count *= 2;
    }
    rejectAltogether(count, dds::NOT_REJECTED);
    EXPECT_EQ(ps::status(*subscriber).counters.rejectedBy, "");
    EXPECT_TRUE(waitFor([&] {
        return warnings(
                   " has rejected 8 values so far, for want of room: a limit of the history is reached") == 1;
    }));
}

TEST_F(StatusFaultsTest, MissedDeadlinesAreCounted)
{
    dds::RequestedDeadlineMissedStatus status;
    status.total_count = 3;
    listener().on_requested_deadline_missed(reader, status);
    EXPECT_EQ(ps::status(*subscriber).counters.deadlinesMissed, 3U);
}

TEST_F(StatusFaultsTest, AcknowledgmentsThatStayAwayAreToldWithThoseWhoOweThem)
{
    const Properties reliable{{"dds.qos.profile.library", "reliable"},
                              {"dds.qos.profile.file", PROFILE_FILE}};
    const auto publisher = EntityTest::publisher({}, reliable);
    const auto listening = EntityTest::subscriber({}, reliable);
    ASSERT_TRUE(ps::waitForMatched(*publisher, 1, patience));
    const Fault fault("DataWriter::wait_for_acknowledgments", RETCODE_TIMEOUT);
    const auto acknowledgment = ps::waitForAcknowledgments(*publisher, 1ms);
    EXPECT_EQ(acknowledgment.outcome, ps::Acknowledgment::Outcome::TimedOut);
    ASSERT_EQ(acknowledgment.waitedFor.size(), 1U);
    EXPECT_EQ(acknowledgment.waitedFor[0].guid, ps::status(*listening).guid);
}

} // namespace plex::test
