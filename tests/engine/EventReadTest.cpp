// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <chrono>
#include <future>
#include <thread>

namespace plex::test
{

namespace qos = ovra::plex::ps::qos;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

class EventReadTest : public CallbackTest
{
protected:
    static constexpr std::chrono::milliseconds endless = patience * 3;

    /// Starts a read on another thread. @returns its result to come.
    std::future<std::size_t> readElsewhere(Events& into, std::size_t limit, std::chrono::milliseconds timeout)
    {
        return std::async(std::launch::async, [this, &into, limit, timeout] {
            return reader->readDataEvents({}, into, limit, timeout);
        });
    }

    static bool isReady(const std::future<std::size_t>& result, std::chrono::milliseconds within = patience)
    {
        return result.wait_for(within) == std::future_status::ready;
    }

    std::size_t read(std::size_t limit, std::chrono::milliseconds timeout, const Filter& filter = {})
    {
        return reader->readDataEvents(filter, events, limit, timeout);
    }

    /// How long an operation takes.
    template <class Operation>
    static std::chrono::nanoseconds duration(Operation operation)
    {
        const auto start = steady_clock::now();
        operation();
        return steady_clock::now() - start;
    }

    const std::unique_ptr<Writer> writer = publisher();
    const std::unique_ptr<Reader> reader = subscriber();
    Events events;
};

TEST_F(EventReadTest, ReadOfAnEmptyCacheReturnsNone)
{
    EXPECT_EQ(read(0, 0ms), 0U);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(EventReadTest, ReadOfTheCacheTakesAllHoweverMany)
{
    publishPositions(*writer, 100);
    EXPECT_EQ(read(0, 0ms), 100U);
    EXPECT_EQ(events.size(), 100U);
    EXPECT_EQ(events.back()->getData()->getAlt(), 99);
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(EventReadTest, EventsAreAppended)
{
    publishPositions(*writer, 1);
    EXPECT_EQ(read(0, 0ms), 1U);
    publishPositions(*writer, 2, 1);
    EXPECT_EQ(read(0, 0ms), 2U);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1, 2));
}

TEST_F(EventReadTest, EveryEventHasAValueIsAnUpdateAndCarriesTheSelectorOfTheFilter)
{
    publishPositions(*writer, 1);
    read(0, 0ms, Filter(InstanceState::Any));
    publishPositions(*writer, 1);
    read(0, 0ms, Filter(InstanceState::Alive));
    ASSERT_EQ(events.size(), 2U);
    for (const auto& event : events) {
        EXPECT_TRUE(event->hasValidData());
        EXPECT_EQ(event->getInstanceEvent(), InstanceEvent::Update);
    }
    EXPECT_EQ(events[0]->getInstanceState(), InstanceState::Any);
    EXPECT_EQ(events[1]->getInstanceState(), InstanceState::Alive);
}

TEST_F(EventReadTest, EventCarriesAValueOfItsOwnAndTheSourceTimestamp)
{
    writer->publish(1234567.75, *position(45.5, 180.25), 0ms);
    read(0, 0ms);
    publishPositions(*writer, 40);
    reader->close();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0]->getData()->getAlt(), 45.5);
    EXPECT_EQ(events[0]->getData()->getAz(), 180.25);
    EXPECT_NEAR(events[0]->getSourceTimestamp(), 1234567.75, 1e-6);
}

TEST_F(EventReadTest, SamplesThatDoNotPassTheFilterAreConsumed)
{
    publishPositions(*writer, 3);
    EXPECT_EQ(read(0, 0ms, Filter(InstanceState::Disposed)), 0U);
    publishPositions(*writer, 1);
    EXPECT_EQ(read(0, 0ms, Filter(InstanceState::Alive, {InstanceEvent::New})), 0U);
    publishPositions(*writer, 1);
    EXPECT_EQ(read(0, 0ms, naming(position(0))), 0U);
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(EventReadTest, EventSetSelectsFirstSamplesOrFurtherOnes)
{
    publishPositions(*writer, 1);
    EXPECT_EQ(read(0, 0ms, Filter(InstanceState::Alive, {InstanceEvent::New})), 1U);
    publishPositions(*writer, 1, 1);
    EXPECT_EQ(read(0, 0ms, Filter(InstanceState::Alive, {InstanceEvent::Update})), 1U);
    publishPositions(*writer, 1, 2);
    EXPECT_EQ(read(0, 0ms, Filter(InstanceState::Alive, {InstanceEvent::Gone})), 0U);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1));
}

