// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <atomic>
#include <exception>
#include <future>
#include <thread>

namespace plex::test
{

namespace
{

constexpr const char* intersects = "Filter intersects with an already registered subscription";

constexpr auto alive = InstanceState::Alive;
constexpr auto disposed = InstanceState::Disposed;
constexpr auto any = InstanceState::Any;
constexpr auto isNew = InstanceEvent::New;
constexpr auto isUpdate = InstanceEvent::Update;
constexpr auto isGone = InstanceEvent::Gone;

struct FilterPair {
    const char* description;
    Filter first;
    Filter second;
    bool collide;
};

std::vector<FilterPair> filterPairs()
{
    return {
        {"same selector, all events", Filter(alive), Filter(alive), true},
        {"disposed twice", Filter(disposed), Filter(disposed), true},
        {"different selectors", Filter(alive), Filter(disposed), false},
        {"any state and alive", Filter(any), Filter(alive), true},
        {"disposed and any state", Filter(disposed), Filter(any), true},
        {"any state twice", Filter(any), Filter(any), true},
        {"same selector, different events", Filter(alive, {isNew}), Filter(alive, {isUpdate}), false},
        {"same selector, same event", Filter(alive, {isUpdate}), Filter(alive, {isUpdate}), true},
        {"same selector, one event in common", Filter(alive, {isNew, isUpdate}),
         Filter(alive, {isUpdate, isGone}), true},
        {"same selector, one of all events", Filter(alive, {isNew}), Filter(alive), true},
        {"same selector, the event that never matches", Filter(alive, {isGone}), Filter(alive, {isGone}),
         true},
        {"any state, different events", Filter(any, {isNew}), Filter(any, {isUpdate}), false},
        {"any state and alive, different events", Filter(any, {isNew}), Filter(alive, {isUpdate}), false},
        {"any state and disposed, same event", Filter(any, {isNew}), Filter(disposed, {isNew}), true},
        {"different selectors, same event", Filter(alive, {isNew}), Filter(disposed, {isNew}), false},
    };
}

} // namespace

class SubscriptionTest : public CallbackTest
{
protected:
    static bool accepts(Reader& subscriber, Kind kind, const Filter& filter)
    {
        try {
            subscribe(subscriber, kind, filter);
            return true;
        } catch (const PlexException& error) {
            EXPECT_STREQ(error.what(), intersects);
            return false;
        }
    }
};

class FilterPairTest : public SubscriptionTest, public testing::WithParamInterface<std::tuple<Kind, Kind>>
{
};

TEST_P(FilterPairTest, FiltersCollideWhereASampleCouldPassBoth)
{
    const auto [first, second] = GetParam();
    const auto subscriber = this->subscriber();
    for (const auto& pair : filterPairs()) {
        SCOPED_TRACE(pair.description);
        const auto registered = subscribe(*subscriber, first, pair.first);
        EXPECT_EQ(accepts(*subscriber, second, pair.second), !pair.collide);
    }
}

TEST_P(FilterPairTest, FiltersOfATypeWithoutAKeyNeverCollideWhenBothNameAnInstance)
{
    const auto [first, second] = GetParam();
    const auto subscriber = this->subscriber();
    const auto registered = subscribe(*subscriber, first, naming(position(1)));
    EXPECT_TRUE(accepts(*subscriber, second, naming(position(1))));
}

TEST_P(FilterPairTest, FilterThatNamesAnInstanceCollidesWithOneThatNamesNone)
{
    const auto [first, second] = GetParam();
    const auto subscriber = this->subscriber();
    {
        const auto registered = subscribe(*subscriber, first, naming(position(1)));
        EXPECT_FALSE(accepts(*subscriber, second, Filter(any)));
    }
    const auto registered = subscribe(*subscriber, first, Filter(any));
    EXPECT_FALSE(accepts(*subscriber, second, naming(position(1))));
}

INSTANTIATE_TEST_SUITE_P(Kinds, FilterPairTest,
                         testing::Combine(testing::ValuesIn(allKinds), testing::ValuesIn(allKinds)));

TEST_F(SubscriptionTest, CollisionIsLoggedAndLeavesTheRegisteredSubscriptionAlone)
{
    const LogCapture log;
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::vector<Heard> heard;
    const auto registered = subscriber->subscribeAsync({}, hearing(heard));
    EXPECT_EQ(thrownText<PlexException>([&] { subscribe(*subscriber, Kind::Sync); }), intersects);
    EXPECT_EQ(log.count(managerLogger, log4cplus::ERROR_LOG_LEVEL, intersects), 1);
    publishPositions(*publisher, 1);
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(SubscriptionTest, CollisionIsFoundBehindSubscriptionsThatDoNotCollide)
{
    const auto subscriber = this->subscriber();
    const auto first = subscribe(*subscriber, Kind::Sync, Filter(alive, {isNew}));
    const auto second = subscribe(*subscriber, Kind::Async, Filter(alive, {isUpdate}));
    const auto third = subscribe(*subscriber, Kind::Notifier, Filter(disposed));
    EXPECT_FALSE(accepts(*subscriber, Kind::Sync, Filter(disposed, {isNew})));
    EXPECT_TRUE(accepts(*subscriber, Kind::Sync, Filter(alive, {isGone})));
}

TEST_F(SubscriptionTest, SubscribersDoNotShareTheirFilters)
{
    const auto first = this->subscriber();
    const auto second = this->subscriber();
    const auto handle = subscribe(*first, Kind::Async);
    EXPECT_TRUE(accepts(*second, Kind::Async, Filter()));
}

TEST_F(SubscriptionTest, LaterChangesOfAFilterDoNotReachItsSubscription)
{
    const auto subscriber = this->subscriber();
    Filter filter(alive, {isNew});
    const auto handle = subscribe(*subscriber, Kind::Async, filter);
    filter.instanceState = disposed;
    EXPECT_FALSE(accepts(*subscriber, Kind::Async, Filter(alive)));
    EXPECT_TRUE(accepts(*subscriber, Kind::Async, Filter(disposed)));
}

TEST_F(SubscriptionTest, OnlyOneOfTwoCollidingSubscriptionsIsMadeAtOnce)
{
    const auto subscriber = this->subscriber();
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> ready = 0;
        Handle handles[2];
        const auto race = [&](Kind kind, Handle& handle) {
            ++ready;
            while (ready < 2) {
            }
            try {
                handle = subscribe(*subscriber, kind);
            } catch (const PlexException&) {
                EXPECT_EQ(handle, nullptr);
            }
        };
        std::thread other([&] { race(Kind::Sync, handles[0]); });
        race(Kind::Async, handles[1]);
        other.join();
        EXPECT_NE(handles[0] == nullptr, handles[1] == nullptr);
    }
}

TEST_F(SubscriptionTest, AsynchronousSubscriptionsOutliveTheDroppedSubscriber)
{
    const auto publisher = this->publisher();
    auto subscriber = this->subscriber();
    int calls = 0;
    const auto callback = subscribe(*subscriber, Kind::Async, Filter(alive), [&] { ++calls; });
    const auto notifier = subscribe(*subscriber, Kind::Notifier, Filter(disposed), [&] { calls += 10; });
    subscriber.reset();
    publishPositions(*publisher, 2);
    EXPECT_EQ(calls, 2);
}

class HandleTest : public SubscriptionTest, public testing::WithParamInterface<Kind>
{
protected:
    /// Publishes and polls, so that a subscription of any kind would hear of it.
    static void provoke(Writer& publisher, Reader& subscriber)
    {
        publishPositions(publisher, 1);
        subscriber.poll(0, 50ms);
    }
};

TEST_P(HandleTest, SubscriptionLastsUntilItIsClosed)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    const auto handle = subscribe(*subscriber, GetParam(), {}, [&] { ++calls; });
    provoke(*publisher, *subscriber);
    EXPECT_EQ(calls, 1);
    handle->close();
    provoke(*publisher, *subscriber);
    EXPECT_EQ(calls, 1);
}

