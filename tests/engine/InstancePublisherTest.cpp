// SPDX-License-Identifier: Apache-2.0
#include "ForeignSensor.hpp"
#include "KeyedTest.hpp"

#include <plex/dds/Status.hpp>

#include <atomic>
#include <limits>
#include <thread>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;
using SensorInstanceWriter = ovra::plex::ps::InstancePublisher<Sensor>;

class InstancePublisherTest : public KeyedTest
{
protected:
    static constexpr const char* logger = "plexDdsInstancePublisher";
    static constexpr const char* closed = "InstancePublisher already closed";

    std::unique_ptr<SensorInstanceWriter> instance(const std::string& name)
    {
        return parent->createInstancePublisher(*sensor(name));
    }

    std::unique_ptr<SensorWriter> parent = sensorPublisher();
    const std::unique_ptr<SensorReader> reader = sensorSubscriber();
};

TEST_F(InstancePublisherTest, PublishesValuesOfItsInstance)
{
    const auto a = instance("a");
    publish(*a, "a", 1);
    publish(*a, "a", 2);
    EXPECT_THAT(readings(reader->read(0)), ElementsAre(Reading{"a", 1}, Reading{"a", 2}));
}

TEST_F(InstancePublisherTest, ValueGivenAtCreationIsNotPublished)
{
    const auto a = parent->createInstancePublisher(*sensor("a", 7));
    EXPECT_THAT(reader->read(0), IsEmpty());
}

TEST_F(InstancePublisherTest, SourceTimestampIsSent)
{
    const auto a = instance("a");
    a->publish(1234567.75, *sensor("a", 1), 0ms);
    SensorEvents events;
    ASSERT_EQ(reader->readDataEvents({}, events, 0, 0ms), 1U);
    EXPECT_NEAR(events[0]->getSourceTimestamp(), 1234567.75, 1e-6);
}

TEST_F(InstancePublisherTest, InstancesOfOneParentAreTold)
{
    const auto a = instance("a");
    const auto b = instance("b");
    const auto alsoA = instance("a");
    publish(*a, "a", 1);
    publish(*b, "b", 2);
    publish(*alsoA, "a", 3);
    publish(*parent, "c", 4);
    EXPECT_THAT(readings(reader->read(0)), testing::UnorderedElementsAre(Reading{"a", 1}, Reading{"b", 2},
                                                                         Reading{"a", 3}, Reading{"c", 4}));
}

TEST_F(InstancePublisherTest, NewValueCarriesTheKey)
{
    const auto a = instance("a");
    const auto value = a->createDataEntity();
    EXPECT_EQ(value->getName(), "a");
    value->setValue(5);
    a->publish(*value, 0ms);
    EXPECT_THAT(readings(reader->read(0)), ElementsAre(Reading{"a", 5}));
}

TEST_F(InstancePublisherTest, NewValueCarriesNothingButTheKey)
{
    const auto a = parent->createInstancePublisher(*sensor("a", 7));
    EXPECT_EQ(reading(*a->createDataEntity()), (Reading{"a", 0}));
    publish(*a, "a", 5);
    EXPECT_EQ(reading(*a->createDataEntity()), (Reading{"a", 0}));
}

TEST_F(InstancePublisherTest, NewValueCarriesANumericKey)
{
    const std::unique_ptr<ovra::plex::ps::Publisher<keyed::Channel>> channels(
        generated_dds_Publisher_keyed_Channel(plex, testUri("channels"), {}, {}));
    for (const int number : {0, 1, -1, 0x12345678}) {
        const std::unique_ptr<keyed::Channel> key(generated_dds_DataEntity_keyed_Channel());
        key->setNumber(number);
        EXPECT_EQ(channels->createInstancePublisher(*key)->createDataEntity()->getNumber(), number);
    }
}

TEST_F(InstancePublisherTest, MiddlewareInstanceIsTheParents)
{
    EXPECT_EQ(instance("a")->getPlex(), plex);
}

TEST_F(InstancePublisherTest, ValueOfAnotherInstanceIsRefusedByDds)
{
    const LogCapture log;
    const auto a = instance("a");
    const std::string refused = "Publish failed code:4";
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publish(*a, "b", 1); }), refused);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->publish(1.0, *sensor("b"), 0ms); }), refused);
    EXPECT_EQ(log.count(logger, log4cplus::ERROR_LOG_LEVEL, "errMsg:" + refused), 2);
    EXPECT_THAT(reader->read(0), IsEmpty());
    EXPECT_NO_THROW(publish(*a, "a", 1));
}

