// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

namespace plex::test
{

namespace qos = ovra::plex::ps::qos;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

class PollTest : public CallbackTest
{
protected:
    /// Long enough for a poll to take what is waiting.
    static constexpr std::chrono::milliseconds moment{100};

    const std::unique_ptr<Writer> writer = publisher();
    const std::unique_ptr<Reader> reader = subscriber();
    std::vector<Heard> heard;
};

TEST_F(PollTest, CallsBackWithWhatIsWaiting)
{
    const auto handle = reader->subscribe({}, hearing(heard));
    publishPositions(*writer, 3);
    EXPECT_EQ(reader->poll(0, moment), 3U);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1, 2));
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(PollTest, ValuesOfAPublisherThatWentAreLeftToReads)
{
    const auto handle = reader->subscribe(Filter(InstanceState::Any), hearing(heard));
    auto going = publisher();
    publishPositions(*going, 40); // more than DDS gives at a time
    writer->close();
    going.reset();
    EXPECT_EQ(reader->poll(0, moment), 0U);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_EQ(reader->read(0).size(), 40U);
}

TEST_F(PollTest, TimeoutOfZeroTakesNothing)
{
    const auto handle = reader->subscribe({}, hearing(heard));
    publishPositions(*writer, 3);
    EXPECT_EQ(reader->poll(0, 0ms), 0U);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(altitudes(reader->read(0)), ElementsAre(0, 1, 2));
}

TEST_F(PollTest, NegativeTimeoutIsRefusedAndNotLogged)
{
    const LogCapture log;
    publishPositions(*writer, 1);
    EXPECT_EQ(thrownText<PlexException>([&] { reader->poll(0, -1ms); }),
              "Negative timeout given to poll. Uri:" + uri.string());
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_EQ(reader->read(0).size(), 1U);
}

TEST_F(PollTest, ClosedSubscriberIsReportedBeforeANegativeTimeout)
{
    reader->close();
    for (const auto timeout : {-1ms, 0ms, 100ms}) {
        EXPECT_EQ(thrownText<IllegalStateException>([&] { reader->poll(0, timeout); }),
                  "Entity closed Uri: " + uri.string());
    }
}

TEST_F(PollTest, UsesTheWholeTimeoutAlthoughDataIsThereAtOnce)
{
    publishPositions(*writer, 1);
    const auto start = steady_clock::now();
    EXPECT_EQ(reader->poll(0, 100ms), 1U);
    EXPECT_GE(steady_clock::now() - start, 100ms);
}

TEST_F(PollTest, CountsSamplesThatNobodyWantedOrThatAreTooOld)
{
    const auto punctual = subscriber({std::make_shared<qos::Latency>(5000ms)});
    const auto handle =
        punctual->subscribe(Filter(InstanceState::Alive, {InstanceEvent::Update}), hearing(heard));
    writer->publish(*position(1), 0ms);
    writer->publish(1000.0, *position(2), 0ms);
    EXPECT_EQ(punctual->poll(0, moment), 2U);
    EXPECT_THAT(heard, IsEmpty());
    writer->publish(1000.0, *position(3), 0ms);
    writer->publish(*position(4), 0ms);
    EXPECT_EQ(punctual->poll(0, moment), 2U);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(4));
}