TEST_P(HandleTest, DroppingAHandleEndsItsSubscription)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    subscribe(*subscriber, GetParam(), {}, [&] { ++calls; }).reset();
    provoke(*publisher, *subscriber);
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(accepts(*subscriber, GetParam(), {}));
}

TEST_P(HandleTest, FilterCanBeSubscribedAgainOnceItsSubscriptionIsClosed)
{
    const auto subscriber = this->subscriber();
    const auto first = subscribe(*subscriber, GetParam());
    EXPECT_FALSE(accepts(*subscriber, GetParam(), {}));
    first->close();
    const auto second = subscribe(*subscriber, GetParam());
    first->close();
    EXPECT_FALSE(accepts(*subscriber, GetParam(), {}));
}

TEST_P(HandleTest, ClosingTheSubscriberEndsItsSubscriptionsAndLeavesTheHandlesHarmless)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    auto closed = subscribe(*subscriber, GetParam(), Filter(alive), [&] { ++calls; });
    auto dropped = subscribe(*subscriber, GetParam(), Filter(disposed), [&] { ++calls; });
    subscriber->close();
    publishPositions(*publisher, 1);
    closed->close();
    dropped.reset();
    EXPECT_EQ(calls, 0);
}

TEST_P(HandleTest, SubscribingToAClosedSubscriberIsRefused)
{
    const auto subscriber = this->subscriber();
    subscriber->close();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { subscribe(*subscriber, GetParam()); }),
              "Entity closed Uri: " + uri.string());
}

