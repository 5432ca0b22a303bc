// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class InstancePublisherFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsInstancePublisher";

    /// A step of making an instance publisher fails, and its parent is none the worse.
    template <class Exception>
    void expectNoneMade(const char* step, const std::string& failingLogger, const std::string& text)
    {
        auto holder = participant();
        {
            const auto parent = sensorPublisher();
            {
                const Fault fault(step);
                expectFailure<Exception>(failingLogger, text,
                                         [&] { parent->createInstancePublisher(*sensor("a")); });
            }
            EXPECT_NO_THROW(publish(*parent->createInstancePublisher(*sensor("a")), "a"));
        }
        EXPECT_TRUE(releasedClean(holder));
    }
};

TEST_F(InstancePublisherFaultsTest, NoneIsMadeWithoutAPublisherOfItsOwn)
{
    expectNoneMade<PlexException>("DomainParticipant::create_publisher", "plexDdsBasePubSub",
                                  "Failed to create publisher for Uri: " + uriText());
}

TEST_F(InstancePublisherFaultsTest, NoneIsMadeWithoutAWriterOfItsOwn)
{
    expectNoneMade<PlexException>("Publisher::create_datawriter", logger, "Failed to create writer");
}

TEST_F(InstancePublisherFaultsTest, NoneIsMadeWithoutItsProfilesWriter)
{
    const auto parent = sensorPublisher(
        {}, {{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", "reliable"}});
    const Fault fault("Publisher::create_datawriter_with_profile");
    expectFailure(logger, "Failed to create writer with profile:reliable.writer",
                  [&] { parent->createInstancePublisher(*sensor("a")); });
}

TEST_F(InstancePublisherFaultsTest, NoneIsMadeWhereDdsRegistersNoInstance)
{
    expectNoneMade<IllegalStateException>("DataWriter::register_instance", logger,
                                          "Key instance not created");
}

TEST_F(InstancePublisherFaultsTest, RefusedValueIsAnIllegalState)
{
    const auto parent = sensorPublisher();
    const auto publisher = parent->createInstancePublisher(*sensor("a"));
    for (const ReturnCode code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
        const std::string text = "Publish failed code:" + std::to_string(code);
        {
            const Fault fault("DataWriter::write", code);
            expectFailure<IllegalStateException>(logger, text, [&] { publish(*publisher, "a"); }, "errMsg:");
        }
        const Fault fault("DataWriter::write_w_timestamp", code);
        expectFailure<IllegalStateException>(
            logger, text, [&] { publisher->publish(1.5, *sensor("a"), 0ms); }, "errMsg:");
    }
}

TEST_F(InstancePublisherFaultsTest, PublisherGoesOnAfterARefusedValue)
{
    const auto subscriber = sensorSubscriber();
    const auto parent = sensorPublisher();
    const auto publisher = parent->createInstancePublisher(*sensor("a"));
    {
        const Fault fault("DataWriter::write");
        EXPECT_THROW(publish(*publisher, "a", 1), IllegalStateException);
    }
    publish(*publisher, "a", 2);
    EXPECT_THAT(readings(subscriber->read(0)), ElementsAre(Reading{"a", 2}));
}

TEST_F(InstancePublisherFaultsTest, KeyThatDdsDoesNotTellIsReportedAndThePublisherStaysOpen)
{
    const auto parent = sensorPublisher();
    const auto publisher = parent->createInstancePublisher(*sensor("a"));
    for (const ReturnCode code : refusals) {
        const Fault fault("DataWriter::get_key_value", code);
        expectFailure(
            logger, "Getting instance key failed code:" + std::to_string(code),
            [&] { publisher->createDataEntity(); }, "errMsg:");
    }
    EXPECT_EQ(publisher->createDataEntity()->getName(), "a");
}

TEST_F(InstancePublisherFaultsTest, MissingAcknowledgmentsAreAWarningAndTheEntitiesGoAllTheSame)
{
    auto holder = participant();
    auto parent = sensorPublisher({}, {{"dds.wait_for_ack.timeout_ms", "1"}});
    auto publisher = parent->createInstancePublisher(*sensor("a"));
    {
        const Fault writerFault("DataWriter::wait_for_acknowledgments", RETCODE_TIMEOUT);
        const Fault publisherFault("Publisher::wait_for_acknowledgments", RETCODE_ERROR);
        const LogCapture log;
        publisher.reset();
        EXPECT_EQ(recordsOf(log),
                  records({warning(logger, "Instance writer waiting for acknowledgment failed code:10"),
                           warning(logger, "Instance publisher waiting for acknowledgment failed code:1")}));
    }
    parent.reset();
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(InstancePublisherFaultsTest, NothingWaitsForAcknowledgmentsWhereTheTimeoutIsNotAboveZero)
{
    const auto waits = [this](const char* milliseconds) {
        int count = 0;
        const auto parent = sensorPublisher({}, {{"dds.wait_for_ack.timeout_ms", milliseconds}});
        auto publisher = parent->createInstancePublisher(*sensor("a"));
        const CallCount writer("DataWriter::wait_for_acknowledgments", count);
        const CallCount group("Publisher::wait_for_acknowledgments", count);
        publisher.reset();
        return count;
    };
    EXPECT_EQ(waits("0"), 0);
    EXPECT_EQ(waits("-1"), 0);
    EXPECT_EQ(waits("1"), 2);
}

TEST_F(InstancePublisherFaultsTest, WriterAndPublisherThatCannotBeDeletedAreLoggedOnly)
{
    const auto parent = sensorPublisher();
    auto publisher = parent->createInstancePublisher(*sensor("a"));
    const Fault writerFault("Publisher::delete_datawriter", 9);
    const Fault publisherFault("DomainParticipant::delete_publisher", 12);
    const LogCapture log;
    publisher.reset();
    EXPECT_EQ(recordsOf(log), records({error(logger, "Failed to delete data writer code:9"),
                                       error(logger, "Failed to delete publisher code:12")}));
}

/// The parent goes while one of its instance publishers is made, so that one is the topic's last user.
class OrphanFaultsTest : public InstancePublisherFaultsTest
{
protected:
    void makeWhileTheParentCloses()
    {
        const Meanwhile closing("DataWriter::register_instance", [this] { parent->close(); });
        parent->createInstancePublisher(*sensor("a"));
    }

    const std::unique_ptr<SensorWriter> parent = sensorPublisher();
};

TEST_F(OrphanFaultsTest, NoneIsMadeWhenTheParentClosesMeanwhile)
{
    expectFailure<IllegalStateException>("plexDdsBasePubSub", "Entity closed Uri: " + uriText(),
                                         [&] { makeWhileTheParentCloses(); });
    EXPECT_FALSE(topicExists());
}

TEST_F(OrphanFaultsTest, TopicInUseIsLeftInPlaceWithoutAWord)
{
    const Fault fault("DomainParticipant::delete_topic", RETCODE_PRECONDITION_NOT_MET);
    EXPECT_THROW(makeWhileTheParentCloses(), IllegalStateException);
    EXPECT_TRUE(topicExists());
}

TEST_F(OrphanFaultsTest, TopicThatCannotBeDeletedEndsTheProcess)
{
    expectDeath(logger, "Failed to delete topic for dds publisher code:1", [&] {
        const Fault fault("DomainParticipant::delete_topic");
        makeWhileTheParentCloses();
    });
}

} // namespace plex::test
