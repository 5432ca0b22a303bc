// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <atomic>
#include <functional>
#include <stdexcept>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

struct CallbackFailure : std::runtime_error {
    CallbackFailure() : std::runtime_error("the callback failed") {}
};

[[noreturn]] void failHere()
{
    throw CallbackFailure();
}

} // namespace

class CallbackFailureTest : public CallbackTest
{
};

TEST_F(CallbackFailureTest, EmptyCallbackIsABadFunctionCallOutOfPublish)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto handle = subscriber->subscribeAsync({}, Reader::Callback());
    EXPECT_THROW(publishPositions(*publisher, 1), std::bad_function_call);
}

TEST_F(CallbackFailureTest, EmptyNotifierIsABadFunctionCallOutOfPublish)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto handle = subscriber->subscribeAsync({}, Reader::Notifier());
    EXPECT_THROW(publishPositions(*publisher, 1), std::bad_function_call);
}

TEST_F(CallbackFailureTest, ExceptionOfACallbackComesOutOfPublish)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    const auto handle = subscribe(*subscriber, Kind::Async, {}, failHere);
    EXPECT_THROW(publishPositions(*publisher, 1), CallbackFailure);
}

TEST_F(CallbackFailureTest, ExceptionOfACallbackLeavesFurtherSamplesInTheReader)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 2);
    auto handle = subscribe(*subscriber, Kind::Async, {}, failHere);
    EXPECT_THROW(publishPositions(*publisher, 1, 2), CallbackFailure);
    handle.reset();
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(1, 2));
}

TEST_F(CallbackFailureTest, ExceptionOfANotifierKeepsItsSamplesAndCallbacksAway)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    int calls = 0;
    auto notifier = subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Alive), failHere);
    const auto callback =
        subscribe(*subscriber, Kind::Async, Filter(InstanceState::Disposed), [&] { ++calls; });
    EXPECT_THROW(publishPositions(*publisher, 1), CallbackFailure);
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(0));
}

TEST_F(CallbackFailureTest, ValueReachesAllOtherSubscribers)
{
    const auto publisher = this->publisher();
    const auto subscribers = {subscriber(), subscriber(), subscriber()};
    std::vector<Handle> handles;
    int calls = 0;
    for (const auto& each : subscribers) {
        handles.push_back(subscribe(*each, Kind::Async, {}, [&] {
            ++calls;
            failHere();
        }));
    }
    const LogCapture log;
    EXPECT_THROW(publishPositions(*publisher, 1), CallbackFailure);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(log.count(managerLogger, log4cplus::ERROR_LOG_LEVEL,
                        "errMsg:Another callback has thrown as well: the callback failed"),
              2);
}

/// What is logged instead of passed on, whichever thread calls back.
class LoggedFailureTest : public CallbackTest, public testing::WithParamInterface<const char*>
{
protected:
    const std::unique_ptr<Writer> writer = publisher();
    const std::unique_ptr<Reader> reader =
        subscriber({}, {{"dds.callback.exceptions", "log"}, {"dds.callback.thread", GetParam()}});

    auto recordsOf(const LogCapture& log, const std::string& what) const
    {
        return log.count(managerLogger, log4cplus::ERROR_LOG_LEVEL,
                         "A callback of topic " + ovra::plex::DdsUriHelper::topic(uri, true) +
                             " has thrown: " + what);
    }
};

TEST_P(LoggedFailureTest, SubscriptionGoesOn)
{
    const LogCapture log;
    std::atomic<int> calls = 0;
    const auto handle = subscribe(*reader, Kind::Async, {}, [&] {
        ++calls;
        failHere();
    });
    publishPositions(*writer, 3);
    EXPECT_TRUE(waitFor([&] { return recordsOf(log, "the callback failed") == 3; }));
    EXPECT_EQ(calls, 3);
}

TEST_P(LoggedFailureTest, NotifierGoesOn)
{
    const LogCapture log;
    const auto handle = subscribe(*reader, Kind::Notifier, {}, [] { throw 1; });
    publishPositions(*writer, 1);
    EXPECT_TRUE(waitFor([&] { return recordsOf(log, "an exception of unknown type") == 1; }));
}

INSTANTIATE_TEST_SUITE_P(Threads, LoggedFailureTest, testing::Values("transport", "own"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_F(CallbackFailureTest, SettingsThatMeanNothingAreNamed)
{
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber({}, {{"dds.callback.thread", "none"}}); }),
              R"(Property dds.callback.thread is neither "transport" nor "own": "none")");
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber({}, {{"dds.callback.exceptions", ""}}); }),
              R"(Property dds.callback.exceptions is neither "pass" nor "log": "")");
    EXPECT_FALSE(topicExists());
}

class EntitiesAfterFailureTest : public CallbackFailureTest, public testing::WithParamInterface<Kind>
{
protected:
    /// Makes a callback fail once, as data arrives or as it is polled.
    void failOnce()
    {
        auto handle = subscribe(*reader, GetParam(), {}, failHere);
        EXPECT_THROW(
            {
                publishPositions(*writer, 1);
                reader->poll(0, patience);
            },
            CallbackFailure);
    }

    const std::unique_ptr<Writer> writer = publisher();
    const std::unique_ptr<Reader> reader = subscriber();
};

TEST_P(EntitiesAfterFailureTest, CallbackIsServedAgain)
{
    failOnce();
    reader->read(0);
    std::vector<Heard> heard;
    const auto handle = reader->subscribeAsync({}, hearing(heard));
    publishPositions(*writer, 2, 10);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(10, 11));
}

TEST_P(EntitiesAfterFailureTest, SubscriptionsCanBeChanged)
{
    failOnce();
    for (const Kind kind : allKinds) {
        EXPECT_NO_THROW(subscribe(*reader, kind));
    }
}

TEST_P(EntitiesAfterFailureTest, NoLoanIsOutSoTheReaderGoes)
{
    failOnce();
    reader->close();
    writer->close();
    EXPECT_FALSE(topicExists());
}

TEST_P(EntitiesAfterFailureTest, OtherSubscribersAreServed)
{
    const auto other = subscriber();
    std::vector<Heard> heard;
    const auto handle = other->subscribeAsync({}, hearing(heard));
    failOnce();
    publishPositions(*writer, 1, 10);
    EXPECT_EQ(heard.back().alt, 10);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EntitiesAfterFailureTest, testing::ValuesIn(allKinds),
                         testing::PrintToStringParamName());

} // namespace plex::test
