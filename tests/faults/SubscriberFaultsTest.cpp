// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class SubscriberFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsSubscriber";

    /// An operation whose taking fails says so with URI and code, and leaves the subscriber usable.
    template <class Operation>
    void expectTakeFailure(const char* taking, const std::string& text, Operation operation)
    {
        for (const ReturnCode code : {1, 2, 4, 5, 6, 7, 8, 9, 10, 12}) {
            const Fault fault(taking, code);
            expectFailure(logger, text + " Uri:" + uriText() + " code:" + std::to_string(code), operation,
                          "errMsg:");
        }
    }
};

TEST_F(SubscriberFaultsTest, FailedReadIsReportedAndLeavesTheSamples)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 2);
    expectTakeFailure("DataReader::take", "Reader take failed for dds subscriber.",
                      [&] { subscriber->read(0); });
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(0, 1));
}

TEST_F(SubscriberFaultsTest, ReadThatFailsLaterOnReturnsWhatItHasTaken)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 50); // more than DDS gives at a time
    std::size_t taken = 0;
    {
        const LogCapture log;
        const Fault fault("DataReader::take", fastdds::RETCODE_ERROR, {.fromCall = 2});
        taken = subscriber->read(0).size();
        EXPECT_EQ(recordsOf(log),
                  records({error(logger, "errMsg:Reader take failed for dds subscriber. Uri:" + uriText() +
                                             " code:1")}));
        EXPECT_THROW(subscriber->read(0), PlexException);
    }
    EXPECT_GT(taken, 0U);
    EXPECT_EQ(subscriber->read(0).size(), 50 - taken);
}

TEST_F(SubscriberFaultsTest, ReadOfAllGivesWhatHadArrivedWhenItBegan)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 40); // more than DDS gives at a time
    {
        const Meanwhile more("DataReader::take", [&] { publishPositions(*publisher, 5, 40); });
        EXPECT_EQ(subscriber->read(0).size(), 40U);
    }
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(40, 41, 42, 43, 44));
}

TEST_F(SubscriberFaultsTest, ReadOfAllReturnsWhatItHasTakenWhenClosingBegins)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 100);
    const Meanwhile closing("DataReader::take", [&] { subscriber->close(); });
    const auto values = subscriber->read(0);
    EXPECT_GT(values.size(), 0U);
    EXPECT_LT(values.size(), 100U);
}

TEST_F(SubscriberFaultsTest, FailedReadOfAnInstanceIsReportedAndLeavesTheSample)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    publish(*publisher, "a", 1);
    expectTakeFailure("DataReader::take_instance", "Reader take failed for dds subscriber's readInstance.",
                      [&] { subscriber->readInstance(*sensor("a")); });
    EXPECT_EQ(reading(*subscriber->readInstance(*sensor("a"))), (Reading{"a", 1}));
}

TEST_F(SubscriberFaultsTest, FailedReadIntoAValueLeavesItAlone)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    publish(*publisher, "a", 1);
    const auto value = sensor("b", 2);
    const Fault fault("DataReader::take_instance");
    EXPECT_THROW(subscriber->readInstance(*sensor("a"), *value), PlexException);
    EXPECT_EQ(reading(*value), (Reading{"b", 2}));
}

TEST_F(SubscriberFaultsTest, FailedLoanedReadIsReportedAndLeavesTheSample)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1, 7);
    expectTakeFailure("DataReader::take", "Reader take failed for dds subscriber's loanedRead.",
                      [&] { subscriber->loanedRead(); });
    EXPECT_EQ(subscriber->loanedRead()->getData().getAlt(), 7);
}

TEST_F(SubscriberFaultsTest, FailedLoanedReadOfAnInstanceIsReportedAndLeavesTheSample)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    publish(*publisher, "a", 1);
    expectTakeFailure("DataReader::take_instance",
                      "Reader take failed for dds subscriber's loanedReadInstance.",
                      [&] { subscriber->loanedReadInstance(*sensor("a")); });
    EXPECT_EQ(subscriber->loanedReadInstance(*sensor("a"))->getData().getValue(), 1);
}

TEST_F(SubscriberFaultsTest, NoDataIsNoFailure)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    publish(*publisher, "a", 1);
    const LogCapture log;
    const Fault take("DataReader::take", RETCODE_NO_DATA);
    const Fault takeInstance("DataReader::take_instance", RETCODE_NO_DATA);
    EXPECT_THAT(subscriber->read(0), IsEmpty());
    EXPECT_EQ(subscriber->readInstance(*sensor("a")), nullptr);
    EXPECT_EQ(subscriber->loanedRead(), nullptr);
    EXPECT_EQ(subscriber->loanedReadInstance(*sensor("a")), nullptr);
    EXPECT_THAT(recordsOf(log), IsEmpty());
}

