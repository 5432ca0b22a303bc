// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <atomic>
#include <functional>

namespace plex::test
{

using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::Subscriber;

/// What an asynchronous callback does to entities other than its own, on the thread that publishes and on one
/// of the participant's own.
class CloseInCallbackTest : public EntityTest, public testing::WithParamInterface<const char*>
{
protected:
    using Position = DataEvent<AltAz>;

    /// Runs an operation inside an asynchronous callback.
    void inCallback(const std::function<void()>& operation)
    {
        const auto publisher = this->publisher();
        const auto subscriber = this->subscriber({}, {{"dds.callback.thread", GetParam()}});
        std::atomic<int> calls = 0;
        const auto subscription =
            subscriber->subscribeAsync(DataEventFilter<AltAz>(), [&](Subscriber<AltAz>&, const Position&) {
                operation();
                ++calls;
            });
        publisher->publish(*position(1), 0ms);
        EXPECT_TRUE(waitFor([&] { return calls == 1; }));
    }
};

TEST_P(CloseInCallbackTest, AllEntitiesCloseAndStayClosed)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto mrvSubscriber = this->mrvSubscriber();
    inCallback([&] {
        publisher->close();
        subscriber->close();
        mrvSubscriber->close();
    });
    EXPECT_THROW(publisher->publish(*position(2), 0ms), IllegalStateException);
    EXPECT_THROW(subscriber->read(0), IllegalStateException);
    EXPECT_THROW(mrvSubscriber->readMostRecent(0ms), IllegalStateException);
}

TEST_P(CloseInCallbackTest, EntitiesThatAreClosedCloseAgain)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto mrvSubscriber = this->mrvSubscriber();
    publisher->close();
    subscriber->close();
    mrvSubscriber->close();
    const LogCapture log;
    inCallback([&] {
        EXPECT_NO_THROW(publisher->close());
        EXPECT_NO_THROW(subscriber->close());
        EXPECT_NO_THROW(mrvSubscriber->close());
    });
    for (const auto& record : log.records()) {
        EXPECT_LE(record.level, log4cplus::DEBUG_LOG_LEVEL) << record.text;
    }
}

TEST_P(CloseInCallbackTest, AllEntitiesMayBeDroppedAndNothingIsLeft)
{
    auto publisher = this->publisher();
    auto subscriber = this->subscriber();
    auto mrvSubscriber = this->mrvSubscriber();
    inCallback([&] {
        publisher.reset();
        subscriber.reset();
        mrvSubscriber.reset();
    });
    EXPECT_FALSE(topicExists());
}

TEST_P(CloseInCallbackTest, LastAsynchronousSubscriptionMayEndItselfAndBeFollowedByAnother)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({}, {{"dds.callback.thread", GetParam()}});
    std::atomic<int> calls = 0;
    for (int round = 1; round <= 3; ++round) {
        std::unique_ptr<ovra::plex::ps::Subscription> subscription;
        subscription =
            subscriber->subscribeAsync(DataEventFilter<AltAz>(), [&](Subscriber<AltAz>&, const Position&) {
                subscription->close();
                ++calls;
            });
        publisher->publish(*position(round), 0ms);
        EXPECT_TRUE(waitFor([&] { return calls == round; }));
    }
}

TEST_P(CloseInCallbackTest, EntitiesMayBeMade)
{
    std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> made;
    std::unique_ptr<Subscriber<AltAz>> listening;
    inCallback([&] {
        made = publisher();
        listening = subscriber();
    });
    made->publish(*position(2), 0ms);
    EXPECT_TRUE(waitFor([&] { return listening->read(0).size() == 1; }));
}

INSTANTIATE_TEST_SUITE_P(Threads, CloseInCallbackTest, testing::Values("transport", "own"),
                         [](const auto& instance) { return std::string(instance.param); });

} // namespace plex::test
