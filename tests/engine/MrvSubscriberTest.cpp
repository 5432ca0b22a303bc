// SPDX-License-Identifier: Apache-2.0
#include "KeyedTest.hpp"

#include <chrono>
#include <future>

namespace plex::test
{

namespace qos = ovra::plex::ps::qos;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class MrvSubscriberTest : public KeyedTest
{
protected:
    static constexpr const char* logger = "plexDdsMrvSubscriber";

    template <class Operation>
    static std::chrono::nanoseconds duration(Operation operation)
    {
        const auto start = steady_clock::now();
        operation();
        return steady_clock::now() - start;
    }
};

TEST_F(MrvSubscriberTest, NothingIsReturnedBeforeAnyPublication)
{
    const auto publisher = this->publisher();
    EXPECT_THAT(mrvSubscriber()->readMostRecent(0ms), IsEmpty());
}

TEST_F(MrvSubscriberTest, LatestValueIsReturnedAgainAndAgainUntilANewerOneReplacesIt)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    publishPositions(*publisher, 2);
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(1));
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(1));
    publishPositions(*publisher, 1, 7);
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(7));
}

TEST_F(MrvSubscriberTest, EveryFieldIsReturned)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    publisher->publish(*position(45.5, 180.25), 0ms);
    const auto values = subscriber->readMostRecent(0ms);
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0]->getAlt(), 45.5);
    EXPECT_EQ(values[0]->getAz(), 180.25);
}

TEST_F(MrvSubscriberTest, ValuesAreIndependentCopies)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    publishPositions(*publisher, 1, 7);
    const auto value = subscriber->readMostRecent(0ms).at(0);
    value->setAlt(8);
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(7));
    publishPositions(*publisher, 40);
    subscriber->close();
    EXPECT_EQ(value->getAlt(), 8);
}

TEST_F(MrvSubscriberTest, OtherSubscribersAreNotDisturbed)
{
    const auto publisher = this->publisher();
    const auto other = subscriber();
    const auto subscriber = mrvSubscriber();
    publishPositions(*publisher, 2);
    subscriber->readMostRecent(0ms);
    EXPECT_THAT(altitudes(other->read(0)), ElementsAre(0, 1));
}

TEST_F(MrvSubscriberTest, TimeoutIsSleptThroughBeforeReadingAlthoughDataIsThere)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    publishPositions(*publisher, 1);
    EXPECT_LT(duration([&] { subscriber->readMostRecent(0ms); }), 1500ms);
    EXPECT_GE(duration([&] { EXPECT_EQ(subscriber->readMostRecent(1500ms).size(), 1U); }), 1500ms);
}

TEST_F(MrvSubscriberTest, ValuePublishedDuringTheSleepIsReturned)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    auto values = std::async(std::launch::async, [&] { return subscriber->readMostRecent(500ms); });
    publishPositions(*publisher, 1, 7);
    EXPECT_THAT(altitudes(values.get()), ElementsAre(7));
}

TEST_F(MrvSubscriberTest, NegativeTimeoutIsRefusedAtOnceAndNotLogged)
{
    const LogCapture log;
    const auto subscriber = mrvSubscriber();
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber->readMostRecent(-1ms); }),
              "Negative timeout given to Mrv subscriber readMostRecent. Uri:" + uri.string());
    EXPECT_THROW(subscriber->readMostRecent(std::chrono::milliseconds::min()), PlexException);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(MrvSubscriberTest, ClosedSubscriberRefusesToReadBeforeItLooksAtTheTimeout)
{
    const auto subscriber = mrvSubscriber();
    subscriber->close();
    for (const auto timeout : {0ms, -1ms}) {
        EXPECT_EQ(thrownText<IllegalStateException>([&] { subscriber->readMostRecent(timeout); }),
                  "Entity closed Uri: " + uri.string());
    }
}

TEST_F(MrvSubscriberTest, SecondCloseOnlyLogsADebugRecord)
{
    const LogCapture log;
    const auto subscriber = mrvSubscriber();
    subscriber->close();
    EXPECT_EQ(log.count(logger, log4cplus::DEBUG_LOG_LEVEL, "MrvSubscriber already closed"), 0);
    subscriber->close();
    EXPECT_EQ(log.count(logger, log4cplus::DEBUG_LOG_LEVEL, "MrvSubscriber already closed"), 1);
}