TEST_F(InstancePublisherTest, ForeignValueIsRefused)
{
    const std::string refused = "Data type for instance or value is incorrect. Not a DDS supported type";
    const auto a = instance("a");
    const ForeignSensor foreign("a");
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->publish(foreign, 0ms); }), refused);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { parent->createInstancePublisher(foreign); }), refused);
}

TEST_F(InstancePublisherTest, NegativeTimeoutIsRefusedAndNotLogged)
{
    const LogCapture log;
    const auto a = instance("a");
    const std::string refused = "Negative timeout given to publish instance";
    EXPECT_EQ(thrownText<PlexException>([&] { a->publish(*sensor("a"), -1ms); }), refused);
    EXPECT_EQ(thrownText<PlexException>([&] { a->publish(1.0, *sensor("a"), -1ms); }), refused);
    EXPECT_THAT(reader->read(0), IsEmpty());
    for (const auto& record : log.records()) {
        EXPECT_NE(record.level, log4cplus::ERROR_LOG_LEVEL) << record.text;
    }
}

TEST_F(InstancePublisherTest, TimestampThatDdsCannotCarryIsRefused)
{
    const auto a = instance("a");
    EXPECT_THROW(a->publish(1e12, *sensor("a"), 0ms), PlexException);
    EXPECT_THROW(a->publish(std::numeric_limits<double>::quiet_NaN(), *sensor("a"), 0ms), PlexException);
    EXPECT_THROW(a->publish(-0.5, *sensor("a"), 0ms), PlexException);
    a->close(); // what was refused has left no lock behind
}

TEST_F(InstancePublisherTest, ClosedOneRefusesEveryOperationBeforeItLooksAtTheTimeout)
{
    const LogCapture log;
    const auto a = instance("a");
    a->close();
    a->close();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->publish(*sensor("a"), 0ms); }), closed);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->publish(*sensor("a"), -1ms); }), closed);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->publish(1.0, *sensor("a"), -1ms); }), closed);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { a->createDataEntity(); }), closed);
    EXPECT_EQ(log.count(logger, log4cplus::ERROR_LOG_LEVEL, closed), 4);
}

TEST_F(InstancePublisherTest, ClosingOneLeavesItsParentAndSiblingsAlone)
{
    const auto a = instance("a");
    const auto b = instance("b");
    a->close();
    EXPECT_NO_THROW(publish(*b, "b", 1));
    EXPECT_NO_THROW(publish(*parent, "a", 1));
}

TEST_F(InstancePublisherTest, ClosingTheParentClosesItsInstancePublishers)
{
    const auto a = instance("a");
    const auto b = instance("b");
    parent->close();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publish(*a, "a"); }), closed);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publish(*b, "b"); }), closed);
}

TEST_F(InstancePublisherTest, DestroyedOneIsForgottenByItsParent)
{
    auto a = instance("a");
    const auto b = instance("b");
    a.reset();
    parent->close();
    EXPECT_THROW(publish(*b, "b"), IllegalStateException);
}

TEST_F(InstancePublisherTest, OutlivesItsDroppedParent)
{
    const auto a = instance("a");
    parent.reset();
    publish(*a, "a", 1);
    EXPECT_EQ(a->createDataEntity()->getName(), "a");
    EXPECT_THAT(readings(reader->read(0)), ElementsAre(Reading{"a", 1}));
}

TEST_F(InstancePublisherTest, LastOneTakesTheTopicAlong)
{
    const auto holder = participant();
    auto a = instance("a");
    parent.reset();
    reader->close();
    EXPECT_TRUE(topicExists());
    a.reset();
    EXPECT_FALSE(topicExists());
}

TEST_F(InstancePublisherTest, ClosedParentMakesNone)
{
    parent->close();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { instance("a"); }),
              "Entity closed Uri: " + uri.string());
}

class KeylessInstancePublisherTest : public CallbackTest
{
};

TEST_F(KeylessInstancePublisherTest, TypeWithoutAKeyHasNone)
{
    const LogCapture log;
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    constexpr const char* refused = "Key instance not created";
    EXPECT_EQ(thrownText<IllegalStateException>([&] { publisher->createInstancePublisher(*position(1)); }),
              refused);
    EXPECT_EQ(log.count("plexDdsInstancePublisher", log4cplus::ERROR_LOG_LEVEL, refused), 1);
    publishPositions(*publisher, 1);
    EXPECT_EQ(subscriber->read(0).size(), 1U);
}

