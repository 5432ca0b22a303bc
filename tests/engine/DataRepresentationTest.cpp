// SPDX-License-Identifier: Apache-2.0
#include "KeyedTest.hpp"

#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>

#include <optional>
#include <string>

namespace plex::test
{

namespace dds = eprosima::fastdds::dds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto xcdr1 = dds::XCDR_DATA_REPRESENTATION;
constexpr auto xcdr2 = dds::XCDR2_DATA_REPRESENTATION;

/// The property "dds.data_representation" on entities of every kind, told by which readers and writers of
/// DDS's own they match.
class DataRepresentationTest : public KeyedTest
{
protected:
    /// The property and, unless empty, a library of the shipped profiles.
    static Properties asking(const std::optional<std::string>& representation,
                             const std::string& library = {})
    {
        Properties result{{"dds.wait_for_ack.timeout_ms", "0"}};
        if (representation) {
            result["dds.data_representation"] = *representation;
        }
        if (!library.empty()) {
            result["dds.qos.profile.file"] = PROFILE_FILE;
            result["dds.qos.profile.library"] = library;
        }
        return result;
    }

    std::shared_ptr<SensorWriter> make(const Properties& properties)
    {
        return std::shared_ptr<SensorWriter>(generated_dds_Publisher_keyed_Sensor(plex, uri, {}, properties));
    }

    std::shared_ptr<SensorReader> read(const Properties& properties)
    {
        return std::shared_ptr<SensorReader>(
            generated_dds_Subscriber_keyed_Sensor(plex, uri, {}, properties));
    }

    std::shared_ptr<ovra::plex::ps::MrvSubscriber<Sensor>> readMostRecent(const Properties& properties)
    {
        return std::shared_ptr<ovra::plex::ps::MrvSubscriber<Sensor>>(
            generated_dds_MrvSubscriber_keyed_Sensor(plex, uri, {}, properties));
    }

    dds::Topic* topic(dds::DomainParticipant& participant) const
    {
        return dynamic_cast<dds::Topic*>(
            participant.lookup_topicdescription(ovra::plex::DdsUriHelper::topic(uri, true)));
    }

    /// How many writers of the test match a reader that accepts just one representation.
    int writersFor(const Properties& properties, dds::DataRepresentationId_t accepted,
                   dds::ReliabilityQosPolicyKind reliability = dds::BEST_EFFORT_RELIABILITY_QOS)
    {
        const auto participant = plex->getDomainParticipant(uri, properties);
        auto* const subscriber = participant->create_subscriber(dds::SubscriberQos());
        dds::DataReaderQos qos;
        ovra::plex::fastdds::representationOf(qos).m_value = {accepted};
        qos.reliability().kind = reliability;
        auto* const reader = subscriber->create_datareader(topic(*participant), qos);
        dds::SubscriptionMatchedStatus status;
        reader->get_subscription_matched_status(status);
        subscriber->delete_datareader(reader);
        participant->delete_subscriber(subscriber);
        return status.current_count;
    }