TEST_P(HandleTest, HandleKeepsAClosedSubscriberAlive)
{
    auto subscriber = this->subscriber();
    const std::weak_ptr<void> resources = participant();
    auto handle = subscribe(*subscriber, GetParam());
    subscriber->close();
    subscriber.reset();
    EXPECT_FALSE(resources.expired());
    handle->close();
    EXPECT_FALSE(resources.expired());
    handle.reset();
    EXPECT_TRUE(resources.expired());
}

TEST_P(HandleTest, CallbackIsDestroyedWhenItsSubscriptionIsClosed)
{
    const auto subscriber = this->subscriber();
    const auto captured = std::make_shared<int>();
    const auto handle = subscribe(*subscriber, GetParam(), {}, [captured] {});
    EXPECT_GT(captured.use_count(), 1);
    handle->close();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_P(HandleTest, CallbackIsDestroyedWhenItsSubscriberIsClosed)
{
    const auto subscriber = this->subscriber();
    const auto captured = std::make_shared<int>();
    const auto handle = subscribe(*subscriber, GetParam(), {}, [captured] {});
    subscriber->close();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_P(HandleTest, CallbackMayOwnAnotherSubscriptionOfItsKind)
{
    const auto subscriber = this->subscriber();
    std::shared_ptr<Subscription> inner = subscribe(*subscriber, GetParam(), Filter(disposed));
    const std::weak_ptr<Subscription> watched = inner;
    const auto outer = subscribe(*subscriber, GetParam(), Filter(alive), [inner] {});
    inner.reset();
    outer->close();
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(accepts(*subscriber, GetParam(), Filter(disposed)));
}

INSTANTIATE_TEST_SUITE_P(Kinds, HandleTest, testing::ValuesIn(allKinds), testing::PrintToStringParamName());

TEST_F(SubscriptionTest, ClosingTheSubscriberWaitsForACallThatAnotherThreadEnds)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    std::promise<void> release;
    std::atomic<bool> runs = false;
    std::atomic<bool> finished = false;
    const auto subscription = subscriber->subscribeAsync(Filter(), [&](Reader&, const Event&) {
        runs = true;
        release.get_future().wait();
        finished = true;
    });
    const auto publishing = std::async(std::launch::async, [&] { publisher->publish(*position(1), 0ms); });
    EXPECT_TRUE(waitFor([&] { return runs.load(); }));
    const auto ending = std::async(std::launch::async, [&] { subscription->close(); });
    EXPECT_TRUE(waitFor([&] { // it is no longer registered, so that its filter is free
        try {
            subscriber->subscribeAsync(Filter(), [](Reader&, const Event&) {})->close();
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }));
    auto closing = std::async(std::launch::async, [&] {
        subscriber->close();
        return finished.load();
    });
    closing.wait_for(100ms); // it is not to end before the call does
    release.set_value();
    EXPECT_TRUE(closing.get());
}

} // namespace plex::test