TEST_F(KeylessInstancePublisherTest, FailedCreationLeavesNothingBehind)
{
    const auto holder = participant();
    auto publisher = this->publisher();
    EXPECT_THROW(publisher->createInstancePublisher(*position(1)), IllegalStateException);
    publisher.reset();
    EXPECT_FALSE(topicExists());
}

TEST_F(InstancePublisherTest, TwoThreadsPublishOnOneOfThem)
{
    const auto a = instance("a");
    const auto publishMany = [&] {
        for (int i = 0; i < 100; ++i) {
            publish(*a, "a", i);
        }
    };
    std::thread other(publishMany);
    publishMany();
    other.join();
    EXPECT_EQ(reader->read(0).size(), 200U);
}

TEST_F(InstancePublisherTest, ParentMayCloseWhileItsInstancePublishersPublishAndGo)
{
    for (int round = 0; round < 100; ++round) {
        const auto publisher = sensorPublisher();
        auto a = publisher->createInstancePublisher(*sensor("a"));
        std::atomic<bool> publishing = false;
        std::thread other([&] {
            try {
                for (;;) {
                    publish(*a, "a");
                    publishing = true;
                }
            } catch (const IllegalStateException& error) {
                EXPECT_STREQ(error.what(), closed);
            }
            a.reset();
        });
        EXPECT_TRUE(waitFor([&] { return publishing.load(); }));
        publisher->close();
        other.join();
    }
}

TEST_F(InstancePublisherTest, IsUsedInsideACallbackThatItsPublishingRuns)
{
    const auto a = instance("a");
    std::vector<double> heard;
    const auto handle = reader->subscribeAsync({}, [&](SensorReader&, const SensorEvent& event) {
        heard.push_back(event.getData()->getValue());
        if (heard.size() == 1) {
            a->publish(1.0, *sensor("a", 2), 0ms);
            publish(*a, "a", 3);
            EXPECT_TRUE(a->createDataEntity()->keyEquals(*sensor("a", 0)));
        } else if (heard.size() == 3) {
            a->close();
        }
    });
    publish(*a, "a", 1);
    EXPECT_THAT(heard, testing::ElementsAre(1, 2, 3));
    EXPECT_THROW(publish(*a, "a", 4), IllegalStateException);
}

TEST_F(InstancePublisherTest, ClosesAgainInsideACallback)
{
    const auto a = instance("a");
    const auto b = instance("b");
    b->close();
    int calls = 0;
    const auto handle = reader->subscribeAsync({}, [&](SensorReader&, const SensorEvent&) {
        ++calls;
        EXPECT_NO_THROW(b->close());
    });
    publish(*a, "a", 1);
    EXPECT_EQ(calls, 1);
}

TEST_F(InstancePublisherTest, TellsItsStatusUntilItIsClosed)
{
    using Outcome = ovra::plex::ps::Acknowledgment::Outcome;
    const auto a = instance("a");
    publish(*a, "a", 1);
    const auto now = status(*a);
    EXPECT_EQ(now.counters.published, 1U);
    EXPECT_EQ(now.matched.size(), 1U);
    EXPECT_GT(now.history.mostOfInstance, 0U);
    EXPECT_GT(now.history.most, now.history.mostOfInstance);
    EXPECT_EQ(waitForAcknowledgments(*a, patience).outcome,
              Outcome::NobodyToAcknowledge); // a best-effort reader
    a->close();
    EXPECT_EQ(thrownText<IllegalStateException>([&] { status(*a); }), closed);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { waitForAcknowledgments(*a, 0ms); }), closed);
}

TEST_F(InstancePublisherTest, IsRefusedBySubscribersWithoutAKey)
{
    const auto other = std::make_shared<ovra::plex::DdsPlex>(Properties());
    const std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber(
        generated_dds_Subscriber_vexstubif_AltAz(other, uri, {}, {}));
    ovra::plex::ps::EntityStatus now;
    EXPECT_TRUE(waitFor([&] {
        now = status(*subscriber);
        return !now.refused.empty();
    }));
    std::vector<std::string> reasons;
    for (const auto& refusal : now.refused.at(0).refusals) {
        reasons.push_back(toString(refusal));
    }
    EXPECT_THAT(reasons, ElementsAre("type name: generated::dds_::vexstubif::AltAz asked for, "
                                     "generated::dds_::keyed::Sensor offered",
                                     "key: a type without a key asked for, a type with a key offered"));
}

} // namespace plex::test
