// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <functional>

namespace plex::test
{

using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::Subscriber;

/// What an asynchronous callback may not do to entities other than its own.
class CloseInCallbackTest : public EntityTest
{
protected:
    /// Runs an operation inside an asynchronous callback.
    void inCallback(const std::function<void()>& operation)
    {
        const auto publisher = this->publisher();
        const auto subscriber = this->subscriber();
        int calls = 0;
        const auto subscription = subscriber->subscribeAsync(
            DataEventFilter<AltAz>(), [&](Subscriber<AltAz>&, const DataEvent<AltAz>&) {
                ++calls;
                operation();
            });
        publisher->publish(*position(1), 0ms);
        EXPECT_EQ(calls, 1);
    }

    /// Runs an operation inside an asynchronous callback. @returns what it threw.
    std::string refusalInCallback(const std::function<void()>& operation)
    {
        std::string text;
        inCallback([&] { text = thrownText<IllegalStateException>(operation); });
        return text;
    }

    const std::string refusal_ =
        "Publishers and subscribers can not be closed inside an asynchronous callback Uri:" + uri.string();
};

TEST_F(CloseInCallbackTest, PublisherRefusesAndStaysOpen)
{
    const auto other = publisher();
    const LogCapture log;
    EXPECT_EQ(refusalInCallback([&] { other->close(); }), refusal_);
    EXPECT_EQ(log.count("plexDdsPublisher", log4cplus::ERROR_LOG_LEVEL, refusal_), 1);
    EXPECT_NO_THROW(other->publish(*position(2), 0ms));
}

TEST_F(CloseInCallbackTest, SubscriberRefusesAndStaysOpen)
{
    const auto other = subscriber();
    const LogCapture log;
    EXPECT_EQ(refusalInCallback([&] { other->close(); }), refusal_);
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::ERROR_LOG_LEVEL, refusal_), 1);
    EXPECT_EQ(other->read(0).size(), 1U);
}

TEST_F(CloseInCallbackTest, MrvSubscriberRefusesAndStaysOpen)
{
    const auto other = mrvSubscriber();
    const LogCapture log;
    EXPECT_EQ(refusalInCallback([&] { other->close(); }), refusal_);
    EXPECT_EQ(log.count("plexDdsMrvSubscriber", log4cplus::ERROR_LOG_LEVEL, refusal_), 1);
    EXPECT_NO_THROW(other->readMostRecent(0ms));
}

TEST_F(CloseInCallbackTest, EntitiesThatAreClosedCloseAgain)
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

TEST_F(CloseInCallbackTest, EntitiesCloseAgainOnceTheCallbackHasReturned)
{
    const auto other = publisher();
    refusalInCallback([&] { other->close(); });
    EXPECT_NO_THROW(other->close());
}

} // namespace plex::test
