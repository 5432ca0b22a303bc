// SPDX-License-Identifier: Apache-2.0
#include "ForeignSensor.hpp"
#include "KeyedTest.hpp"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <future>
#include <memory>
#include <string>
#include <vector>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// What the samples of a topic mean that has more than one instance.
class InstancesTest : public KeyedTest
{
protected:
    static constexpr const char* intersects = "Filter intersects with an already registered subscription";
    static constexpr const char* foreignRefused =
        "Data type for instance or value is incorrect. Not a DDS supported type";

    const std::unique_ptr<SensorWriter> writer = sensorPublisher();
    const std::unique_ptr<SensorReader> reader = sensorSubscriber();
};

TEST_F(InstancesTest, ReadTakesTheSamplesOfAllInstances)
{
    publish(*writer, "a", 1);
    publish(*writer, "b", 2);
    publish(*writer, "a", 3);
    EXPECT_THAT(readings(reader->read(0)),
                UnorderedElementsAre(Reading{"a", 1}, Reading{"b", 2}, Reading{"a", 3}));
}

TEST_F(InstancesTest, ReadInstanceTakesItsOldestSampleOnly)
{
    publish(*writer, "b", 1);
    publish(*writer, "a", 2);
    publish(*writer, "a", 3);
    EXPECT_EQ(reading(*reader->readInstance(*sensor("a"))), (Reading{"a", 2}));
    EXPECT_EQ(reading(*reader->readInstance(*sensor("a"))), (Reading{"a", 3}));
    EXPECT_EQ(reader->readInstance(*sensor("a")), nullptr);
    EXPECT_THAT(readings(reader->read(0)), ElementsAre(Reading{"b", 1}));
}

TEST_F(InstancesTest, InstanceIsNamedByTheKeyAlone)
{
    publish(*writer, "a", 1);
    EXPECT_NE(reader->readInstance(*sensor("a", 999)), nullptr);
}

TEST_F(InstancesTest, InstanceNeverSeenReadsAsEmpty)
{
    publish(*writer, "a", 1);
    EXPECT_EQ(reader->readInstance(*sensor("b")), nullptr);
    EXPECT_EQ(reader->loanedReadInstance(*sensor("b")), nullptr);
    EXPECT_EQ(reader->read(0).size(), 1U);
}

TEST_F(InstancesTest, ReadInstanceIntoAValueCopiesEveryFieldOrLeavesItAlone)
{
    publish(*writer, "a", 1);
    const auto value = sensor("untouched", 7);
    EXPECT_FALSE(reader->readInstance(*sensor("b"), *value));
    EXPECT_EQ(reading(*value), (Reading{"untouched", 7}));
    EXPECT_TRUE(reader->readInstance(*sensor("a"), *value));
    EXPECT_EQ(reading(*value), (Reading{"a", 1}));
}

TEST_F(InstancesTest, ReadInstanceMayCopyIntoAForeignValue)
{
    publish(*writer, "a", 1);
    ForeignSensor value("untouched");
    EXPECT_TRUE(reader->readInstance(*sensor("a"), value));
    EXPECT_EQ(reading(value), (Reading{"a", 1}));
}

TEST_F(InstancesTest, LoanedReadInstanceLoansItsOldestSample)
{
    publish(*writer, "b", 1);
    publish(*writer, "a", 2);
    publish(*writer, "a", 3);
    const auto first = reader->loanedReadInstance(*sensor("a"));
    const auto second = reader->loanedReadInstance(*sensor("a"));
    EXPECT_EQ(reader->loanedReadInstance(*sensor("a")), nullptr);
    EXPECT_EQ(reading(first->getData()), (Reading{"a", 2}));
    EXPECT_EQ(reading(second->getData()), (Reading{"a", 3}));
}

TEST_F(InstancesTest, ForeignValueNamesNoInstance)
{
    const LogCapture log;
    const ForeignSensor foreign("a");
    EXPECT_EQ(thrownText<IllegalStateException>([&] { reader->readInstance(foreign); }), foreignRefused);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { reader->loanedReadInstance(foreign); }),
              foreignRefused);
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::ERROR_LOG_LEVEL, foreignRefused), 2);
}

