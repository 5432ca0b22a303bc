// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

#include <atomic>
#include <thread>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class SubscriptionFaultsTest : public FaultTest
{
protected:
    /// A callback misses a sample while an operation fails, and gets it with the next.
    void expectSampleToStayWhereItCannotBeTakenBy(const std::string& operation)
    {
        const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] { ++calls; });
        {
            const Fault fault(operation);
            EXPECT_NO_THROW(publishPositions(*publisher, 1));
        }
        EXPECT_EQ(calls, 0);
        publishPositions(*publisher, 1);
        EXPECT_EQ(calls, 2);
    }

    /// While a sample is being taken, another thread changes the subscriptions, and is to be through when
    /// that is over only.
    template <class Change>
    void expectToWaitForATake(Change change)
    {
        std::atomic<bool> changed = false;
        bool changedMeanwhile = false;
        std::thread changing;
        {
            const Meanwhile take("DataReader::take_next_sample", [&] {
                changing = std::thread([&] {
                    change();
                    changed = true;
                });
                changedMeanwhile = waitFor([&] { return changed.load(); }, 100ms);
            });
            publishPositions(*publisher, 1);
        }
        changing.join();
        EXPECT_FALSE(changedMeanwhile);
    }

    const std::unique_ptr<Writer> publisher = FaultTest::publisher();
    std::unique_ptr<Reader> subscriber = FaultTest::subscriber();
    int calls = 0;
};

class InstanceSubscriptionFaultsTest : public FaultTest
{
};

TEST_F(SubscriptionFaultsTest, NotifierIsNotCalledWhereNothingCanBeReadWhichIsLogged)
{
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    for (const ReturnCode code : refusals) {
        const Fault fault("DataReader::read_next_instance", code);
        const LogCapture log;
        EXPECT_NO_THROW(publishPositions(*publisher, 1));
        EXPECT_EQ(recordsOf(log),
                  records({error(managerLogger, "errMsg:Subscription manager failed to read data when "
                                                "dispatching to notifiers code:" +
                                                    std::to_string(code))}));
    }
    EXPECT_EQ(calls, 0);
    publishPositions(*publisher, 1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(subscriber->read(0).size(), std::size(refusals) + 1);
}

TEST_F(InstanceSubscriptionFaultsTest, NotifierIsNotCalledWhereTheReadFailsHalfWayAlthoughASampleMatched)
{
    int calls = 0;
    const auto writer = sensorPublisher();
    const auto reader = sensorSubscriber();
    publish(*writer, "a");
    const auto handle = reader->subscribeAsync(any(), [&](SensorReader&) { ++calls; });
    const Fault fault("DataReader::read_next_instance", RETCODE_ERROR, {.fromCall = 2});
    publish(*writer, "b");
    EXPECT_EQ(calls, 0);
}

TEST_F(SubscriptionFaultsTest, NotifierIsNotCalledWhereThereIsNoData)
{
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    const Fault fault("DataReader::read_next_instance", RETCODE_NO_DATA);
    const LogCapture log;
    publishPositions(*publisher, 1);
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(recordsOf(log), IsEmpty());
}

TEST_F(SubscriptionFaultsTest, CallbacksAreServedAlthoughTheReadForNotifiersFails)
{
    const auto notifier =
        subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Disposed), [&] { ++calls; });
    std::vector<Heard> heard;
    const auto callback = subscriber->subscribeAsync(Filter(InstanceState::Alive), hearing(heard));
    const Fault fault("DataReader::read_next_instance");
    publishPositions(*publisher, 1, 7);
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(7));
}

TEST_F(SubscriptionFaultsTest, LoanThatADispatchCannotReturnIsLoggedAndTheNotifierCalled)
{
    const auto handle = subscribe(*subscriber, Kind::Notifier, {}, [&] { ++calls; });
    const Fault fault("DataReader::return_loan", RETCODE_ERROR, {.work = Fault::Work::Done});
    const LogCapture log;
    publishPositions(*publisher, 1);
    EXPECT_EQ(recordsOf(log),
              records({error(managerLogger, "errMsg:Subscription manager listener failed to return loaned "
                                            "data back to the middle-layer code:1")}));
    EXPECT_EQ(calls, 1);
}

TEST_F(SubscriptionFaultsTest, FailedTakeEndsTheDispatchAndLeavesTheSample)
{
    expectSampleToStayWhereItCannotBeTakenBy("DataReader::take_next_sample");
}

TEST_F(SubscriptionFaultsTest, FailedTakeBesideANotifierEndsTheDispatchAndLeavesTheSample)
{
    const auto notified = subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Disposed));
    expectSampleToStayWhereItCannotBeTakenBy("DataReader::take");
}

