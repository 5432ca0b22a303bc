// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <atomic>
#include <future>
#include <thread>

namespace plex::test
{

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::UnorderedElementsAre;

/// What a callback may do to the subscriber that calls it.
class ReentryTest : public CallbackTest
{
protected:
    const std::unique_ptr<Writer> publisher = EntityTest::publisher();
    std::unique_ptr<Reader> subscriber = EntityTest::subscriber();
};

TEST_F(ReentryTest, PublishingInsideACallbackIsHeardWhenItHasReturned)
{
    std::vector<double> heard;
    bool inside = false;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader&, const Event& event) {
        EXPECT_FALSE(inside);
        inside = true;
        const double alt = event.getData()->getAlt();
        heard.push_back(alt);
        if (alt < 3) {
            publisher->publish(*position(alt + 1), 0ms);
        }
        inside = false;
    });
    publishPositions(*publisher, 1);
    EXPECT_THAT(heard, ElementsAre(0, 1, 2, 3));
}

TEST_F(ReentryTest, PublishingInsideANotifierIsHeardWhenItHasReturned)
{
    std::vector<double> heard;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader& reader) {
        for (const double alt : altitudes(reader.read(0))) {
            heard.push_back(alt);
            if (alt < 3) {
                publisher->publish(*position(alt + 1), 0ms);
            }
        }
    });
    publishPositions(*publisher, 1);
    EXPECT_THAT(heard, ElementsAre(0, 1, 2, 3));
}

TEST_F(ReentryTest, PublishingInsideACallbackReachesOtherSubscribersWhenItHasReturned)
{
    const auto otherPublisher = EntityTest::publisher();
    const auto other = EntityTest::subscriber();
    std::vector<Heard> heard;
    const auto inner = other->subscribeAsync({}, hearing(heard));
    const auto outer = subscriber->subscribeAsync({}, [&](Reader&, const Event& event) {
        if (event.getData()->getAlt() == 0) {
            otherPublisher->publish(*position(1), 0ms);
            EXPECT_THAT(altitudesOf(heard), Not(Contains(1)));
        }
    });
    publishPositions(*publisher, 1);
    EXPECT_THAT(altitudesOf(heard), UnorderedElementsAre(0, 1));
}

TEST_F(ReentryTest, PublishingInsideAPolledCallbackIsHeardAtOnce)
{
    const auto other = EntityTest::subscriber();
    std::vector<Heard> heard;
    const auto asynchronous = other->subscribeAsync({}, hearing(heard));
    publishPositions(*publisher, 1);
    const auto polled = subscribe(*subscriber, Kind::Sync, {}, [&] {
        if (heard.size() < 2) {
            publisher->publish(*position(1), 0ms);
            EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1));
        }
    });
    EXPECT_EQ(subscriber->poll(1, 200ms), 2U);
}

TEST_F(ReentryTest, SubscriptionMadeInsideACallbackTakesPartFromTheNextSampleOn)
{
    std::vector<Heard> heard;
    Handle later;
    const auto handle =
        subscribe(*subscriber, Kind::Async, Filter(InstanceState::Any, {InstanceEvent::New}), [&] {
            later = subscriber->subscribeAsync(Filter(InstanceState::Any, {InstanceEvent::Update}),
                                               hearing(heard));
        });
    publishPositions(*publisher, 3);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(1, 2));
}

TEST_F(ReentryTest, SubscriptionEndedInsideANotifierIsNotCalledAnyMore)
{
    int calls = 0;
    const auto callback = subscribe(*subscriber, Kind::Async,
                                    Filter(InstanceState::Any, {InstanceEvent::Update}), [&] { ++calls; });
    const auto notifier =
        subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Any, {InstanceEvent::New}), [&] {
            callback->close();
            subscriber->read(0);
        });
    publishPositions(*publisher, 2);
    EXPECT_EQ(calls, 0);
}

TEST_F(ReentryTest, TwoCallbacksThatReadEachOthersSubscriberBothReturn)
{
    const auto other = EntityTest::subscriber();
    const auto first = subscribe(*subscriber, Kind::Async, {}, [&] { other->read(0); });
    const auto second = subscribe(*other, Kind::Async, {}, [&] { subscriber->read(0); });
    const auto otherPublisher = EntityTest::publisher();
    std::thread thread([&] { publishPositions(*otherPublisher, 1000); });
    publishPositions(*publisher, 1000);
    thread.join();
}

TEST_F(ReentryTest, SynchronousSubscriptionsMayBeChangedInsideAnAsynchronousCallback)
{
    Handle opened;
    auto closed = subscribe(*subscriber, Kind::Sync, Filter(InstanceState::Disposed));
    const auto handle = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Alive), [&] {
        closed->close();
        opened = subscribe(*subscriber, Kind::Sync, Filter(InstanceState::Disposed));
    });
    publishPositions(*publisher, 1);
    EXPECT_NE(opened, nullptr);
}