TEST_F(InstancesTest, NumericKeysNameInstancesZeroIncluded)
{
    const Uri channels = testUri("channels");
    const std::unique_ptr<ovra::plex::ps::Publisher<keyed::Channel>> publisher(
        generated_dds_Publisher_keyed_Channel(plex, channels, {}, {}));
    const std::unique_ptr<ovra::plex::ps::Subscriber<keyed::Channel>> subscriber(
        generated_dds_Subscriber_keyed_Channel(plex, channels, {}, {}));
    const std::unique_ptr<keyed::Channel> channel(generated_dds_DataEntity_keyed_Channel());
    for (const int number : {-1, 0, 1}) {
        channel->setNumber(number);
        channel->setLevel(10.0 * number);
        publisher->publish(*channel, 0ms);
    }
    for (const int number : {1, 0, -1}) {
        channel->setNumber(number);
        const auto value = subscriber->readInstance(*channel);
        ASSERT_NE(value, nullptr) << number;
        EXPECT_EQ(value->getLevel(), 10.0 * number);
    }
}

TEST_F(InstancesTest, NoticeOfAnEndIsConsumedAndReadsAsEmpty)
{
    PlainWriter plain(*this);
    plain.write("a", 1);
    plain.dispose("a");
    EXPECT_EQ(reading(*reader->readInstance(*sensor("a"))), (Reading{"a", 1}));
    EXPECT_EQ(reader->readInstance(*sensor("a")), nullptr);
    plain.write("b", 1);
    plain.dispose("b");
    EXPECT_THAT(readings(reader->read(0)), ElementsAre(Reading{"b", 1}));
    EXPECT_EQ(reader->loanedRead(), nullptr);
}

TEST_F(InstancesTest, FilterThatNamesAnInstanceSelectsItsSamplesForCallbacks)
{
    std::vector<Reading> ofA;
    std::vector<Reading> ofB;
    const auto a = reader->subscribeAsync(of("a"), hearing(ofA));
    const auto b = reader->subscribeAsync(of("b"), hearing(ofB));
    publish(*writer, "a", 1);
    publish(*writer, "b", 2);
    publish(*writer, "c", 3);
    publish(*writer, "a", 4);
    EXPECT_THAT(ofA, ElementsAre(Reading{"a", 1}, Reading{"a", 4}));
    EXPECT_THAT(ofB, ElementsAre(Reading{"b", 2}));
}

TEST_F(InstancesTest, FilterThatNamesAnInstanceSelectsItsSamplesForNotifiers)
{
    std::string order;
    const auto a = reader->subscribeAsync(of("a"), [&](SensorReader& subscriber) {
        order += "a ";
        subscriber.read(0);
    });
    const auto b = reader->subscribeAsync(of("b"), [&](SensorReader& subscriber) {
        order += "b ";
        subscriber.read(0);
    });
    publish(*writer, "a");
    publish(*writer, "c");
    publish(*writer, "b");
    EXPECT_EQ(order, "a b ");
}

TEST_F(InstancesTest, FilterThatNamesAnInstanceSelectsItsSamplesForPolling)
{
    std::vector<Reading> ofA;
    const auto a = reader->subscribe(of("a"), hearing(ofA));
    publish(*writer, "a", 1);
    publish(*writer, "b", 2);
    EXPECT_EQ(reader->poll(0, 100ms), 2U);
    EXPECT_THAT(ofA, ElementsAre(Reading{"a", 1}));
}

