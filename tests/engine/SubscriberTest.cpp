// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <plex/ps/DdsSubscriber.hpp>

#include <atomic>
#include <thread>

namespace plex::test
{

namespace qos = ovra::plex::ps::qos;
using testing::ElementsAre;

class SubscriberTest : public EntityTest
{
protected:
    using Position = ovra::plex::ps::Subscriber<AltAz>;

    /// Every operation must be refused with the same words.
    void expectRefusals(Position& subscriber, const std::string& text)
    {
        using ovra::plex::ps::DataEvent;
        const ovra::plex::ps::DataEventFilter<AltAz> all;
        std::vector<std::shared_ptr<DataEvent<AltAz>>> events;
        const auto value = position(1);
        const auto out = position(1);
        const std::function<void()> operations[] = {
            [&] { subscriber.createDataEntity(); },
            [&] { subscriber.read(0); },
            [&] { subscriber.readInstance(*value); },
            [&] { subscriber.readInstance(*value, *out); },
            [&] { subscriber.loanedRead(); },
            [&] { subscriber.loanedReadInstance(*value); },
            [&] { subscriber.readDataEvents(all, events, 0, 0ms); },
            [&] { subscriber.subscribe(all, [](auto&, const auto&) {}); },
            [&] { subscriber.poll(0, 0ms); },
            [&] { subscriber.subscribeAsync(all, [](Position&, const DataEvent<AltAz>&) {}); },
            [&] { subscriber.subscribeAsync(all, [](Position&) {}); },
        };
        for (const auto& operation : operations) {
            EXPECT_EQ(thrownText<IllegalStateException>(operation), text);
        }
    }
};

TEST_F(SubscriberTest, EmptyReaderGivesNothingAndThrowsNothing)
{
    const auto subscriber = this->subscriber();
    EXPECT_TRUE(subscriber->read(0).empty());
    EXPECT_TRUE(subscriber->read(5).empty());
    EXPECT_EQ(subscriber->loanedRead(), nullptr);
}

TEST_F(SubscriberTest, ReadTakesTheOldestFirst)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 5);
    EXPECT_THAT(altitudes(subscriber->read(2)), ElementsAre(0, 1));
    EXPECT_THAT(altitudes(subscriber->read(10)), ElementsAre(2, 3, 4));
    EXPECT_TRUE(subscriber->read(0).empty());
}

TEST_F(SubscriberTest, ReadWithoutALimitTakesAllHoweverMany)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 300);
    const auto values = altitudes(subscriber->read(0));
    ASSERT_EQ(values.size(), 300U);
    EXPECT_EQ(values.front(), 0.0);
    EXPECT_EQ(values.back(), 299.0);
}

TEST_F(SubscriberTest, ReadStopsAtItsLimitHoweverHigh)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 100);
    EXPECT_EQ(subscriber->read(70).size(), 70U);
    EXPECT_THAT(altitudes(subscriber->read(std::numeric_limits<std::size_t>::max())).size(), 30U);
}

TEST_F(SubscriberTest, ValuesReadAreIndependentCopies)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1, 7);
    const auto value = subscriber->read(0).at(0);
    subscriber->close();
    publishPositions(*publisher, 40);
    EXPECT_EQ(value->getAlt(), 7.0);
}

TEST_F(SubscriberTest, SampleOlderThanTheLatencyIsConsumedAndDropped)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({std::make_shared<qos::Latency>(5000ms)});
    publisher->publish(1000.0, *position(1), 0ms);
    publisher->publish(*position(2), 0ms);
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(2));
    EXPECT_TRUE(subscriber->read(0).empty());
}

TEST_F(SubscriberTest, LimitCountsSamplesTakenAndNotValuesReturned)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({std::make_shared<qos::Latency>(5000ms)});
    publisher->publish(1000.0, *position(1), 0ms);
    publisher->publish(*position(2), 0ms);
    publisher->publish(*position(3), 0ms);
    EXPECT_THAT(altitudes(subscriber->read(2)), ElementsAre(2));
    EXPECT_THAT(altitudes(subscriber->read(2)), ElementsAre(3));
}

TEST_F(SubscriberTest, SamplePastItsDeadlineIsDropped)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber({std::make_shared<qos::Deadline>(5000ms)}, {});
    publisher->publish(1000.0, *position(1), 0ms);
    EXPECT_TRUE(subscriber->read(0).empty());
}

TEST_F(SubscriberTest, NullEntriesOfTheQosListAreSkipped)
{
    EXPECT_NO_THROW(subscriber({nullptr, nullptr}));
}