TEST_F(ReentryTest, AsynchronousSubscriptionsMayBeChangedInsideASynchronousCallback)
{
    publishPositions(*publisher, 1);
    Handle opened;
    auto closed = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Disposed));
    const auto handle = subscribe(*subscriber, Kind::Sync, Filter(InstanceState::Alive), [&] {
        closed.reset();
        opened = subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Disposed));
    });
    EXPECT_EQ(subscriber->poll(0, 100ms), 1U);
    EXPECT_NE(opened, nullptr);
}

TEST_F(ReentryTest, PollInsideASynchronousCallbackIsRefusedAndLogged)
{
    const LogCapture log;
    constexpr const char* refused = "poll can not be called inside a callback that it serves";
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Sync, {}, [&] {
        ++calls;
        EXPECT_EQ(thrownText<IllegalStateException>([&] { subscriber->poll(0, 1ms); }), refused);
    });
    publishPositions(*publisher, 1);
    subscriber->poll(0, 100ms);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(log.count(managerLogger, log4cplus::ERROR_LOG_LEVEL, refused), 1);
}

TEST_F(ReentryTest, SynchronousCallbackMayCloseAnotherSubscriber)
{
    const auto other = EntityTest::subscriber();
    const auto handle = subscribe(*subscriber, Kind::Sync, {}, [&] { other->close(); });
    publishPositions(*publisher, 1);
    subscriber->poll(0, 100ms);
    EXPECT_THROW(other->read(0), IllegalStateException);
}

TEST_F(ReentryTest, CallbackMayReadFurtherSamples)
{
    publishPositions(*publisher, 3);
    std::vector<double> heard;
    std::vector<double> read;
    const auto handle = subscriber->subscribeAsync({}, [&](Reader& reader, const Event& event) {
        heard.push_back(event.getData()->getAlt());
        for (const double alt : altitudes(reader.read(0))) {
            read.push_back(alt);
        }
    });
    publishPositions(*publisher, 1, 3);
    EXPECT_THAT(heard, ElementsAre(0));
    EXPECT_THAT(read, ElementsAre(1, 2, 3));
}

TEST_F(ReentryTest, DroppingTheSubscriberInsideItsCallbackLeavesItToTheSubscription)
{
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] {
        ++calls;
        subscriber.reset();
    });
    publishPositions(*publisher, 2);
    EXPECT_EQ(calls, 2);
}

TEST_F(ReentryTest, ThePublisherMayBeDroppedInsideTheCallbackThatItsPublishingRuns)
{
    auto dropped = EntityTest::publisher();
    int calls = 0;
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] {
        ++calls;
        dropped.reset();
    });
    publishPositions(*dropped, 1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(dropped, nullptr);
}

class ReentryByKindTest : public ReentryTest, public testing::WithParamInterface<Kind>
{
protected:
    /// Makes a sample arrive and be served to a subscription of any kind.
    void provoke()
    {
        publishPositions(*publisher, 1);
        if (GetParam() == Kind::Sync) {
            subscriber->poll(0, 100ms);
        }
    }

    /// As provoke(), while another thread closes the subscriber.
    void provokeUntilClosed()
    {
        publishPositions(*publisher, 1);
        if (GetParam() == Kind::Sync) {
            EXPECT_THROW(subscriber->poll(0, patience), IllegalStateException);
        }
    }

    /// Whether nobody subscribes to what everybody would.
    bool filterIsFree() const
    {
        try {
            subscribe(*subscriber, Kind::Sync);
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    }

    bool closingHasBegun() const
    {
        try {
            subscriber->read(0);
            return false;
        } catch (const IllegalStateException&) {
            return true;
        }
    }
};

TEST_P(ReentryByKindTest, ClosingTheOwnSubscriptionInsideItsCallbackEndsIt)
{
    int calls = 0;
    Handle handle;
    handle = subscribe(*subscriber, GetParam(), {}, [&] {
        ++calls;
        handle->close();
        EXPECT_NO_THROW(handle->close());
    });
    provoke();
    provoke();
    EXPECT_EQ(calls, 1);
}

TEST_P(ReentryByKindTest, DroppingTheOwnSubscriptionInsideItsCallbackEndsIt)
{
    const auto captured = std::make_shared<int>(1);
    int calls = 0;
    Handle handle;
    handle = subscribe(*subscriber, GetParam(), {}, [&, captured] {
        ++calls;
        handle.reset();
        EXPECT_EQ(*captured, 1);
    });
    provoke();
    provoke();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(captured.use_count(), 1) << "the ended subscription keeps what its callback has captured";
}

TEST_P(ReentryByKindTest, FilterOfASubscriptionThatHasEndedInsideItsCallbackIsFreeAtOnce)
{
    Handle handle;
    Handle next;
    handle = subscribe(*subscriber, GetParam(), {}, [&] {
        handle->close();
        next = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Any));
    });
    provoke();
    EXPECT_NE(next, nullptr);
}

