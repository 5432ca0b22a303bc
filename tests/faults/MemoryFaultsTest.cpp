// SPDX-License-Identifier: Apache-2.0
#include "../contract/CountingAllocator.hpp"
#include "KeyedTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class MemoryFaultsTest : public KeyedTest
{
protected:
    /// Runs an operation while no memory for wire values can be had: that is its failure, and no record is
    /// made.
    template <class Operation>
    static void expectShortage(Operation operation)
    {
        const LogCapture log;
        const WithoutNothrowMemory shortage;
        EXPECT_EQ(thrownText<std::runtime_error>(operation), "failed to create a DDS sample");
        EXPECT_THAT(log.records(), IsEmpty());
    }
};

TEST_F(MemoryFaultsTest, NewValueOfAnyEntityIsRefused)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    expectShortage([&] { publisher->createDataEntity(); });
    expectShortage([&] { subscriber->createDataEntity(); });
}

TEST_F(MemoryFaultsTest, NewValueOfAnInstancePublisherIsRefusedAndThePublisherStaysOpen)
{
    const auto parent = sensorPublisher();
    const auto publisher = parent->createInstancePublisher(*sensor("a"));
    expectShortage([&] { publisher->createDataEntity(); });
    EXPECT_EQ(publisher->createDataEntity()->getName(), "a");
}

TEST_F(MemoryFaultsTest, NewValueOfTheMiddlewareIsRefused)
{
    const auto middleware = ovra::plex::Plex::create();
    expectShortage([&] { middleware->createDataEntity<AltAz>(); });
    expectShortage([&] { middleware->createDataEntity<vexstubif::DomeTemperature>(); });
}

class ReadMemoryFaultsTest : public MemoryFaultsTest
{
protected:
    /// A way to receive fails, and its loan goes back, so that the reader can.
    template <class Operation>
    void expectShortageAndNoLoan(Operation operation)
    {
        publishPositions(*writer, 1);
        expectShortage(operation);
        const LogCapture log;
        reader->close();
        writer->close();
        EXPECT_THAT(log.records(), IsEmpty());
        EXPECT_FALSE(topicExists());
    }

    const std::unique_ptr<Writer> writer = publisher();
    const std::unique_ptr<Reader> reader = subscriber();
};

TEST_F(ReadMemoryFaultsTest, ReadIsRefused)
{
    expectShortageAndNoLoan([&] { reader->read(0); });
}

TEST_F(ReadMemoryFaultsTest, EventReadIsRefusedAndAppendsNothing)
{
    Events events;
    expectShortageAndNoLoan([&] { reader->readDataEvents(Filter(), events, 0, 0ms); });
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(ReadMemoryFaultsTest, PollIsRefusedAndCallsNobody)
{
    int calls = 0;
    const auto handle = subscribe(*reader, Kind::Sync, {}, [&] { ++calls; });
    expectShortageAndNoLoan([&] { reader->poll(0, patience); });
    EXPECT_EQ(calls, 0);
}

TEST_F(ReadMemoryFaultsTest, MostRecentValueIsRefusedAndReadLater)
{
    auto recent = mrvSubscriber();
    publishPositions(*writer, 1, 7);
    expectShortage([&] { recent->readMostRecent(0ms); });
    EXPECT_THAT(altitudes(recent->readMostRecent(0ms)), ElementsAre(7));
}

TEST_F(MemoryFaultsTest, ReadOfAnInstanceIsRefused)
{
    const auto writer = sensorPublisher();
    const auto reader = sensorSubscriber();
    const auto wanted = sensor("a");
    publish(*writer, "a");
    expectShortage([&] { reader->readInstance(*wanted); });
    EXPECT_NO_THROW(reader->close());
}

} // namespace plex::test