TEST_F(SubscriptionFaultsTest, LoanOfACallbacksSampleThatCannotBeReturnedIsLoggedAndTheCallbackCalled)
{
    const auto notified = subscribe(*subscriber, Kind::Notifier, Filter(InstanceState::Disposed));
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] { ++calls; });
    const Fault fault("DataReader::return_loan", RETCODE_ERROR, {.fromCall = 2, .work = Fault::Work::Done});
    const LogCapture log;
    publishPositions(*publisher, 1);
    EXPECT_EQ(recordsOf(log),
              records({error(managerLogger, "errMsg:Subscription manager listener failed to return loaned "
                                            "data back to the middle-layer code:1")}));
    EXPECT_EQ(calls, 1);
}

TEST_F(SubscriptionFaultsTest, SampleWhoseStatesFitNoEventIsReportedToDds)
{
    const auto handle = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Any), [&] { ++calls; });
    {
        const DoctoredSamples doctored("DataReader::take_next_sample", loseViewState);
        EXPECT_EQ(thrownText<PlexException>([&] { publishPositions(*publisher, 1); }),
                  "Plex InstanceEvent can not be deduced from sampleInfo");
    }
    EXPECT_EQ(calls, 0);
    publishPositions(*publisher, 1);
    EXPECT_EQ(calls, 1);
}

TEST_F(SubscriptionFaultsTest, SampleOfNeitherNewNorKnownInstanceMatchesNoEventSet)
{
    const auto handle =
        subscribe(*subscriber, Kind::Async,
                  Filter(InstanceState::Any, {InstanceEvent::New, InstanceEvent::Update}), [&] { ++calls; });
    const DoctoredSamples doctored("DataReader::take_next_sample", loseViewState);
    EXPECT_NO_THROW(publishPositions(*publisher, 1));
    EXPECT_EQ(calls, 0);
}

TEST_F(SubscriptionFaultsTest, SampleOfADisposedInstanceIsGoneAlthoughItsViewStateIsNew)
{
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync(Filter(InstanceState::Any), hearing(heard));
    namespace dds = eprosima::fastdds::dds;
    for (const auto state : {dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE, dds::NOT_ALIVE_NO_WRITERS_INSTANCE_STATE,
                             static_cast<dds::InstanceStateKind>(dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE |
                                                                 dds::NOT_ALIVE_NO_WRITERS_INSTANCE_STATE)}) {
        const DoctoredSamples doctored("DataReader::take_next_sample", [state](dds::SampleInfo& info) {
            info.instance_state = state;
            info.view_state = dds::NEW_VIEW_STATE;
        });
        publishPositions(*publisher, 1);
        EXPECT_EQ(heard.back(), (Heard{0, InstanceState::Any, InstanceEvent::Gone})) << state;
    }
    EXPECT_EQ(heard.size(), 3U);
}

TEST_F(SubscriptionFaultsTest, ListenerThatCannotBeDetachedIsLoggedAndTheSubscriberClosesAllTheSame)
{
    auto holder = participant();
    publisher->close();
    for (const ReturnCode code : refusals) {
        subscriber = FaultTest::subscriber();
        const auto handle = subscribe(*subscriber, Kind::Async);
        const Fault fault("DataReader::set_listener with a mask", code);
        const LogCapture log;
        EXPECT_NO_THROW(subscriber->close());
        EXPECT_EQ(recordsOf(log),
                  records({error(managerLogger,
                                 "errMsg:Failed to set listener to none code:" + std::to_string(code))}));
        EXPECT_FALSE(topicExists());
    }
}

TEST_F(SubscriptionFaultsTest, EndingASubscriptionWaitsForASampleThatIsBeingTakenForIt)
{
    const auto handle = subscribe(*subscriber, Kind::Async);
    expectToWaitForATake([&] { handle->close(); });
    publishPositions(*publisher, 1);
    EXPECT_EQ(subscriber->read(0).size(), 1U);
}

TEST_F(SubscriptionFaultsTest, SubscribingWaitsForASampleThatIsBeingTakenForOthers)
{
    const auto first =
        subscribe(*subscriber, Kind::Async, Filter(InstanceState::Any, {InstanceEvent::Update}));
    Handle second;
    expectToWaitForATake([&] {
        second = subscribe(*subscriber, Kind::Async, Filter(InstanceState::Any, {InstanceEvent::New}));
    });
}

TEST_F(SubscriptionFaultsTest, ListenerThatCannotBeDetachedStaysHarmless)
{
    auto handle = subscribe(*subscriber, Kind::Async, {}, [&] { ++calls; });
    const Fault fault("DataReader::set_listener with a mask");
    const Meanwhile data("Subscriber::delete_datareader", [&] { publishPositions(*publisher, 1); });
    EXPECT_NO_THROW(subscriber->close());
    EXPECT_EQ(calls, 0);
}

} // namespace plex::test