TEST_F(InstancesTest, FilterThatNamesAnInstanceSelectsItsSamplesForEventReads)
{
    publish(*writer, "a", 1);
    publish(*writer, "b", 2);
    publish(*writer, "a", 3);
    SensorEvents events;
    EXPECT_EQ(reader->readDataEvents(of("a"), events, 0, 0ms), 2U);
    EXPECT_THAT(readings(events), ElementsAre(Reading{"a", 1}, Reading{"a", 3}));
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(InstancesTest, EachInstanceHasAFirstSampleOfItsOwn)
{
    std::vector<Reading> first;
    const auto handle =
        reader->subscribeAsync(SensorFilter(InstanceState::Any, {InstanceEvent::New}), hearing(first));
    publish(*writer, "a", 1);
    publish(*writer, "a", 2);
    publish(*writer, "b", 3);
    publish(*writer, "b", 4);
    EXPECT_THAT(first, ElementsAre(Reading{"a", 1}, Reading{"b", 3}));
}

TEST_F(InstancesTest, FiltersThatNameInstancesCollideByKey)
{
    const auto handle = reader->subscribeAsync(of("a"), SensorReader::Callback());
    EXPECT_EQ(thrownText<PlexException>([&] { reader->subscribe(of("a"), SensorReader::Callback()); }),
              intersects);
    EXPECT_EQ(thrownText<PlexException>([&] { reader->subscribeAsync(any(), SensorReader::Notifier()); }),
              intersects);
    EXPECT_NO_THROW(reader->subscribe(of("b"), SensorReader::Callback()));
    EXPECT_NO_THROW(reader->subscribeAsync(of("b"), SensorReader::Notifier()));
}

TEST_F(InstancesTest, ThousandsOfNamedSubscriptionsAreRegisteredInNoTime)
{
    std::vector<std::unique_ptr<ovra::plex::ps::Subscription>> handles;
    const auto begin = std::clock(); // of the processor, so that a busy machine does not count
    for (int i = 0; i < 6000; ++i) {
        handles.push_back(reader->subscribe(of(std::to_string(i)), [](SensorReader&, const SensorEvent&) {}));
    }
    // 0.1 s without sanitizers; 9.5 s where each was compared with all.
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 3);
    EXPECT_THROW(reader->subscribe(of("5999"), [](SensorReader&, const SensorEvent&) {}), PlexException);
    EXPECT_THROW(reader->subscribe({}, [](SensorReader&, const SensorEvent&) {}), PlexException);
    handles.pop_back();
    EXPECT_NO_THROW(reader->subscribe(of("5999"), [](SensorReader&, const SensorEvent&) {}));
}

TEST_F(InstancesTest, FilterKeepsTheKeyThatItWasSubscribedWith)
{
    const std::shared_ptr<Sensor> key = sensor("a");
    std::vector<Reading> heard;
    const auto handle = reader->subscribeAsync(SensorFilter(InstanceState::Any, {}, key), hearing(heard));
    key->setName("b");
    publish(*writer, "a", 1);
    publish(*writer, "b", 2);
    EXPECT_THAT(heard, ElementsAre(Reading{"a", 1}));
    EXPECT_THROW(reader->subscribe(of("a"), SensorReader::Callback()), PlexException);
}

TEST_F(InstancesTest, FilterThatNamesAnInstanceByAForeignValueIsRefused)
{
    const SensorFilter filter(InstanceState::Any, {}, std::make_shared<ForeignSensor>("a"));
    SensorEvents events;
    EXPECT_EQ(thrownText<IllegalStateException>([&] { reader->subscribe(filter, SensorReader::Callback()); }),
              foreignRefused);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { reader->readDataEvents(filter, events, 0, 0ms); }),
              foreignRefused);
    EXPECT_NO_THROW(reader->subscribe(any(), SensorReader::Callback()));
}