TEST_F(PollTest, ConsumesSamplesAlsoWithoutSubscriptions)
{
    publishPositions(*writer, 3);
    EXPECT_EQ(reader->poll(0, moment), 3U);
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(PollTest, TakesBatchesOfAtMostTheGivenCount)
{
    std::vector<std::size_t> left;
    const auto handle = reader->subscribe(
        {}, [&](Reader& subscriber, const Event&) { left.push_back(subscriber.read(0).size()); });
    publishPositions(*writer, 5);
    EXPECT_EQ(reader->poll(2, moment), 2U);
    EXPECT_THAT(left, ElementsAre(3, 0));
}

TEST_F(PollTest, ServesAllSamplesHoweverSmallTheBatches)
{
    const auto handle = reader->subscribe({}, hearing(heard));
    publishPositions(*writer, 5);
    EXPECT_EQ(reader->poll(2, 100ms), 5U);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(PollTest, ServesMoreSamplesThanOneTakeReturns)
{
    const auto handle = reader->subscribe({}, hearing(heard));
    publishPositions(*writer, 200);
    EXPECT_EQ(reader->poll(0, 200ms), 200U);
    EXPECT_EQ(heard.size(), 200U);
}

TEST_F(PollTest, ServesSamplesThatArriveMeanwhile)
{
    const auto handle = reader->subscribe({}, [&](Reader&, const Event& event) {
        if (event.getData()->getAlt() < 3) {
            writer->publish(*position(event.getData()->getAlt() + 1), 0ms);
        }
    });
    publishPositions(*writer, 1);
    EXPECT_EQ(reader->poll(0, 200ms), 4U);
}

TEST_F(PollTest, EventTellsTheFirstSampleFromFurtherOnesAndCarriesTheSelector)
{
    const auto handle = reader->subscribe(Filter(InstanceState::Any), hearing(heard));
    for (int i = 0; i < 3; ++i) {
        publishPositions(*writer, 1, i);
        reader->poll(0, moment);
    }
    EXPECT_THAT(heard, ElementsAre(Heard{0, InstanceState::Any, InstanceEvent::New},
                                   Heard{1, InstanceState::Any, InstanceEvent::Update},
                                   Heard{2, InstanceState::Any, InstanceEvent::Update}));
}

TEST_F(PollTest, EventCarriesAValueOfItsOwnAndTheSourceTimestamp)
{
    std::shared_ptr<AltAz> kept;
    const auto handle = reader->subscribe({}, [&](Reader&, const Event& event) {
        EXPECT_TRUE(event.hasValidData());
        EXPECT_NEAR(event.getSourceTimestamp(), 1234567.75, 1e-6);
        kept = event.getData();
    });
    writer->publish(1234567.75, *position(45.5, 180.25), 0ms);
    reader->poll(0, moment);
    publishPositions(*writer, 40);
    reader->close();
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->getAlt(), 45.5);
    EXPECT_EQ(kept->getAz(), 180.25);
}

TEST_F(PollTest, EachSubscriptionGetsTheSamplesThatItsFilterMatches)
{
    std::vector<Heard> first;
    std::vector<Heard> further;
    const auto onNew = reader->subscribe(Filter(InstanceState::Any, {InstanceEvent::New}), hearing(first));
    const auto onUpdate =
        reader->subscribe(Filter(InstanceState::Any, {InstanceEvent::Update}), hearing(further));
    for (int i = 0; i < 3; ++i) {
        publishPositions(*writer, 1, i);
        reader->poll(0, moment);
    }
    EXPECT_THAT(altitudesOf(first), ElementsAre(0));
    EXPECT_THAT(altitudesOf(further), ElementsAre(1, 2));
}

TEST_F(PollTest, TwoThreadsShareTheSamples)
{
    int calls = 0; // callbacks run one at a time
    const auto handle = subscribe(*reader, Kind::Sync, {}, [&] { ++calls; });
    auto other = std::async(std::launch::async, [&] { return reader->poll(0, 200ms); });
    publishPositions(*writer, 100);
    const auto here = reader->poll(1, 200ms);
    EXPECT_EQ(here + other.get(), 100U);
    EXPECT_EQ(calls, 100);
}

TEST_F(PollTest, SamplesBehindAnExceptionAreToldByTheNextPoll)
{
    const auto handle = reader->subscribe({}, [&](Reader& from, const Event& event) {
        hearing(heard)(from, event);
        if (heard.size() % 2 == 1) {
            throw std::runtime_error("odd");
        }
    });
    publishPositions(*writer, 5);
    EXPECT_THROW(reader->poll(0, moment), std::runtime_error);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0));
    EXPECT_THROW(reader->poll(0, moment), std::runtime_error);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1, 2));
    EXPECT_THROW(reader->poll(1, moment), std::runtime_error);
    publishPositions(*writer, 1, 5);
    EXPECT_EQ(reader->poll(1, moment), 1U);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(PollTest, UntoldSamplesAreToldToEachSubscriptionOnce)
{
    std::vector<Heard> others;
    bool fails = true;
    const auto first = subscribe(*reader, Kind::Sync, Filter(InstanceState::Any, {InstanceEvent::New}), [&] {
        if (std::exchange(fails, false)) {
            throw std::runtime_error("once");
        }
    });
    const auto further =
        reader->subscribe(Filter(InstanceState::Any, {InstanceEvent::Update}), hearing(others));
    publishPositions(*writer, 1);
    EXPECT_THROW(reader->poll(0, moment), std::runtime_error);
    publishPositions(*writer, 3, 1);
    reader->poll(0, moment);
    EXPECT_THAT(altitudesOf(others), ElementsAre(1, 2, 3));
}

TEST_F(PollTest, CallbackThatPollsWhileAnotherThreadPollsWaitsNoLongerThanItMay)
{
    std::promise<void> inside;
    std::promise<void> polled;
    const auto handle = subscribe(*reader, Kind::Sync, Filter(InstanceState::Any, {InstanceEvent::New}), [&] {
        inside.set_value();
        polled.get_future().wait();
    });
    publishPositions(*writer, 1);
    auto other = std::async(std::launch::async, [&] { return reader->poll(0, moment); });
    inside.get_future().wait();
    const auto second = subscriber();
    const auto asynchronous =
        subscribe(*second, Kind::Async, {}, [&] { EXPECT_EQ(reader->poll(0, 10ms), 0U); });
    const auto otherWriter = publisher();
    publishPositions(*otherWriter, 1);
    polled.set_value();
    other.get();
}

TEST_F(PollTest, EndsPromptlyWhenAnotherThreadCloses)
{
    for (const auto timeout : {std::chrono::milliseconds(patience * 3), std::chrono::milliseconds::max()}) {
        const auto closed = subscriber();
        auto result = std::async(std::launch::async, [&] { return closed->poll(0, timeout); });
        EXPECT_EQ(result.wait_for(20ms), std::future_status::timeout);
        const auto start = steady_clock::now();
        closed->close();
        EXPECT_EQ(thrownText<IllegalStateException>([&] { result.get(); }),
                  "Entity closed Uri: " + uri.string());
        EXPECT_LT(steady_clock::now() - start, 5s);
    }
}

TEST_F(PollTest, EndsWhenAnotherThreadClosesWhileDataArrives)
{
    for (int round = 0; round < 50; ++round) {
        const auto closed = subscriber();
        int calls = 0;
        const auto handle = subscribe(*closed, Kind::Sync, {}, [&] { ++calls; });
        auto result = std::async(std::launch::async, [&] { return closed->poll(0, patience); });
        publishPositions(*writer, 20);
        closed->close();
        EXPECT_THROW(result.get(), IllegalStateException);
    }
}

} // namespace plex::test
