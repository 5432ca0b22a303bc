// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

namespace plex::test
{

using ovra::plex::ps::LoanedDataEntity;

class LoanTest : public EntityTest
{
protected:
    void SetUp() override { publishPositions(*publisher_, 3, 1); }

    std::shared_ptr<LoanedDataEntity<AltAz>> loan() { return subscriber_->loanedRead(); }

    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant_ = participant();
    std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> publisher_ = publisher();
    std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber_ = subscriber();
};

TEST_F(LoanTest, EmptyReaderLoansNothingWithoutARecord)
{
    const auto subscriber = this->subscriber();
    const LogCapture log;
    EXPECT_EQ(subscriber->loanedRead(), nullptr);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(LoanTest, EachLoanIsOneSample)
{
    const auto first = loan();
    const auto second = loan();
    EXPECT_EQ(first->getData().getAlt(), 1.0);
    EXPECT_EQ(second->getData().getAlt(), 2.0);
    EXPECT_EQ(subscriber_->read(0).size(), 1U);
}

TEST_F(LoanTest, ClosingTwiceReturnsTheLoanOnce)
{
    const auto held = loan();
    held->close();
    const LogCapture log;
    EXPECT_NO_THROW(held->close());
    EXPECT_TRUE(log.records().empty());
}

TEST_F(LoanTest, ManyLoansAreHeldAtOnce)
{
    publishPositions(*publisher_, 100, 4);
    std::vector<std::shared_ptr<LoanedDataEntity<AltAz>>> loans;
    while (const auto held = loan()) {
        loans.push_back(held);
    }
    ASSERT_EQ(loans.size(), 103U);
    EXPECT_EQ(loans.front()->getData().getAlt(), 1.0);
    EXPECT_EQ(loans.back()->getData().getAlt(), 103.0);
}

TEST_F(LoanTest, LoanIsValidAfterTheSubscriberWasClosed)
{
    const auto held = loan();
    subscriber_->close();
    publishPositions(*publisher_, 50);
    EXPECT_EQ(held->getData().getAlt(), 1.0);
    EXPECT_NO_THROW(held->close());
}

TEST_F(LoanTest, LoanIsValidAfterTheSubscriberWasDropped)
{
    const auto held = loan();
    subscriber_.reset();
    publishPositions(*publisher_, 50);
    EXPECT_EQ(held->getData().getAlt(), 1.0);
}

TEST_F(LoanTest, LastLoanTakesReaderAndTopicAlong)
{
    auto first = loan();
    auto second = loan();
    publisher_.reset();
    subscriber_.reset();
    first.reset();
    EXPECT_TRUE(topicExists());
    second->close();
    second.reset();
    EXPECT_TRUE(releasedClean(participant_));
}

TEST_F(LoanTest, LoanClosedAfterTheSubscriberDeletesTheReaderAtOnce)
{
    const auto held = loan();
    publisher_.reset();
    subscriber_->close();
    EXPECT_TRUE(topicExists());
    held->close();
    EXPECT_FALSE(topicExists());
}

TEST_F(LoanTest, EveryOrderOfClosingAndDroppingLeavesNothingBehind)
{
    enum Step { CloseLoan, DropLoan, CloseSubscriber, DropSubscriber };

    std::vector<Step> order{CloseLoan, DropLoan, CloseSubscriber, DropSubscriber};
    publisher_.reset();
    subscriber_.reset();
    do {
        auto publisher = this->publisher();
        auto subscriber = this->subscriber();
        publisher->publish(*position(1), 0ms);
        auto held = subscriber->loanedRead();
        publisher.reset();
        for (const Step step : order) {
            if (step == CloseLoan && held) {
                held->close();
            } else if (step == DropLoan) {
                held.reset();
            } else if (step == CloseSubscriber && subscriber) {
                subscriber->close();
            } else if (step == DropSubscriber) {
                subscriber.reset();
            }
        }
        ASSERT_TRUE(releasedClean(participant_)) << testing::PrintToString(order);
        participant_ = participant();
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(LoanTest, SampleThatIsTooOldGoesBackAndNothingIsLoaned)
{
    auto impatient = subscriber({std::make_shared<ovra::plex::ps::qos::Latency>(5000ms)});
    publisher_->publish(1000.0, *position(1), 0ms);
    EXPECT_EQ(impatient->loanedRead(), nullptr);
    impatient.reset();
    subscriber_.reset();
    publisher_.reset();
    EXPECT_TRUE(releasedClean(participant_));
}

TEST_F(LoanTest, LoanedValueMayBeChangedInPlace)
{
    const auto held = loan();
    held->getData().setAlt(77.0);
    EXPECT_EQ(held->getData().getAlt(), 77.0);
}

} // namespace plex::test