    /// How many readers of the test match a writer that offers a representation.
    int readersFor(const Properties& properties, dds::DataRepresentationId_t offered,
                   dds::ReliabilityQosPolicyKind reliability = dds::RELIABLE_RELIABILITY_QOS)
    {
        const auto participant = plex->getDomainParticipant(uri, properties);
        auto* const publisher = participant->create_publisher(dds::PublisherQos());
        dds::DataWriterQos qos;
        qos.representation().m_value = {offered};
        qos.reliability().kind = reliability;
        auto* const writer = publisher->create_datawriter(topic(*participant), qos);
        dds::PublicationMatchedStatus status;
        writer->get_publication_matched_status(status);
        publisher->delete_datawriter(writer);
        participant->delete_publisher(publisher);
        return status.current_count;
    }
};

struct Offer {
    std::optional<std::string> property;
    int toXcdr1;
    int toXcdr2;
};

const Offer offers[] = {{std::nullopt, 1, 0}, {"xcdr1", 1, 0}, {"xcdr2", 0, 1}};

TEST_F(DataRepresentationTest, PublisherOffersExactlyTheOneAskedFor)
{
    for (const auto& [property, toXcdr1, toXcdr2] : offers) {
        for (const std::string library : {"", "reliable", "latest-only"}) {
            const auto properties = asking(property, library);
            const auto publisher = make(properties);
            SCOPED_TRACE(property.value_or("absent") + " " + library);
            EXPECT_EQ(writersFor(properties, xcdr1), toXcdr1);
            EXPECT_EQ(writersFor(properties, xcdr2), toXcdr2);
        }
    }
}

TEST_F(DataRepresentationTest, InstancePublisherOffersExactlyTheOneAskedFor)
{
    for (const auto& [property, toXcdr1, toXcdr2] : offers) {
        for (const std::string library : {"", "reliable"}) {
            const auto properties = asking(property, library);
            const auto publisher = make(properties);
            const auto instance = publisher->createInstancePublisher(*sensor("a"));
            SCOPED_TRACE(property.value_or("absent") + " " + library);
            EXPECT_EQ(writersFor(properties, xcdr1), 2 * toXcdr1);
            EXPECT_EQ(writersFor(properties, xcdr2), 2 * toXcdr2);
        }
    }
}

struct Acceptance {
    std::optional<std::string> property;
    int ofXcdr1;
    int ofXcdr2;
};

const Acceptance acceptances[] = {{std::nullopt, 1, 0}, {"xcdr1", 1, 1}, {"xcdr2", 1, 1}};

TEST_F(DataRepresentationTest, SubscriberAcceptsBothWhicheverIsAskedFor)
{
    for (const auto& [property, ofXcdr1, ofXcdr2] : acceptances) {
        for (const std::string library : {"", "reliable", "latest-only"}) {
            const auto properties = asking(property, library);
            const auto subscriber = read(properties);
            SCOPED_TRACE(property.value_or("absent") + " " + library);
            EXPECT_EQ(readersFor(properties, xcdr1), ofXcdr1);
            EXPECT_EQ(readersFor(properties, xcdr2), ofXcdr2);
        }
    }
}

TEST_F(DataRepresentationTest, MostRecentValueSubscriberAcceptsBothWhicheverIsAskedFor)
{
    for (const auto& [property, ofXcdr1, ofXcdr2] : acceptances) {
        for (const std::string library : {"", "reliable"}) {
            const auto properties = asking(property, library);
            const auto subscriber = readMostRecent(properties);
            SCOPED_TRACE(property.value_or("absent") + " " + library);
            EXPECT_EQ(readersFor(properties, xcdr1), ofXcdr1);
            EXPECT_EQ(readersFor(properties, xcdr2), ofXcdr2);
        }
    }
}

TEST_F(DataRepresentationTest, RestOfAProfileStays)
{
    const auto bestEffort = asking("xcdr2", "latest-only");
    const auto publisher = make(bestEffort);
    EXPECT_EQ(writersFor(bestEffort, xcdr2, dds::BEST_EFFORT_RELIABILITY_QOS), 1);
    EXPECT_EQ(writersFor(bestEffort, xcdr2, dds::RELIABLE_RELIABILITY_QOS), 0);

    const auto reliable = asking("xcdr2", "reliable");
    const auto subscriber = read(reliable);
    EXPECT_EQ(readersFor(reliable, xcdr2, dds::RELIABLE_RELIABILITY_QOS), 1);
    EXPECT_EQ(readersFor(reliable, xcdr2, dds::BEST_EFFORT_RELIABILITY_QOS), 0);
}

TEST_F(DataRepresentationTest, ValuesArriveWhateverEachSideAsksFor)
{
    for (const std::string reading : {"xcdr1", "xcdr2"}) {
        const auto subscriber = read(asking(reading));
        const auto mostRecent = readMostRecent(asking(reading));
        for (const std::string writing : {"xcdr1", "xcdr2"}) {
            SCOPED_TRACE(writing + " to " + reading);
            const auto publisher = make(asking(writing));
            publish(*publisher, "a", 4.5);
            EXPECT_THAT(readings(subscriber->read(0)), ElementsAre(Reading{"a", 4.5}));
            EXPECT_THAT(readings(mostRecent->readMostRecent(0ms)), ElementsAre(Reading{"a", 4.5}));
        }
    }
}

TEST_F(DataRepresentationTest, OrdinarySubscriberHearsNothingOfAnXcdr2Publisher)
{
    const auto ordinary = read(asking(std::nullopt));
    const auto asked = read(asking("xcdr1"));
    publish(*make(asking("xcdr2")), "a", 4.5);
    EXPECT_THAT(readings(asked->read(0)), ElementsAre(Reading{"a", 4.5}));
    EXPECT_THAT(ordinary->read(0), IsEmpty());
}

TEST_F(DataRepresentationTest, OtherValuesAreRefusedAndNothingIsLeft)
{
    for (const std::string value :
         {"", "XCDR2", "Xcdr1", "xcdr", "xcdr3", " xcdr1", "xcdr2 ", "xcdr1,xcdr2", "1"}) {
        for (const std::string library : {"", "reliable"}) {
            const auto properties = asking(value, library);
            auto holder = plex->getDomainParticipant(uri, properties);
            const auto text =
                "Property dds.data_representation is neither \"xcdr1\" nor \"xcdr2\": \"" + value + "\"";
            EXPECT_EQ(thrownText<PlexException>([&] { make(properties); }), text);
            EXPECT_EQ(thrownText<PlexException>([&] { read(properties); }), text);
            EXPECT_EQ(thrownText<PlexException>([&] { readMostRecent(properties); }), text);
            EXPECT_TRUE(releasedClean(holder));
        }
    }
}

TEST_F(DataRepresentationTest, MissingProfilesAreNamedAndNothingIsLeft)
{
    auto properties = asking("xcdr2", "reliable");
    properties["dds.qos.profile.writer"] = "missing";
    properties["dds.qos.profile.reader"] = "absent";
    auto holder = plex->getDomainParticipant(uri, properties);
    EXPECT_EQ(thrownText<PlexException>([&] { make(properties); }),
              "Failed to create writer with profile:missing");
    EXPECT_EQ(thrownText<PlexException>([&] { read(properties); }),
              "Failed to create reader with profile:absent");
    EXPECT_TRUE(releasedClean(holder));
}

/// The same between participants that talk as those of two processes do.
class RemoteRepresentationTest : public DataRepresentationTest
{
protected:
    /// Whether a value of a publisher elsewhere arrives at a subscriber.
    void expectArrival(const std::string& writing, const std::string& reading)
    {
        SCOPED_TRACE(writing + " to " + reading);
        const auto subscriber = read(asking(reading));
        const std::shared_ptr<SensorWriter> publisher(
            generated_dds_Publisher_keyed_Sensor(sendersPlex_, uri, {}, asking(writing)));
        std::vector<Reading> arrived;
        EXPECT_TRUE(waitFor([&] {
            publish(*publisher, "a", 4.5);
            arrived = readings(subscriber->read(0));
            return !arrived.empty();
        }));
        EXPECT_THAT(arrived, testing::Each(Reading{"a", 4.5}));
    }

private:
    const std::shared_ptr<ovra::plex::DdsPlex> sendersPlex_ =
        std::make_shared<ovra::plex::DdsPlex>(Properties{});
    const std::shared_ptr<dds::DomainParticipant> sendersParticipant_ =
        sendersPlex_->getDomainParticipant(uri, {{"dds.qos.profile.file", NO_INTRAPROCESS_FILE}});
};

TEST_F(RemoteRepresentationTest, ValuesArriveWhateverEachSideAsksFor)
{
    for (const std::string reading : {"xcdr1", "xcdr2"}) {
        for (const std::string writing : {"xcdr1", "xcdr2"}) {
            expectArrival(writing, reading);
        }
    }
}

} // namespace plex::test
