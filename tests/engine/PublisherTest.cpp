// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <plex/ps/DdsPublisher.hpp>
#include <plex/ps/internal/Time.hpp>

#include <atomic>
#include <limits>
#include <thread>

namespace plex::test
{

namespace
{

namespace fastdds = ovra::plex::fastdds;
namespace internal = ovra::plex::ps::internal;
using Publisher = ovra::plex::ps::DdsPublisher<AltAz, generated::ddsimpl::vexstubif::AltAz>;

/// A position that another transport made.
class ForeignPosition : public AltAz
{
public:
    std::unique_ptr<AltAz> clone() const override { return std::make_unique<ForeignPosition>(); }

    bool keyEquals(const AltAz&) const override { return false; }

    std::unique_ptr<AltAz> cloneKey() const override { return std::make_unique<ForeignPosition>(); }

    bool hasKey() const override { return false; }

    double getAlt() const override { return 1.0; }

    void setAlt(double) override {}

    double getAz() const override { return 2.0; }

    void setAz(double) override {}
};

} // namespace

class PublisherTest : public EntityTest
{
};

TEST_F(PublisherTest, PublishedValueArrives)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publisher->publish(*position(45.5, 180.25), 0ms);
    const auto values = subscriber->read(0);
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0]->getAlt(), 45.5);
    EXPECT_EQ(values[0]->getAz(), 180.25);
}

TEST_F(PublisherTest, ValueMayBeReusedAfterPublishing)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto value = publisher->createDataEntity();
    for (const double alt : {1.0, 2.0, 3.0}) {
        value->setAlt(alt);
        publisher->publish(*value, 0ms);
    }
    EXPECT_THAT(altitudes(subscriber->read(0)), testing::ElementsAre(1.0, 2.0, 3.0));
}

TEST_F(PublisherTest, NegativeTimeoutIsRefusedWithoutALogRecord)
{
    const auto publisher = this->publisher();
    const LogCapture log;
    const std::string expected = "Negative timeout given to publish Uri:" + uri.string();
    EXPECT_EQ(thrownText<PlexException>([&] { publisher->publish(*position(1), -1ms); }), expected);
    EXPECT_EQ(thrownText<PlexException>([&] { publisher->publish(1.5, *position(1), -1ms); }), expected);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(PublisherTest, ClosedPublisherReportsThatEvenForANegativeTimeout)
{
    const auto publisher = this->publisher();
    publisher->close();
    const std::string expected = "Entity closed Uri: " + uri.string();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publisher->publish(*position(1), -1ms); }), expected);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publisher->publish(1.5, *position(1), 0ms); }),
              expected);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publisher->createDataEntity(); }), expected);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publisher->createInstancePublisher(*position(1)); }),
              expected);
}

TEST_F(PublisherTest, SecondCloseDoesNothingAndLogsNothing)
{
    const auto publisher = this->publisher();
    publisher->close();
    const LogCapture log;
    publisher->close();
    EXPECT_TRUE(log.records().empty());
}

TEST_F(PublisherTest, ForeignValueIsRefused)
{
    const auto publisher = this->publisher();
    const LogCapture log;
    const auto text = thrownText<IllegalStateException>([&] { publisher->publish(ForeignPosition(), 0ms); });
    EXPECT_EQ(text, "Data type for instance or value is incorrect. Not a DDS supported type");
    EXPECT_EQ(log.count("plexDdsPublisher", log4cplus::ERROR_LOG_LEVEL, text), 1);
    EXPECT_THROW(publisher->publish(1.5, ForeignPosition(), 0ms), IllegalStateException);
}

TEST_F(PublisherTest, SourceTimestampArrivesWithTheValue)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publisher->publish(1700000000.5, *position(1), 0ms);
    std::vector<std::shared_ptr<ovra::plex::ps::DataEvent<AltAz>>> events;
    ASSERT_EQ(subscriber->readDataEvents(ovra::plex::ps::DataEventFilter<AltAz>(), events, 0, 0ms), 1U);
    EXPECT_DOUBLE_EQ(events[0]->getSourceTimestamp(), 1700000000.5);
}

TEST_F(PublisherTest, TimeBeforeTheEpochIsRefusedBeforeDdsIsAsked)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    for (const double timestamp : {-1.5, -1.0, -0.5, -1e-9}) {
        EXPECT_EQ(thrownText<PlexException>([&] { publisher->publish(timestamp, *position(1), 0ms); }),
                  "Source timestamp does not fit 32 bits of seconds: " + std::to_string(timestamp));
    }
    EXPECT_THAT(subscriber->read(0), testing::IsEmpty());
}

TEST(SourceTimeTest, SecondsAreTruncatedAndTheRestBecomesNanoseconds)
{
    EXPECT_EQ(internal::toSourceTime(0.0), fastdds::Time_t(0, 0));
    EXPECT_EQ(internal::toSourceTime(1.5), fastdds::Time_t(1, 500'000'000));
    EXPECT_EQ(internal::toSourceTime(-0.0), fastdds::Time_t(0, 0));
    EXPECT_EQ(internal::toSourceTime(2147483646.5), fastdds::Time_t(2147483646, 500'000'000));
}