TEST_F(EventReadTest, SampleOlderThanTheLatencyIsConsumedAndNoEvent)
{
    const auto punctual = subscriber({std::make_shared<qos::Latency>(5000ms)});
    writer->publish(1000.0, *position(1), 0ms);
    writer->publish(*position(2), 0ms);
    EXPECT_EQ(punctual->readDataEvents({}, events, 0, 0ms), 1U);
    EXPECT_THAT(altitudes(events), ElementsAre(2));
    EXPECT_THAT(punctual->read(0), IsEmpty());
}

TEST_F(EventReadTest, NegativeTimeoutIsRefusedBeforeAnythingIsTakenAndNotLogged)
{
    const LogCapture log;
    publishPositions(*writer, 1);
    for (const std::size_t limit : {0U, 1U}) {
        EXPECT_EQ(thrownText<PlexException>([&] { read(limit, -1ms); }),
                  "Negative timeout given to readDataEvents. Uri:" + uri.string());
    }
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_THAT(altitudes(reader->read(0)), ElementsAre(0));
}

TEST_F(EventReadTest, ClosedSubscriberIsReportedBeforeANegativeTimeout)
{
    reader->close();
    for (const auto timeout : {-1ms, 0ms, 100ms}) {
        EXPECT_EQ(thrownText<IllegalStateException>([&] { read(0, timeout); }),
                  "Entity closed Uri: " + uri.string());
    }
}

TEST_F(EventReadTest, ReadWithATimeoutReturnsWhatIsThereAtOnce)
{
    publishPositions(*writer, 40);
    EXPECT_LT(duration([&] { EXPECT_EQ(read(0, endless), 40U); }), patience);
}

TEST_F(EventReadTest, ReadWithATimeoutReturnsAfterTheFirstWakeUpWithDataEvenIfNothingPassed)
{
    publishPositions(*writer, 3);
    EXPECT_LT(duration([&] { EXPECT_EQ(read(0, endless, Filter(InstanceState::Disposed)), 0U); }), patience);
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(EventReadTest, ReadWithATimeoutWakesForDataThatArrives)
{
    auto result = readElsewhere(events, 0, endless);
    EXPECT_FALSE(isReady(result, 20ms));
    publishPositions(*writer, 1);
    ASSERT_TRUE(isReady(result));
    EXPECT_EQ(result.get(), 1U);
}

// Only whole seconds count of what is left of a timeout, so a read returns within the second before its end.
TEST_F(EventReadTest, ReadWithATimeoutWaitsForWholeSeconds)
{
    const auto two = duration([&] { EXPECT_EQ(read(0, 2000ms), 0U); });
    EXPECT_GE(two, 990ms);
    const auto none = duration([&] { EXPECT_EQ(read(0, 999ms), 0U); });
    EXPECT_LT(none, two);
}

TEST_F(EventReadTest, ReadWithALimitBlocksUntilSoManyEventsHavePassed)
{
    auto result = readElsewhere(events, 3, 0ms);
    publishPositions(*writer, 2);
    EXPECT_FALSE(isReady(result, 50ms));
    publishPositions(*writer, 1, 2);
    ASSERT_TRUE(isReady(result));
    EXPECT_EQ(result.get(), 3U);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1, 2));
}

TEST_F(EventReadTest, LimitCountsOnlyEventsThatPassTheFilter)
{
    publishPositions(*writer, 1);
    reader->read(0);
    auto result = std::async(
        std::launch::async, [&] { return read(2, 0ms, Filter(InstanceState::Alive, {InstanceEvent::New})); });
    publishPositions(*writer, 5);
    EXPECT_FALSE(isReady(result, 50ms));
    reader->close();
    EXPECT_THROW(result.get(), IllegalStateException);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(EventReadTest, ReadsWithALimitLeaveTheRestInTheReader)
{
    publishPositions(*writer, 10);
    EXPECT_EQ(read(3, 0ms), 3U);
    EXPECT_EQ(read(4, endless), 4U);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1, 2, 3, 4, 5, 6));
    EXPECT_THAT(altitudes(reader->read(0)), ElementsAre(7, 8, 9));
}

TEST_F(EventReadTest, ReadsWithALimitTakeMoreThanOneTakeReturns)
{
    publishPositions(*writer, 200);
    EXPECT_EQ(read(100, 0ms), 100U);
    EXPECT_EQ(read(100, endless), 100U);
    EXPECT_EQ(events.back()->getData()->getAlt(), 199);
}

