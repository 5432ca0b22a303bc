// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class PollFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsSubscriber";

    const std::unique_ptr<Writer> publisher = FaultTest::publisher();
    const std::unique_ptr<Reader> subscriber = FaultTest::subscriber();
    std::vector<Heard> heard;
    const Handle handle = subscriber->subscribe(Filter(InstanceState::Any), hearing(heard));
};

TEST_F(PollFaultsTest, FailedTakeIsReportedAndLeavesTheSamples)
{
    publishPositions(*publisher, 2);
    for (const ReturnCode code : refusals) {
        const Fault fault("DataReader::take", code);
        expectFailure(
            logger, "Reader take failed in poll. Uri:" + uriText() + " code:" + std::to_string(code),
            [&] { subscriber->poll(0, patience); }, "errMsg:");
    }
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(0, 1));
}

TEST_F(PollFaultsTest, SamplesFromBeforeAFailureHaveBeenServed)
{
    publishPositions(*publisher, 3);
    const Fault fault("DataReader::take", RETCODE_ERROR, {.fromCall = 3});
    EXPECT_THROW(subscriber->poll(1, patience), PlexException);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(0, 1));
}

TEST_F(PollFaultsTest, NoDataIsNoFailure)
{
    publishPositions(*publisher, 1);
    const Fault fault("DataReader::take", RETCODE_NO_DATA);
    EXPECT_EQ(subscriber->poll(0, 20ms), 0U);
}

TEST_F(PollFaultsTest, MissingReadConditionIsReported)
{
    const Fault fault("DataReader::create_readcondition");
    expectFailure(logger, "Failed to create a read condition", [&] { subscriber->poll(0, patience); });
}

TEST_F(PollFaultsTest, ConditionThatCannotBeAttachedIsReported)
{
    const Fault fault("WaitSet::attach_condition");
    expectFailure(logger, "Failed to attach a condition to a waitset. Uri:" + uriText() + " code:1",
                  [&] { subscriber->poll(0, patience); });
}

TEST_F(PollFaultsTest, FailedWaitIsReported)
{
    const Fault fault("WaitSet::wait", 7);
    expectFailure(logger, "Wait set wait error. Uri:" + uriText() + " code:7",
                  [&] { subscriber->poll(0, patience); });
}

TEST_F(PollFaultsTest, LoanThatCannotBeReturnedEndsTheProcess)
{
    publishPositions(*publisher, 1);
    expectDeath(logger, "errMsg:Reader failed to return loaned data back to the middle-layer. code:1", [&] {
        const Fault fault("DataReader::return_loan");
        subscriber->poll(0, patience);
    });
}

TEST_F(PollFaultsTest, ConditionThatCannotBeDeletedEndsTheProcess)
{
    expectDeath(logger, "Delete read condition failed code:1", [&] {
        const Fault fault("DataReader::delete_readcondition");
        subscriber->poll(0, 1ms);
    });
}

TEST_F(PollFaultsTest, SampleWhoseStatesFitNoEventIsReportedAndItsLoanReturned)
{
    publishPositions(*publisher, 1);
    const LogCapture log;
    const DoctoredSamples doctored("DataReader::take", loseViewState);
    EXPECT_EQ(thrownText<PlexException>([&] { subscriber->poll(0, patience); }),
              "Plex InstanceEvent can not be deduced from sampleInfo");
    EXPECT_THAT(heard, IsEmpty());
    subscriber->close(); // which it could not with a loan out
    EXPECT_THAT(recordsOf(log), IsEmpty());
}

} // namespace plex::test
