// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class MrvFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsMrvSubscriber";

    const std::unique_ptr<Writer> publisher = FaultTest::publisher();
    std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>> subscriber = mrvSubscriber();
};

TEST_F(MrvFaultsTest, FailedReadIsReportedAndTheValueIsReadLater)
{
    publishPositions(*publisher, 1, 7);
    for (const ReturnCode code : refusals) {
        const Fault fault("DataReader::read_next_instance", code);
        expectFailure(
            logger, "Read failed for Mrv dds subscriber. Uri:" + uriText() + " code:" + std::to_string(code),
            [&] { subscriber->readMostRecent(0ms); }, "errMsg:");
    }
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(7));
}

TEST_F(MrvFaultsTest, NoDataIsNoFailureAndThereIsNoLoanToReturn)
{
    publishPositions(*publisher, 1);
    const LogCapture log;
    int returns = 0;
    const CallCount count("DataReader::return_loan", returns);
    const Fault fault("DataReader::read_next_instance", RETCODE_NO_DATA);
    EXPECT_THAT(subscriber->readMostRecent(0ms), IsEmpty());
    EXPECT_EQ(returns, 0);
    EXPECT_THAT(recordsOf(log), IsEmpty());
}

TEST_F(MrvFaultsTest, NothingIsReadBehindANegativeTimeout)
{
    int reads = 0;
    const CallCount count("DataReader::read_next_instance", reads);
    EXPECT_THROW(subscriber->readMostRecent(-1ms), PlexException);
    EXPECT_EQ(reads, 0);
}

TEST_F(MrvFaultsTest, LoanThatCannotBeReturnedEndsTheProcess)
{
    publishPositions(*publisher, 1);
    expectDeath(logger,
                "errMsg:Reader failed to return loaned data back to the middle-layer for Mrv dds subscriber "
                "code:1",
                [&] {
                    const Fault fault("DataReader::return_loan");
                    subscriber->readMostRecent(0ms);
                });
}

TEST_F(MrvFaultsTest, ReaderThatCannotBeDeletedEndsTheProcess)
{
    for (const ReturnCode code : {RETCODE_ERROR, RETCODE_PRECONDITION_NOT_MET}) {
        expectDeath(logger,
                    "Failed to delete datareader for Mrv dds subscriber. Uri:" + uriText() +
                        " code:" + std::to_string(code),
                    [&] {
                        const Fault fault("Subscriber::delete_datareader", code);
                        subscriber->close();
                    });
    }
}

TEST_F(MrvFaultsTest, DdsSubscriberThatCannotBeDeletedEndsTheProcess)
{
    expectDeath("plexDdsBasePubSub", "Failed to delete publisher code:1", [&] {
        const Fault fault("DomainParticipant::delete_subscriber");
        subscriber.reset();
    });
}

TEST_F(MrvFaultsTest, TopicInUseIsLeftInPlaceWithoutAWord)
{
    publisher->close();
    const LogCapture log;
    const Fault fault("DomainParticipant::delete_topic", RETCODE_PRECONDITION_NOT_MET);
    subscriber->close();
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_TRUE(topicExists());
}

TEST_F(MrvFaultsTest, TopicThatCannotBeDeletedEndsTheProcess)
{
    publisher->close();
    expectDeath(logger, "Failed to delete topic for Mrv dds subscriber. Uri:" + uriText() + " code:1", [&] {
        const Fault fault("DomainParticipant::delete_topic");
        subscriber->close();
    });
}

} // namespace plex::test