TEST_P(ReentryByKindTest, ClosingTheSubscriberInsideItsCallbackClosesIt)
{
    int calls = 0;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        ++calls;
        subscriber->close();
        EXPECT_THROW(subscriber->read(0), IllegalStateException);
    });
    publishPositions(*publisher, 1);
    if (GetParam() == Kind::Sync) {
        EXPECT_EQ(subscriber->poll(0, patience), 1U);
    }
    publishPositions(*publisher, 1);
    EXPECT_EQ(calls, 1);
    publisher->close();
    EXPECT_FALSE(topicExists());
}

TEST_P(ReentryByKindTest, DroppingTheSubscriberAndItsSubscriptionInsideTheCallbackEndsBoth)
{
    int calls = 0;
    Handle handle;
    handle = subscribe(*subscriber, GetParam(), {}, [&, this] {
        ++calls;
        handle.reset();
        subscriber.reset();
    });
    publishPositions(*publisher, 1);
    if (GetParam() == Kind::Sync) {
        subscriber->poll(0, 100ms);
    }
    publishPositions(*publisher, 1);
    EXPECT_EQ(calls, 1);
    publisher->close();
    EXPECT_FALSE(topicExists());
}

TEST_P(ReentryByKindTest, ClosingInsideACallbackReturnsAlsoWhileAnotherThreadCloses)
{
    std::promise<void> inside;
    int closed = 0;
    const auto handle = subscribe(*subscriber, GetParam(), Filter(InstanceState::Alive), [&] {
        inside.set_value();
        EXPECT_TRUE(waitFor([&] { return closingHasBegun(); }));
        subscriber->close();
        ++closed;
    });
    std::thread closer([&] {
        inside.get_future().wait();
        subscriber->close();
    });
    provokeUntilClosed();
    closer.join();
    EXPECT_EQ(closed, 1);
}

TEST_P(ReentryByKindTest, ReadThatWaitsInsideACallbackEndsWhenAnotherThreadCloses)
{
    std::promise<void> inside;
    std::string ended;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        subscriber->read(0);
        inside.set_value();
        Events events;
        ended = thrownText<IllegalStateException>([&] { subscriber->readDataEvents({}, events, 1, 0ms); });
    });
    std::thread closer([&] {
        inside.get_future().wait();
        subscriber->close();
    });
    provokeUntilClosed();
    closer.join();
    EXPECT_EQ(ended, "Entity closed Uri: " + uri.string());
}

TEST_P(ReentryByKindTest, ClosingASubscriptionDoesNotWaitForTheSamplesThatAreStillToBeTold)
{
    std::promise<void> inside;
    std::promise<void> mayReturn;
    int calls = 0;
    publishPositions(*publisher, 1000);
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        if (++calls == 1) {
            inside.set_value();
            mayReturn.get_future().wait();
        }
    });
    std::thread closer([&] {
        inside.get_future().wait();
        std::thread release([&] {
            EXPECT_TRUE(waitFor([&] { return filterIsFree(); }));
            mayReturn.set_value();
        });
        handle->close();
        release.join();
    });
    provoke();
    closer.join();
    EXPECT_EQ(calls, 1);
}

TEST_P(ReentryByKindTest, ClosingASubscriptionWaitsForItsCallbackOnAnotherThread)
{
    std::promise<void> inside;
    std::atomic<bool> closed = false;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        inside.set_value();
        EXPECT_FALSE(waitFor([&] { return closed.load(); }, 50ms));
    });
    std::thread closer([&] {
        inside.get_future().wait();
        handle->close();
        closed = true;
    });
    provoke();
    closer.join();
}

TEST_P(ReentryByKindTest, ClosingASubscriptionWaitsForItsCallbackWhileTheSubscriberIsClosed)
{
    std::promise<void> inside;
    std::atomic<int> closed = 0;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        inside.set_value();
        EXPECT_FALSE(waitFor([&] { return closed > 0; }, 50ms));
    });
    std::thread closer([&] {
        inside.get_future().wait();
        std::thread other([&] {
            subscriber->close();
            ++closed;
        });
        EXPECT_TRUE(waitFor([&] { return closingHasBegun(); }));
        waitFor([&] { return closed > 0; }, 10ms); // so that it has forgotten the subscription already
        handle->close();
        ++closed;
        other.join();
    });
    provokeUntilClosed();
    closer.join();
}

TEST_P(ReentryByKindTest, ClosingTheSubscriberWaitsForItsCallbackOnAnotherThread)
{
    std::promise<void> inside;
    std::atomic<bool> closed = false;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] {
        inside.set_value();
        EXPECT_FALSE(waitFor([&] { return closed.load(); }, 50ms));
    });
    std::thread closer([&] {
        inside.get_future().wait();
        subscriber->close();
        closed = true;
    });
    provokeUntilClosed();
    closer.join();
}

INSTANTIATE_TEST_SUITE_P(Kinds, ReentryByKindTest, testing::ValuesIn(allKinds),
                         testing::PrintToStringParamName());

} // namespace plex::test