TEST_F(EventReadTest, ReadWithLimitAndTimeoutReturnsAsSoonAsTheLimitIsReached)
{
    auto result = readElsewhere(events, 5, endless);
    publishPositions(*writer, 4);
    EXPECT_FALSE(isReady(result, 50ms));
    publishPositions(*writer, 1, 4);
    ASSERT_TRUE(isReady(result));
    EXPECT_EQ(result.get(), 5U);
}

TEST_F(EventReadTest, ReadWithLimitAndTimeoutReturnsWhatItHasWhenTheTimeIsUp)
{
    publishPositions(*writer, 3);
    EXPECT_GE(duration([&] { EXPECT_EQ(read(5, 200ms), 3U); }), 200ms);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1, 2));
}

TEST_F(EventReadTest, TimeIsLookedAtBetweenTakes)
{
    publishPositions(*writer, 20000); // more than can be read in the time given
    std::size_t count = 0;
    EXPECT_LT(duration([&] { count = read(20000, 1ms); }), 500ms);
    EXPECT_GT(count, 0U);
    EXPECT_LT(count, 20000U);
    EXPECT_EQ(events.size(), count);
}

TEST_F(EventReadTest, LongestTimeoutWaitsForData)
{
    for (const std::size_t limit : {0U, 1U}) {
        auto result = readElsewhere(events, limit, std::chrono::milliseconds::max());
        EXPECT_FALSE(isReady(result, 20ms));
        publishPositions(*writer, 1);
        ASSERT_TRUE(isReady(result));
        EXPECT_EQ(result.get(), 1U);
    }
}

TEST_F(EventReadTest, EventsCollectedBeforeTheEndStayWithTheCaller)
{
    auto result = readElsewhere(events, 3, 0ms);
    publishPositions(*writer, 2);
    EXPECT_FALSE(isReady(result, 50ms));
    reader->close();
    EXPECT_THROW(result.get(), IllegalStateException);
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1));
}

/// The reads that wait.
struct Strategy {
    const char* name;
    std::size_t limit;
    std::chrono::milliseconds timeout;

    friend std::ostream& operator<<(std::ostream& out, const Strategy& strategy)
    {
        return out << strategy.name;
    }
};

class WaitingReadTest : public EventReadTest, public testing::WithParamInterface<Strategy>
{
protected:
    std::future<std::size_t> wait(Events& into)
    {
        return readElsewhere(into, GetParam().limit, GetParam().timeout);
    }
};

TEST_P(WaitingReadTest, GoesOnWaitingWhenSomebodyElseTookTheData)
{
    for (int round = 0; round < 50; ++round) {
        Events eventsOfTwo[2];
        std::future<std::size_t> readers[] = {wait(eventsOfTwo[0]), wait(eventsOfTwo[1])};
        publishPositions(*writer, 1);
        ASSERT_TRUE(waitFor([&] { return isReady(readers[0], 0ms) || isReady(readers[1], 0ms); }));
        publishPositions(*writer, 1, 1);
        for (auto& result : readers) {
            ASSERT_TRUE(isReady(result));
            EXPECT_EQ(result.get(), 1U);
        }
    }
}

TEST_P(WaitingReadTest, EndsPromptlyWhenAnotherThreadCloses)
{
    auto result = wait(events);
    EXPECT_FALSE(isReady(result, 20ms));
    EXPECT_LT(duration([&] {
                  reader->close();
                  EXPECT_EQ(thrownText<IllegalStateException>([&] { result.get(); }),
                            "Entity closed Uri: " + uri.string());
              }),
              5s);
}

TEST_P(WaitingReadTest, EndsWhenAnotherThreadClosesWhileDataArrives)
{
    for (int round = 0; round < 50; ++round) {
        const auto busy = subscriber();
        Events unused;
        auto result = std::async(std::launch::async, [&] {
            for (;;) {
                busy->readDataEvents({}, unused, GetParam().limit, GetParam().timeout);
            }
        });
        publishPositions(*writer, 20);
        busy->close();
        EXPECT_EQ(thrownText<IllegalStateException>([&] { result.get(); }),
                  "Entity closed Uri: " + uri.string());
    }
}

INSTANTIATE_TEST_SUITE_P(Strategies, WaitingReadTest,
                         testing::Values(Strategy{"UntilTimeout", 0, patience * 3},
                                         Strategy{"UntilLimit", 1, std::chrono::milliseconds(0)},
                                         Strategy{"UntilLimitOrTimeout", 1, patience * 3}),
                         testing::PrintToStringParamName());

} // namespace plex::test