TEST_F(MrvSubscriberTest, ClosingTakesTheTopicAlong)
{
    const auto holder = participant();
    const auto subscriber = mrvSubscriber();
    EXPECT_TRUE(topicExists());
    subscriber->close();
    EXPECT_FALSE(topicExists());
}

TEST_F(MrvSubscriberTest, ClosingLeavesATopicThatAnotherEntityUses)
{
    const auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    subscriber->close();
    EXPECT_TRUE(topicExists());
    EXPECT_NO_THROW(publishPositions(*publisher, 1));
}

TEST_F(MrvSubscriberTest, DroppingClosesWithoutARecord)
{
    const auto holder = participant();
    auto subscriber = mrvSubscriber();
    const LogCapture log;
    subscriber.reset();
    EXPECT_FALSE(topicExists());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(MrvSubscriberTest, ValueOfAPublisherThatWentIsLeftOut)
{
    auto publisher = this->publisher();
    const auto subscriber = mrvSubscriber();
    publishPositions(*publisher, 1);
    publisher.reset();
    EXPECT_THAT(subscriber->readMostRecent(0ms), IsEmpty());
}

TEST_F(MrvSubscriberTest, QosObjectsAreNotApplied)
{
    const auto publisher = this->publisher(); // without a deadline: does not match a reader that has one
    const std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>> subscriber(
        generated_dds_MrvSubscriber_vexstubif_AltAz(
            plex, uri, {std::make_shared<qos::Deadline>(1000ms), std::make_shared<qos::Latency>(1ms)}, {}));
    publisher->publish(1000.0, *position(1), 0ms);
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(1));
}

TEST_F(MrvSubscriberTest, LatestValueOfEachInstanceIsReturned)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = mrvSensorSubscriber();
    publish(*publisher, "a", 1);
    publish(*publisher, "b", 2);
    publish(*publisher, "a", 3);
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)),
                UnorderedElementsAre(Reading{"a", 3}, Reading{"b", 2}));
}

TEST_F(MrvSubscriberTest, EveryInstanceIsReturnedHoweverMany)
{
    const std::unique_ptr<SensorWriter> publishers[] = {sensorPublisher(), sensorPublisher()};
    const auto subscriber = mrvSensorSubscriber();
    std::vector<Reading> expected;
    for (int i = 0; i < 200; ++i) {
        publish(*publishers[i % 2], std::to_string(i), i);
        expected.push_back({std::to_string(i), static_cast<double>(i)});
    }
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)), testing::UnorderedElementsAreArray(expected));
}

TEST_F(MrvSubscriberTest, DisposedInstancesAreLeftOutUntilTheyAreWrittenAgain)
{
    const auto subscriber = mrvSensorSubscriber();
    PlainWriter writer(*this);
    for (const char* name : {"a", "b", "c"}) {
        writer.write(name, 1);
    }
    writer.dispose("b");
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)),
                UnorderedElementsAre(Reading{"a", 1}, Reading{"c", 1}));
    writer.write("b", 2);
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)),
                UnorderedElementsAre(Reading{"a", 1}, Reading{"b", 2}, Reading{"c", 1}));
}

TEST_F(MrvSubscriberTest, UnregisteredInstancesAreLeftOut)
{
    const auto subscriber = mrvSensorSubscriber();
    PlainWriter writer(*this);
    writer.write("a", 1);
    writer.write("b", 1);
    writer.unregister("a");
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)), ElementsAre(Reading{"b", 1}));
}

TEST_F(MrvSubscriberTest, InstanceStaysWhileOneOfItsPublishersIsLeft)
{
    const auto subscriber = mrvSensorSubscriber();
    const auto staying = sensorPublisher();
    auto going = sensorPublisher();
    publish(*going, "a", 1);
    publish(*staying, "a", 2);
    going.reset();
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)), ElementsAre(Reading{"a", 2}));
}

/// DDS keeps one sample of an instance, and the notice that a writer has unregistered it is one.
TEST_F(MrvSubscriberTest, NoticeOfOneOfTwoForeignWritersHidesTheValueUntilTheNextOne)
{
    const auto subscriber = mrvSensorSubscriber();
    PlainWriter going(*this);
    PlainWriter staying(*this);
    going.write("a", 1);
    staying.write("a", 2);
    going.unregister("a");
    EXPECT_THAT(subscriber->readMostRecent(0ms), testing::IsEmpty());
    staying.write("a", 3);
    EXPECT_THAT(readings(subscriber->readMostRecent(0ms)), ElementsAre(Reading{"a", 3}));
}

} // namespace plex::test
