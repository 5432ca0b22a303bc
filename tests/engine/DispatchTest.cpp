// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <chrono>
#include <functional>

namespace plex::test
{

namespace qos = ovra::plex::ps::qos;
using testing::ElementsAre;
using testing::IsEmpty;

class DispatchTest : public CallbackTest
{
protected:
    /// Positions received before any subscription was made: they wait in the reader.
    static void publishUnheard(Writer& publisher, int count) { publishPositions(publisher, count); }

    static constexpr double longAgo = 1000.0; ///< a source timestamp
};

TEST_F(DispatchTest, NotifierIsCalledBeforeTheCallback)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::string order;
    // The notifier's look at the sample makes the instance known, so the callback's filter matches it too.
    const auto callback =
        subscribe(*subscriber, Kind::Async, Filter(InstanceState::Alive, {InstanceEvent::Update}),
                  [&] { order += "callback "; });
    const auto notifier =
        subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Alive, {InstanceEvent::New}),
                  [&] { order += "notifier "; });
    publishPositions(*publisher, 1);
    EXPECT_EQ(order, "notifier callback ");
}

TEST_F(DispatchTest, SamplesThatANotifierWasCalledForReachALaterCallbackInTheirOrder)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto notifier = subscribe(*subscriber, Kind::Notifier);
    publishPositions(*publisher, 2);
    notifier->close();
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync(Filter(), hearing(heard));
    publishPositions(*publisher, 1, 2);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1, 2));
}

TEST_F(DispatchTest, NotifierIsCalledOnceForFiveMatchingSamples)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishUnheard(*publisher, 4);
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    publishPositions(*publisher, 1, 4);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(DispatchTest, NotifierIsCalledForEveryArrival)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    publishPositions(*publisher, 3);
    EXPECT_EQ(calls, 3);
}

TEST_F(DispatchTest, EachNotifierIsCalledForItsOwnFilter)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::string order;
    const auto onNew = subscribe(*subscriber, Kind::Notifier,
                                 Filter(InstanceState::Any, {InstanceEvent::New}), [&] { order += "new "; });
    const auto onUpdate =
        subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Any, {InstanceEvent::Update}),
                  [&] { order += "update "; });
    publishPositions(*publisher, 3);
    EXPECT_EQ(order, "new update update ");
}

TEST_F(DispatchTest, NotifierReadsWhatItWasCalledFor)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<double> seen;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader& reader) {
        for (const double alt : altitudes(reader.read(0))) {
            seen.push_back(alt);
        }
    });
    publishPositions(*publisher, 3);
    EXPECT_THAT(seen, ElementsAre(0, 1, 2));
}

TEST_F(DispatchTest, NotifierIsCalledForSamplesThatTheQosHoldsBack)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({std::make_shared<qos::Latency>(5000ms)});
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    publisher->publish(longAgo, *position(1), 0ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(DispatchTest, CallbackTakesItsSamples)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishUnheard(*publisher, 40);
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync({}, hearing(heard));
    publishPositions(*publisher, 2, 40);
    ASSERT_EQ(heard.size(), 42U);
    EXPECT_EQ(heard.front().alt, 0);
    EXPECT_EQ(heard.back().alt, 41);
    EXPECT_THAT(subscriber->read(0), IsEmpty());
}

TEST_F(DispatchTest, CallbackTakesSamplesThatItsFilterDoesNotMatch)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync(Filter(InstanceState::Disposed), hearing(heard));
    publishPositions(*publisher, 3);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(subscriber->read(0), IsEmpty());
}

TEST_F(DispatchTest, SynchronousSubscriptionLeavesArrivingSamplesAlone)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribe({}, hearing(heard));
    publishPositions(*publisher, 3);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(0, 1, 2));
}

TEST_F(DispatchTest, EventTellsTheFirstSampleFromFurtherOnes)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync(Filter(InstanceState::Alive), hearing(heard));
    publishPositions(*publisher, 3);
    EXPECT_THAT(heard, ElementsAre(Heard{0, InstanceState::Alive, InstanceEvent::New},
                                   Heard{1, InstanceState::Alive, InstanceEvent::Update},
                                   Heard{2, InstanceState::Alive, InstanceEvent::Update}));
}

TEST_F(DispatchTest, EventCarriesTheSelectorOfItsFilter)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync(Filter(InstanceState::Any), hearing(heard));
    publishPositions(*publisher, 1);
    EXPECT_THAT(heard, ElementsAre(Heard{0, InstanceState::Any, InstanceEvent::New}));
}

TEST_F(DispatchTest, EventCarriesValueAndSourceTimestamp)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader& reader, const Event& event) {
        ++calls;
        EXPECT_NE(&reader, nullptr);
        EXPECT_TRUE(event.hasValidData());
        EXPECT_EQ(event.getData()->getAlt(), 45.5);
        EXPECT_EQ(event.getData()->getAz(), 180.25);
        EXPECT_NEAR(event.getSourceTimestamp(), 1234567.75, 1e-6);
    });
    publisher->publish(1234567.75, *position(45.5, 180.25), 0ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(DispatchTest, ValueOfAnEventIsBorrowedAndShowsTheNextSampleLater)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishUnheard(*publisher, 1);
    std::shared_ptr<AltAz> kept;
    std::vector<double> seenThroughTheFirst;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader&, const Event& event) {
        if (!kept) {
            kept = event.getData();
        }
        seenThroughTheFirst.push_back(kept->getAlt());
    });
    publishPositions(*publisher, 1, 1);
    EXPECT_THAT(seenThroughTheFirst, ElementsAre(0, 1));
}