TEST_F(SubscriberTest, InstanceOfATypeWithoutAKeyCannotBeLookedUp)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1);
    const LogCapture log;
    const std::string expected = "Lookup instance key failed code:0";
    auto out = position(9);
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber->readInstance(*position(0)); }), expected);
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber->readInstance(*position(0), *out); }), expected);
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber->loanedReadInstance(*position(0)); }), expected);
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::ERROR_LOG_LEVEL, "errMsg:" + expected), 3);
    EXPECT_EQ(out->getAlt(), 9.0);
    EXPECT_EQ(subscriber->read(0).size(), 1U);
}

TEST_F(SubscriberTest, ClosedSubscriberRefusesEveryOperation)
{
    const auto subscriber = this->subscriber();
    subscriber->close();
    expectRefusals(*subscriber, "Entity closed Uri: " + uri.string());
}

TEST_F(SubscriberTest, SubscriberThatIsNotSetUpRefusesEveryOperation)
{
    using Adapter = generated::ddsimpl::vexstubif::AltAz;
    ovra::plex::ps::DdsSubscriber<AltAz, Adapter> bare(uri, {}, {}, participant());
    expectRefusals(bare, "Entity is not INITIALIZED. Uri: " + uri.string());
}

TEST_F(SubscriberTest, SecondCloseOnlyLogsADebugRecord)
{
    const auto subscriber = this->subscriber();
    subscriber->close();
    const LogCapture log;
    subscriber->close();
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::DEBUG_LOG_LEVEL, "Publisher already closed"), 1);
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(SubscriberTest, DestructionAfterCloseLogsNothing)
{
    auto subscriber = this->subscriber();
    subscriber->close();
    const LogCapture log;
    subscriber.reset();
    EXPECT_TRUE(log.records().empty());
}

TEST_F(SubscriberTest, CreationIsTraced)
{
    const LogCapture log;
    subscriber();
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::TRACE_LOG_LEVEL,
                        "Subscriber for " + uri.string() + " created"),
              1);
}

TEST_F(SubscriberTest, BestEffortReaderOfTheHighRateLibraryHearsItsWriter)
{
    Properties properties{{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", "high-rate"}};
    const auto publisher = this->publisher({}, properties);
    const auto reliable = this->subscriber({}, properties);
    properties["dds.qos.profile.reader"] = "high-rate.best-effort-reader";
    const auto bestEffort = this->subscriber({}, properties);
    publishPositions(*publisher, 2);
    EXPECT_THAT(altitudes(bestEffort->read(0)), ElementsAre(0, 1));
    EXPECT_THAT(altitudes(reliable->read(0)), ElementsAre(0, 1));
}

TEST_F(SubscriberTest, MissingReaderAndSubscriberProfilesAreNamedAndNothingIsLeft)
{
    Properties properties{{"dds.qos.profile.file", PROFILE_FILE},
                          {"dds.qos.profile.library", "reliable"},
                          {"dds.qos.profile.reader", "missing"}};
    auto holder = plex->getDomainParticipant(uri, properties);
    const LogCapture log;
    const auto reader = thrownText<PlexException>([&] { subscriber({}, properties); });
    EXPECT_EQ(reader, "Failed to create reader with profile:missing");
    properties["dds.qos.profile.subscriber"] = "absent";
    const auto text = thrownText<PlexException>([&] { subscriber({}, properties); });
    EXPECT_EQ(text, "Failed to create subscriber with profile:absent");
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::ERROR_LOG_LEVEL, reader), 1);
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::ERROR_LOG_LEVEL, text), 1);
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(SubscriberTest, TwoThreadsCloseOnce)
{
    const auto subscriber = this->subscriber();
    const LogCapture log;
    std::atomic<int> ready{0};
    const auto close = [&] {
        ++ready;
        while (ready < 2) {
        }
        subscriber->close();
        EXPECT_THROW(subscriber->read(0), IllegalStateException);
    };
    std::thread other(close);
    close();
    other.join();
    EXPECT_EQ(log.count("plexDdsSubscriber", log4cplus::DEBUG_LOG_LEVEL, "Publisher already closed"), 1);
}

TEST_F(SubscriberTest, ReadingWhileAnotherThreadClosesEndsInAnException)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    std::atomic<bool> reading{false};
    std::thread reader([&] {
        try {
            for (;;) {
                subscriber->read(0);
                subscriber->loanedRead();
                reading = true;
            }
        } catch (const IllegalStateException& error) {
            EXPECT_EQ(error.what(), "Entity closed Uri: " + uri.string());
        }
    });
    ASSERT_TRUE(waitFor([&] { return reading.load(); }));
    publishPositions(*publisher, 10);
    subscriber->close();
    reader.join();
}

TEST_F(SubscriberTest, EntitiesLeaveNothingBehind)
{
    auto holder = participant();
    {
        const auto publisher = this->publisher();
        const auto subscriber = this->subscriber();
        publishPositions(*publisher, 3);
        subscriber->read(1);
    }
    EXPECT_TRUE(releasedClean(holder));
}

} // namespace plex::test