TEST(SourceTimeTest, NanosecondsStayBelowASecond)
{
    EXPECT_EQ(internal::toSourceTime(std::nextafter(1.0, 0.0)), fastdds::Time_t(0, 999'999'999));
    EXPECT_EQ(internal::toSourceTime(std::nextafter(2.0, 0.0)), fastdds::Time_t(1, 999'999'999));
}

TEST(SourceTimeTest, TimeThatDoesNotFitIsRefused)
{
    using Limits = std::numeric_limits<double>;
    for (const double timestamp : {2147483647.0, -0.5, -1e-9, -1.0, -1.5, -2147483649.0, 1e300,
                                   Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
        EXPECT_THROW(internal::toSourceTime(timestamp), PlexException) << timestamp;
    }
}

TEST_F(PublisherTest, PlexIsTheOneThatMadeIt)
{
    EXPECT_EQ(publisher()->getPlex(), plex);
}

TEST_F(PublisherTest, NewValueIsDefault)
{
    const auto value = publisher()->createDataEntity();
    EXPECT_EQ(value->getAlt(), 0.0);
    EXPECT_EQ(value->getAz(), 0.0);
}

TEST_F(PublisherTest, BarePublisherMakesNoInstancePublishers)
{
    Publisher bare(uri, {}, {{"dds.wait_for_ack.timeout_ms", "0"}}, participant(), plex);
    const LogCapture log;
    EXPECT_EQ(thrownText<IllegalStateException>([&] { bare.createInstancePublisher(*position(1)); }),
              "Not implemented");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(PublisherTest, ClosingTheFirstOfTwoPublishersLeavesTheTopicToTheSecond)
{
    const auto first = publisher();
    const auto second = publisher();
    const auto subscriber = this->subscriber();
    first->close();
    second->publish(*position(7), 0ms);
    EXPECT_THAT(altitudes(subscriber->read(0)), testing::ElementsAre(7.0));
    second->close();
    EXPECT_TRUE(topicExists());
    subscriber->close();
    EXPECT_FALSE(topicExists());
}

TEST_F(PublisherTest, DroppedPublisherTakesItsTopicAlong)
{
    auto holder = participant();
    publisher();
    EXPECT_FALSE(topicExists());
}

TEST_F(PublisherTest, CreationIsTraced)
{
    const LogCapture log;
    publisher();
    EXPECT_EQ(log.count("plexDdsPublisher", log4cplus::TRACE_LOG_LEVEL,
                        "Publisher for " + uri.string() + " created"),
              1);
}

TEST_F(PublisherTest, MissingWriterProfileIsNamedAndNothingIsLeft)
{
    const Properties properties{{"dds.qos.profile.file", PROFILE_FILE},
                                {"dds.qos.profile.library", "reliable"},
                                {"dds.qos.profile.writer", "missing"}};
    auto holder = plex->getDomainParticipant(uri, properties);
    const LogCapture log;
    const auto text = thrownText<PlexException>([&] { publisher({}, properties); });
    EXPECT_EQ(text, "Failed to create writer with profile:missing");
    EXPECT_EQ(log.count("plexDdsPublisher", log4cplus::ERROR_LOG_LEVEL, text), 1);
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(PublisherTest, AckTimeoutThatIsNoNumberIsRefused)
{
    auto holder = participant();
    const auto text =
        thrownText<PlexException>([&] { publisher({}, {{"dds.wait_for_ack.timeout_ms", "soon"}}); });
    EXPECT_THAT(
        text, testing::AllOf(testing::HasSubstr("dds.wait_for_ack.timeout_ms"), testing::HasSubstr("soon")));
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(PublisherTest, TwoThreadsCloseOnce)
{
    const auto publisher = this->publisher();
    std::atomic<int> ready{0};
    const auto close = [&] {
        ++ready;
        while (ready < 2) {
        }
        publisher->close();
        EXPECT_THROW(publisher->createDataEntity(), IllegalStateException);
    };
    std::thread other(close);
    close();
    other.join();
}

TEST_F(PublisherTest, SeveralThreadsPublishAtOnce)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::thread other([&] { publishPositions(*publisher, 200); });
    publishPositions(*publisher, 200);
    other.join();
    EXPECT_EQ(subscriber->read(0).size(), 400U);
}

TEST(DurationTest, OfManyYearsIsTheLongestThereIs)
{
    using ovra::plex::ps::internal::toDuration;
    EXPECT_EQ(toDuration(1500).seconds, 1);
    EXPECT_EQ(toDuration(1500).nanosec, 500000000U);
    EXPECT_EQ(toDuration(std::numeric_limits<std::int64_t>::max()).seconds,
              std::numeric_limits<std::int32_t>::max());
}

} // namespace plex::test
