// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/// The ways to wait for events, and how each words its failures.
struct Strategy {
    const char* name;
    std::size_t limit;
    std::chrono::milliseconds timeout;
    const char* takeFailed;
    const char* loanNotReturned;
};

constexpr Strategy cache{"Cache", 0, 0ms, "Reader take failed for dds subscriber's readDataEventsCache.",
                         "Reader failed to return loaned data back to the middle-layer."};

constexpr Strategy waiting[] = {
    {"UntilTimeout", 0, patience, "Reader take failed in readDataEventsUntilTimeout.",
     "Reader failed to return loaned data back to the middle-layer."},
    {"UntilEventCountLimit", 3, 0ms,
     "Reader take failed for dds subscriber's readDataEventsUntilEventCountLimit.",
     "Reader failed to return loaned data back to the middle - layer."},
    {"UntilEventCountLimitOrTimeout", 3, patience,
     "Reader take failed for dds subscriber's readDataEventsUntilEventCountLimitOrTimeout.",
     "Reader failed to return loaned data back to the middle - layer."},
};

constexpr Strategy all[] = {cache, waiting[0], waiting[1], waiting[2]};

std::ostream& operator<<(std::ostream& out, const Strategy& strategy)
{
    return out << strategy.name;
}

} // namespace

class EventReadFaultsTest : public FaultTest, public testing::WithParamInterface<Strategy>
{
protected:
    static constexpr const char* logger = "plexDdsSubscriber";

    void read() { subscriber->readDataEvents(Filter(), events, GetParam().limit, GetParam().timeout); }

    const std::unique_ptr<Writer> publisher = FaultTest::publisher();
    const std::unique_ptr<Reader> subscriber = FaultTest::subscriber();
    Events events;
};

TEST_P(EventReadFaultsTest, FailedTakeIsReportedAndLeavesTheSamples)
{
    publishPositions(*publisher, 3);
    for (const ReturnCode code : refusals) {
        const Fault fault("DataReader::take", code);
        expectFailure(
            logger,
            std::string(GetParam().takeFailed) + " Uri:" + uriText() + " code:" + std::to_string(code),
            [&] { read(); }, "errMsg:");
    }
    EXPECT_THAT(events, IsEmpty());
    read();
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1, 2));
}

TEST_P(EventReadFaultsTest, EventsFromBeforeAFailureStay)
{
    publishPositions(*publisher, 2);
    {
        const Fault fault("DataReader::take", RETCODE_ERROR, {.fromCall = 2});
        EXPECT_THROW(read(), PlexException);
    }
    EXPECT_THAT(altitudes(events), ElementsAre(0, 1));
}

TEST_P(EventReadFaultsTest, LoanThatCannotBeReturnedEndsTheProcess)
{
    publishPositions(*publisher, 3);
    expectDeath(logger, "errMsg:" + std::string(GetParam().loanNotReturned) + " code:1", [&] {
        const Fault fault("DataReader::return_loan");
        read();
    });
}

INSTANTIATE_TEST_SUITE_P(Strategies, EventReadFaultsTest, testing::ValuesIn(all),
                         testing::PrintToStringParamName());

class WaitFaultsTest : public EventReadFaultsTest
{
protected:
    /// The read fails, and leaves nothing that would keep the reader from going.
    void expectWaitFailure(const std::string& text)
    {
        expectFailure(logger, text, [&] { read(); });
    }

    ~WaitFaultsTest() override
    {
        const LogCapture log;
        subscriber->close();
        EXPECT_THAT(recordsOf(log), IsEmpty());
    }
};

TEST_P(WaitFaultsTest, MissingReadConditionIsReported)
{
    const Fault fault("DataReader::create_readcondition");
    expectWaitFailure("Failed to create a read condition");
}

TEST_P(WaitFaultsTest, ConditionThatCannotBeAttachedIsReported)
{
    for (const int attached : {0, 1}) {
        const Fault fault("WaitSet::attach_condition", 5, {.fromCall = attached + 1});
        expectWaitFailure("Failed to attach a condition to a waitset. Uri:" + uriText() + " code:5");
    }
}

TEST_P(WaitFaultsTest, FailedWaitIsReported)
{
    for (const ReturnCode code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12}) {
        const Fault fault("WaitSet::wait", code);
        expectWaitFailure("Wait set wait error. Uri:" + uriText() + " code:" + std::to_string(code));
    }
}

TEST_P(WaitFaultsTest, ConditionThatCannotBeDeletedEndsTheProcess)
{
    publishPositions(*publisher, 3);
    expectDeath(logger, "Delete read condition failed code:1", [&] {
        const Fault fault("DataReader::delete_readcondition");
        read();
    });
}

INSTANTIATE_TEST_SUITE_P(Strategies, WaitFaultsTest, testing::ValuesIn(waiting),
                         testing::PrintToStringParamName());

/// Without a fault: the waits are counted.
class EventReadWaitTest : public FaultTest
{
};

TEST_F(EventReadWaitTest, TimeoutBelow100MillisecondsIsOneWaitOfTheShortestKind)
{
    const auto subscriber = FaultTest::subscriber();
    Events events;
    int waits = 0;
    const CallCount count("WaitSet::wait", waits);
    EXPECT_EQ(subscriber->readDataEvents(Filter(), events, 0, 99ms), 0U);
    EXPECT_EQ(waits, 1);
}

TEST_F(EventReadWaitTest, ReadOfTheCacheGivesWhatHadArrivedWhenItBegan)
{
    const auto publisher = FaultTest::publisher();
    const auto subscriber = FaultTest::subscriber();
    Events events;
    publishPositions(*publisher, 40); // more than DDS gives at a time
    const Meanwhile more("DataReader::take", [&] { publishPositions(*publisher, 5, 40); });
    EXPECT_EQ(subscriber->readDataEvents(Filter(), events, 0, 0ms), 40U);
    EXPECT_EQ(subscriber->readDataEvents(Filter(), events, 0, 0ms), 5U);
}

TEST_F(EventReadWaitTest, ClosingEndsAReadWithALimitBetweenTwoTakes)
{
    const auto publisher = FaultTest::publisher();
    const auto subscriber = FaultTest::subscriber();
    Events events;
    publishPositions(*publisher, 1000);
    const Meanwhile closing("DataReader::take", [&] { subscriber->close(); });
    EXPECT_THROW(subscriber->readDataEvents(Filter(), events, 1000, 0ms), IllegalStateException);
    EXPECT_LT(events.size(), 100U);
}

} // namespace plex::test