TEST_F(SubscriberFaultsTest, InstanceThatTheReaderDoesNotKnowIsNoFailure)
{
    const auto subscriber = sensorSubscriber();
    const LogCapture log;
    const Fault fault("DataReader::take_instance", fastdds::RETCODE_BAD_PARAMETER);
    EXPECT_EQ(subscriber->readInstance(*sensor("a")), nullptr);
    EXPECT_EQ(subscriber->loanedReadInstance(*sensor("a")), nullptr);
    EXPECT_THAT(recordsOf(log), IsEmpty());
}

TEST_F(SubscriberFaultsTest, ReadThatCannotReturnItsLoanEndsTheProcess)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1);
    expectDeath(logger, "errMsg:Reader failed to return loaned data back to the middle-layer. code:1", [&] {
        const Fault fault("DataReader::return_loan");
        subscriber->read(0);
    });
}

TEST_F(SubscriberFaultsTest, ReadOfAnInstanceThatCannotReturnItsLoanEndsTheProcess)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    publish(*publisher, "a");
    expectDeath(logger, "errMsg:Reader failed to return loaned data back to the middle-layer. code:4", [&] {
        const Fault fault("DataReader::return_loan", RETCODE_PRECONDITION_NOT_MET);
        subscriber->readInstance(*sensor("a"));
    });
}

TEST_F(SubscriberFaultsTest, LoanThatCannotBeReturnedIsReportedAndReturnedLater)
{
    auto holder = participant();
    {
        const auto publisher = this->publisher();
        const auto subscriber = this->subscriber();
        publishPositions(*publisher, 1, 7);
        const auto loan = subscriber->loanedRead();
        for (const ReturnCode code : refusals) {
            const Fault fault("DataReader::return_loan", code);
            expectFailure(
                logger,
                "Failed to return loan back to middle-layer. Uri:" + uriText() +
                    " code:" + std::to_string(code),
                [&] { loan->close(); }, "errMsg:");
        }
        EXPECT_EQ(loan->getData().getAlt(), 7);
        int returns = 0;
        const CallCount count("DataReader::return_loan", returns);
        loan->close();
        loan->close();
        EXPECT_EQ(returns, 1);
    }
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(SubscriberFaultsTest, DroppedLoanThatIsNotTakenBackIsLoggedOnly)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1);
    auto loan = subscriber->loanedRead();
    const Fault fault("DataReader::return_loan", RETCODE_ERROR, {.work = Fault::Work::Done});
    const LogCapture log;
    EXPECT_NO_THROW(loan.reset());
    EXPECT_EQ(recordsOf(log),
              records({error(logger, "errMsg:Failed to return loan back to middle-layer. Uri:" + uriText() +
                                         " code:1")}));
}

TEST_F(SubscriberFaultsTest, ReaderWhoseLoanIsStillOutCannotBeDeletedAndEndsTheProcess)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    publishPositions(*publisher, 1);
    expectDeath(logger, "Failed to delete a DDS data reader for dds subscriber code:4", [&] {
        const Fault fault("DataReader::return_loan");
        subscriber->loanedRead().reset();
        subscriber->close();
    });
}

TEST_F(SubscriberFaultsTest, ReaderThatCannotBeDeletedEndsTheProcess)
{
    const auto subscriber = this->subscriber();
    for (const ReturnCode code : {RETCODE_ERROR, RETCODE_PRECONDITION_NOT_MET}) {
        expectDeath(logger,
                    "Failed to delete a DDS data reader for dds subscriber code:" + std::to_string(code),
                    [&] {
                        const Fault fault("Subscriber::delete_datareader", code);
                        subscriber->close();
                    });
    }
}

TEST_F(SubscriberFaultsTest, DdsSubscriberThatCannotBeDeletedEndsTheProcess)
{
    auto subscriber = this->subscriber();
    expectDeath(logger, "Failed to delete a DDS subscriber for dds subscriber code:1", [&] {
        const Fault fault("DomainParticipant::delete_subscriber");
        subscriber.reset();
    });
}

TEST_F(SubscriberFaultsTest, TopicInUseIsLeftInPlaceWithoutAWord)
{
    const auto holder = participant();
    const auto subscriber = this->subscriber();
    const LogCapture log;
    const Fault fault("DomainParticipant::delete_topic", RETCODE_PRECONDITION_NOT_MET);
    subscriber->close();
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_TRUE(topicExists());
}

TEST_F(SubscriberFaultsTest, TopicThatCannotBeDeletedEndsTheProcess)
{
    const auto subscriber = this->subscriber();
    expectDeath(logger, "Failed to delete topic for dds subscriber Uri:" + uriText() + " code:1", [&] {
        const Fault fault("DomainParticipant::delete_topic");
        subscriber->close();
    });
}

} // namespace plex::test
