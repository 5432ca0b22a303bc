// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::IsEmpty;

class PublisherFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsPublisher";
};

TEST_F(PublisherFaultsTest, RefusedValueIsReportedWithUriAndCode)
{
    const auto publisher = this->publisher();
    for (const ReturnCode code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
        const std::string text =
            "Writer failed to write for dds publisher Uri:" + uriText() + " code:" + std::to_string(code);
        {
            const Fault fault("DataWriter::write", code);
            expectFailure(logger, text, [&] { publishPositions(*publisher, 1); }, "errMsg:");
        }
        const Fault fault("DataWriter::write_w_timestamp", code);
        expectFailure(logger, text, [&] { publisher->publish(1.5, *position(1), 0ms); }, "errMsg:");
    }
}

TEST_F(PublisherFaultsTest, PublisherGoesOnAfterARefusedValue)
{
    const auto publisher = this->publisher();
    const auto subscriber = this->subscriber();
    {
        const Fault fault("DataWriter::write", RETCODE_TIMEOUT, {.fromCall = 2});
        EXPECT_THROW(publishPositions(*publisher, 3), PlexException);
    }
    publishPositions(*publisher, 1, 7);
    EXPECT_THAT(altitudes(subscriber->read(0)), testing::ElementsAre(0, 7));
}

TEST_F(PublisherFaultsTest, MissingAcknowledgmentsAreAWarningAndTheEntitiesGoAllTheSame)
{
    auto holder = participant();
    auto publisher = this->publisher();
    const Fault writerFault("DataWriter::wait_for_acknowledgments", RETCODE_TIMEOUT);
    const Fault publisherFault("Publisher::wait_for_acknowledgments", RETCODE_ERROR);
    const LogCapture log;
    publisher->close();
    EXPECT_EQ(recordsOf(log), records({warning(logger, "Writer waiting for acknowledgment failed code:10")}));
    EXPECT_FALSE(topicExists());
    publisher.reset();
    EXPECT_EQ(recordsOf(log),
              records({warning(logger, "Writer waiting for acknowledgment failed code:10"),
                       warning(logger, "Publisher waiting for acknowledgment failed code:1")}));
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(PublisherFaultsTest, NothingWaitsForAcknowledgmentsWhereTheTimeoutIsNotAboveZero)
{
    const auto waits = [this](const char* milliseconds) {
        int count = 0;
        auto publisher = this->publisher({}, {{"dds.wait_for_ack.timeout_ms", milliseconds}});
        const CallCount writer("DataWriter::wait_for_acknowledgments", count);
        const CallCount group("Publisher::wait_for_acknowledgments", count);
        publisher.reset();
        return count;
    };
    EXPECT_EQ(waits("0"), 0);
    EXPECT_EQ(waits("-1"), 0);
    EXPECT_EQ(waits("1"), 2);
}

TEST_F(PublisherFaultsTest, WriterThatCannotBeDeletedIsLoggedAndStaysInTheParticipant)
{
    const LogCapture log;
    {
        const Fault fault("Publisher::delete_datawriter");
        publisher();
    }
    EXPECT_EQ(
        recordsOf(log),
        records({error(logger, "Failed to delete data writer code:1"),
                 error(logger, "Failed to delete publisher code:4"), // for the writer is in it
                 warning("plexDdsPlex", "Participant is deleted with the entities that were left in it")}));
}

TEST_F(PublisherFaultsTest, PublisherThatCannotBeDeletedIsLoggedAndStaysInTheParticipant)
{
    auto holder = participant();
    const LogCapture log;
    {
        const Fault fault("DomainParticipant::delete_publisher");
        publisher();
    }
    EXPECT_EQ(recordsOf(log), records({error(logger, "Failed to delete publisher code:1")}));
    EXPECT_FALSE(topicExists());
    EXPECT_FALSE(releasedClean(holder));
}

TEST_F(PublisherFaultsTest, TopicInUseIsLeftInPlaceWithoutAWord)
{
    const auto holder = participant();
    auto publisher = this->publisher();
    const LogCapture log;
    {
        const Fault fault("DomainParticipant::delete_topic", RETCODE_PRECONDITION_NOT_MET);
        publisher->close();
    }
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_TRUE(topicExists());
    EXPECT_NO_THROW(publishPositions(*this->publisher(), 1)); // on the topic that stayed
}

TEST_F(PublisherFaultsTest, TopicThatCannotBeDeletedEndsTheProcess)
{
    const auto publisher = this->publisher();
    for (const ReturnCode code : {RETCODE_ERROR, RETCODE_TIMEOUT}) {
        expectDeath(logger, "Failed to delete topic for dds publisher code:" + std::to_string(code), [&] {
            const Fault fault("DomainParticipant::delete_topic", code);
            publisher->close();
        });
    }
}

} // namespace plex::test