TEST_F(DispatchTest, CallbackMayKeepACloneOfTheValue)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::unique_ptr<AltAz> kept;
    const auto handle =
        subscriber->subscribeAsync({}, [&](Reader&, const Event& event) { kept = event.getData()->clone(); });
    publishPositions(*publisher, 1, 7);
    EXPECT_EQ(kept->getAlt(), 7);
}

TEST_F(DispatchTest, EventSetSelectsFirstSamplesOrFurtherOnes)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> first;
    std::vector<Heard> further;
    const auto onNew =
        subscriber->subscribeAsync(Filter(InstanceState::Any, {InstanceEvent::New}), hearing(first));
    const auto onUpdate =
        subscriber->subscribeAsync(Filter(InstanceState::Any, {InstanceEvent::Update}), hearing(further));
    publishPositions(*publisher, 3);
    EXPECT_THAT(altitudesOf(first), ElementsAre(0));
    EXPECT_THAT(altitudesOf(further), ElementsAre(1, 2));
}

TEST_F(DispatchTest, EventSetOfGoneOnlyNeverMatches)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    const Filter gone(InstanceState::Any, {InstanceEvent::Gone});
    const auto callback = subscribe(*subscriber, Kind::Async, gone, [&] { ++calls; });
    publishPositions(*publisher, 2);
    callback->close();
    const auto notifier = subscribe(*subscriber, Kind::Notifier, gone, [&] { ++calls; });
    publishPositions(*publisher, 2);
    EXPECT_EQ(calls, 0);
}

TEST_F(DispatchTest, UnknownSelectorNeverMatches)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    const auto handle =
        subscribe(*subscriber, Kind::Notifier, Filter(static_cast<InstanceState>(3)), [&] { ++calls; });
    const auto other =
        subscribe(*subscriber, Kind::Async, Filter(static_cast<InstanceState>(4)), [&] { ++calls; });
    publishPositions(*publisher, 2);
    EXPECT_EQ(calls, 0);
}

TEST_F(DispatchTest, FilterThatNamesAnInstanceOfATypeWithoutAKeyHearsNothing)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    std::vector<Handle> handles;
    for (const Kind kind : allKinds) {
        handles.push_back(subscribe(*subscriber, kind, naming(position(0)), [&] { ++calls; }));
    }
    publishPositions(*publisher, 2);
    handles.erase(handles.begin() + 1); // the callback, which takes what arrives
    publishPositions(*publisher, 2);
    subscriber->poll(0, 50ms);
    EXPECT_EQ(calls, 0);
}

TEST_F(DispatchTest, SampleOlderThanTheLatencyIsTakenAndNotDelivered)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({std::make_shared<qos::Latency>(5000ms)});
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync({}, hearing(heard));
    publisher->publish(longAgo, *position(1), 0ms);
    publisher->publish(*position(2), 0ms);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(2));
}

TEST_F(DispatchTest, SamplePastItsDeadlineIsTakenAndNotDelivered)
{
    const QoSList qos{std::make_shared<qos::Deadline>(20'000ms)};
    const auto publisher = this->publisher(qos);
    const auto subscriber = this->subscriber(qos);
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync({}, hearing(heard));
    publisher->publish(longAgo, *position(1), 0ms);
    publisher->publish(*position(2), 0ms);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(2));
}

TEST_F(DispatchTest, MissedDeadlineIsOneWarningAndNoCallback)
{
    const LogCapture log;
    const QoSList qos{std::make_shared<qos::Deadline>(1000ms)};
    const auto publisher = this->publisher(qos);
    const auto subscriber = this->subscriber(qos);
    int calls = 0;
    const auto callback = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Alive), [&] { ++calls; });
    const auto notifier =
        subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Disposed), [&] { ++calls; });
    const auto warnings = [&] {
        return log.count(listenerLogger, log4cplus::WARN_LOG_LEVEL, "on_requested_deadline_missed");
    };
    const auto start = std::chrono::steady_clock::now();
    publishPositions(*publisher, 1);
    for (int missed = 1; missed <= 2; ++missed) {
        EXPECT_TRUE(waitFor([&] { return warnings() >= missed; })); // a slow machine may see two at once
        EXPECT_GE(std::chrono::steady_clock::now() - start, missed * 990ms);
    }
    EXPECT_EQ(calls, 1);
}

TEST_F(DispatchTest, IncompatiblePublisherIsOneWarning)
{
    const LogCapture log;
    const auto subscriber = this->subscriber({std::make_shared<qos::Deadline>(1000ms)});
    const auto warnings = [&] {
        return log.count(listenerLogger, log4cplus::WARN_LOG_LEVEL, "Requested incompatible QoS ");
    };
    EXPECT_EQ(warnings(), 0);
    const auto publisher = this->publisher();
    EXPECT_TRUE(waitFor([&] { return warnings() > 0; }));
    EXPECT_EQ(warnings(), 1);
}

} // namespace plex::test