TEST_F(InstancesTest, NotifierFindsAMatchBehindManySamplesOfOtherInstances)
{
    const Uri channels = testUri("channels");
    const std::unique_ptr<ovra::plex::ps::Publisher<keyed::Channel>> publisher(
        generated_dds_Publisher_keyed_Channel(plex, channels, {}, {}));
    const std::unique_ptr<ovra::plex::ps::Subscriber<keyed::Channel>> subscriber(
        generated_dds_Subscriber_keyed_Channel(plex, channels, {}, {}));
    const std::shared_ptr<keyed::Channel> channel(generated_dds_DataEntity_keyed_Channel());
    for (int i = 0; i < 40; ++i) { // of one instance before the wanted one, and of as many others
        channel->setNumber(1);
        publisher->publish(*channel, 0ms);
        channel->setNumber(2 + i);
        publisher->publish(*channel, 0ms);
    }
    channel->setNumber(100);
    int calls = 0;
    const auto handle =
        subscriber->subscribeAsync(DataEventFilter<keyed::Channel>(InstanceState::Alive, {}, channel),
                                   [&](ovra::plex::ps::Subscriber<keyed::Channel>&) { ++calls; });
    publisher->publish(*channel, 0ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(InstancesTest, EventReadsAndPollsTakeAllInstancesHoweverManySamples)
{
    const auto other = sensorSubscriber();
    for (int i = 0; i < 200; ++i) {
        publish(*writer, std::to_string(i % 50), i);
    }
    SensorEvents events;
    EXPECT_EQ(reader->readDataEvents({}, events, 0, 0ms), 200U);
    EXPECT_EQ(other->poll(0, 200ms), 200U);
}

/// What subscribers hear of instances that end.
class InstanceEndTest : public InstancesTest
{
protected:
    /// A notifier that counts its calls and consumes what is there.
    std::unique_ptr<Subscription> count(InstanceState state, int& calls)
    {
        return reader->subscribeAsync(SensorFilter(state), [&calls](SensorReader& subscriber) {
            ++calls;
            subscriber.read(0);
        });
    }

    PlainWriter plain{*this};
};

TEST_F(InstanceEndTest, DisposalIsHeardByNotifiersForDisposedInstances)
{
    int aliveCalls = 0;
    int disposedCalls = 0;
    const auto alive = count(InstanceState::Alive, aliveCalls);
    const auto disposed = count(InstanceState::Disposed, disposedCalls);
    plain.write("a", 1);
    EXPECT_EQ(aliveCalls, 1);
    EXPECT_EQ(disposedCalls, 0);
    plain.dispose("a");
    EXPECT_EQ(aliveCalls, 1);
    EXPECT_EQ(disposedCalls, 1);
}

TEST_F(InstanceEndTest, EndOfRegistrationIsNotHeardByNotifiersForLiveOrDisposedInstances)
{
    plain.write("a", 1);
    reader->read(0);
    int calls = 0;
    const auto alive = count(InstanceState::Alive, calls);
    const auto disposed = count(InstanceState::Disposed, calls);
    plain.unregister("a");
    EXPECT_EQ(calls, 0);
}

TEST_F(InstanceEndTest, EndOfRegistrationIsHeardByNotifiersForAnyState)
{
    plain.write("a", 1);
    reader->read(0);
    int calls = 0;
    const auto handle = count(InstanceState::Any, calls);
    plain.unregister("a");
    EXPECT_EQ(calls, 1);
}

TEST_F(InstanceEndTest, DisposalNeverReachesCallbacks)
{
    std::vector<Reading> heard;
    const auto handle = reader->subscribeAsync(SensorFilter(InstanceState::Disposed), hearing(heard));
    plain.write("a", 1);
    plain.dispose("a");
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(InstanceEndTest, ValueOfADisposedInstanceReachesCallbacksAsGone)
{
    plain.write("a", 1);
    plain.dispose("a");
    std::vector<std::pair<Reading, InstanceEvent>> heard;
    const auto handle = reader->subscribeAsync(
        SensorFilter(InstanceState::Disposed), [&](SensorReader&, const SensorEvent& event) {
            EXPECT_EQ(event.getInstanceState(), InstanceState::Disposed);
            heard.emplace_back(reading(*event.getData()), event.getInstanceEvent());
        });
    plain.write("b", 2);
    EXPECT_THAT(heard, ElementsAre(std::pair(Reading{"a", 1}, InstanceEvent::Gone)));
}

TEST_F(InstanceEndTest, ValueOfAnUnregisteredInstanceReachesCallbacksForAnyStateAsGone)
{
    plain.write("a", 1);
    plain.unregister("a");
    std::vector<InstanceEvent> heard;
    const auto handle = reader->subscribeAsync(
        of("a"), [&](SensorReader&, const SensorEvent& event) { heard.push_back(event.getInstanceEvent()); });
    plain.write("b", 2);
    EXPECT_THAT(heard, ElementsAre(InstanceEvent::Gone));
}

TEST_F(InstanceEndTest, ValueOfADisposedInstanceIsPolledAsGone)
{
    plain.write("a", 1);
    plain.dispose("a");
    plain.write("b", 2); // polling waits for instances that are alive
    std::vector<InstanceEvent> heard;
    const auto handle = reader->subscribe(SensorFilter(InstanceState::Disposed),
                                          [&](SensorReader&, const SensorEvent& event) {
                                              EXPECT_EQ(event.getData()->getName(), "a");
                                              heard.push_back(event.getInstanceEvent());
                                          });
    EXPECT_EQ(reader->poll(0, 100ms), 3U) << "the notice of the disposal counts";
    EXPECT_THAT(heard, ElementsAre(InstanceEvent::Gone));
}

TEST_F(InstanceEndTest, EventReadForDisposedInstancesGivesTheirValues)
{
    plain.write("a", 1);
    plain.write("b", 2);
    plain.dispose("a");
    SensorEvents events;
    EXPECT_EQ(reader->readDataEvents(SensorFilter(InstanceState::Disposed), events, 0, 0ms), 1U);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(reading(*events[0]->getData()), (Reading{"a", 1}));
    EXPECT_EQ(events[0]->getInstanceState(), InstanceState::Disposed);
    EXPECT_EQ(events[0]->getInstanceEvent(), InstanceEvent::Update);
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(InstanceEndTest, EventReadForLiveInstancesPassesOverThoseThatEnded)
{
    plain.write("a", 1);
    plain.write("b", 2);
    plain.write("c", 3);
    plain.dispose("a");
    plain.unregister("b");
    SensorEvents events;
    EXPECT_EQ(reader->readDataEvents(SensorFilter(InstanceState::Alive), events, 0, 0ms), 1U);
    EXPECT_THAT(readings(events), ElementsAre(Reading{"c", 3}));
}

TEST_F(InstanceEndTest, DisposalThatIsThereDoesNotEndAnEventRead)
{
    plain.write("a", 1);
    ASSERT_EQ(reader->read(0).size(), 1U);
    plain.dispose("a");
    SensorEvents events;
    auto result = std::async(std::launch::async,
                             [&] { return reader->readDataEvents(any(), events, 0, patience * 3); });
    EXPECT_NE(result.wait_for(50ms), std::future_status::ready);
    plain.write("b", 2);
    EXPECT_EQ(result.get(), 1U);
    EXPECT_THAT(readings(events), ElementsAre(Reading{"b", 2}));
}

TEST_F(InstanceEndTest, InstanceWrittenAgainIsNewAgain)
{
    std::vector<Reading> first;
    const auto handle =
        reader->subscribeAsync(SensorFilter(InstanceState::Any, {InstanceEvent::New}), hearing(first));
    plain.write("a", 1);
    plain.write("a", 2);
    plain.dispose("a");
    plain.write("a", 3);
    EXPECT_THAT(first, ElementsAre(Reading{"a", 1}, Reading{"a", 3}));
}

/// A profile library, or none, and for how many instances a publisher has room then, as the guide says.
struct Room {
    const char* library;
    int instances;

    friend std::ostream& operator<<(std::ostream& out, const Room& room)
    {
        std::string name = *room.library == '\0' ? "none" : room.library;
        std::ranges::replace(name, '-', '_');
        return out << name;
    }
};

class InstanceRoomTest : public KeyedTest, public testing::WithParamInterface<Room>
{
};

TEST_P(InstanceRoomTest, OfAPublisherIsLimited)
{
    Properties properties;
    if (*GetParam().library != '\0') {
        properties = {{"dds.qos.profile.file", PROFILE_FILE},
                      {"dds.qos.profile.library", GetParam().library}};
    }
    const auto publisher = sensorPublisher({}, properties);
    for (int i = 0; i < GetParam().instances; ++i) {
        EXPECT_NO_THROW(publish(*publisher, std::to_string(i))) << i;
    }
    EXPECT_THROW(publish(*publisher, "one more"), PlexException);
    EXPECT_NO_THROW(publish(*publisher, "0"));
}

INSTANTIATE_TEST_SUITE_P(Profiles, InstanceRoomTest,
                         testing::Values(Room{"", 100}, Room{"reliable", 10}, Room{"latched", 100},
                                         Room{"latest-only", 10}, Room{"high-rate", 1}, Room{"large", 4}),
                         testing::PrintToStringParamName());

} // namespace plex::test
