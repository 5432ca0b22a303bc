// SPDX-License-Identifier: Apache-2.0
#include "FaultTest.hpp"

#include <boost/algorithm/string/replace.hpp>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

enum class Entity { Publisher, Subscriber, MrvSubscriber };

/// An entity that cannot be made because DDS refuses a step.
struct Creation {
    Entity entity;
    bool withProfiles;
    const char* step;
    const char* logger;
    const char* text; ///< with <uri> for the entity's
};

constexpr const char* base = "plexDdsBasePubSub";

constexpr Creation creations[] = {
    {Entity::Publisher, false, "DomainParticipant::create_topic", base,
     "Failed to create topic with Uri: <uri>"},
    {Entity::Publisher, true, "DomainParticipant::create_topic_with_profile", base,
     "Failed to create topic with profile:reliable.topic Uri: <uri>"},
    {Entity::Publisher, false, "DomainParticipant::create_publisher", base,
     "Failed to create publisher for Uri: <uri>"},
    {Entity::Publisher, true, "DomainParticipant::create_publisher_with_profile", base,
     "Failed to create publisher with profile:reliable.publisher Uri: <uri>"},
    {Entity::Publisher, false, "Publisher::create_datawriter", "plexDdsPublisher", "Failed to create writer"},
    {Entity::Publisher, true, "Publisher::create_datawriter_with_profile", "plexDdsPublisher",
     "Failed to create writer with profile:reliable.writer"},

    {Entity::Subscriber, false, "DomainParticipant::create_topic", base,
     "Failed to create topic with Uri: <uri>"},
    {Entity::Subscriber, true, "DomainParticipant::create_topic_with_profile", base,
     "Failed to create topic with profile:reliable.topic Uri: <uri>"},
    {Entity::Subscriber, false, "DomainParticipant::create_subscriber", "plexDdsSubscriber",
     "Failed to create subscriber"},
    {Entity::Subscriber, true, "DomainParticipant::create_subscriber_with_profile", "plexDdsSubscriber",
     "Failed to create subscriber with profile:reliable.subscriber"},
    {Entity::Subscriber, false, "Subscriber::create_datareader", "plexDdsSubscriber",
     "Failed to create reader"},
    {Entity::Subscriber, true, "Subscriber::create_datareader_with_profile", "plexDdsSubscriber",
     "Failed to create reader with profile:reliable.reader"},
    {Entity::Subscriber, false, "DataReader::set_listener", "plexDdsSubscriber",
     "Failed to attach a listener to the DDS reader code:1"},

    {Entity::MrvSubscriber, false, "DomainParticipant::create_topic", base,
     "Failed to create topic with Uri: <uri>"},
    {Entity::MrvSubscriber, true, "DomainParticipant::create_topic_with_profile", base,
     "Failed to create topic with profile:reliable.topic Uri: <uri>"},
    {Entity::MrvSubscriber, false, "DomainParticipant::create_subscriber", base,
     "Failed to create subscriber  Uri: <uri>"},
    {Entity::MrvSubscriber, true, "DomainParticipant::create_subscriber_with_profile", base,
     "Failed to create subscriber with profile:reliable.subscriber Uri: <uri>"},
    {Entity::MrvSubscriber, false, "Subscriber::create_datareader", "plexDdsMrvSubscriber",
     "Failed to create data reader for Mrv dds subscriber. Uri:<uri>"},
    {Entity::MrvSubscriber, true, "Subscriber::create_datareader", "plexDdsMrvSubscriber",
     "Failed to create data reader for Mrv dds subscriber. Uri:<uri>"},
};

std::ostream& operator<<(std::ostream& out, const Creation& creation)
{
    static constexpr const char* entities[] = {"Publisher", "Subscriber", "MrvSubscriber"};
    const std::string step = creation.step;
    return out << entities[static_cast<int>(creation.entity)] << (creation.withProfiles ? "ByProfiles_" : "_")
               << step.substr(step.rfind(':') + 1);
}

} // namespace

class CreationFaultsTest : public FaultTest
{
protected:
    void make(Entity entity, const Properties& properties = {})
    {
        switch (entity) {
        case Entity::Publisher:
            publisher({}, properties);
            return;
        case Entity::Subscriber:
            subscriber({}, properties);
            return;
        case Entity::MrvSubscriber:
            delete generated_dds_MrvSubscriber_vexstubif_AltAz(plex, uri, {}, properties);
            return;
        }
    }
};

class EachCreationFaultsTest : public CreationFaultsTest, public testing::WithParamInterface<Creation>
{
protected:
    const Properties properties =
        GetParam().withProfiles
            ? Properties{{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", "reliable"}}
            : Properties{};
};

TEST_P(EachCreationFaultsTest, RefusedStepIsNamedAndNothingIsLeftBehind)
{
    auto holder = plex->getDomainParticipant(uri, properties);
    {
        const Fault fault(GetParam().step);
        expectFailure(GetParam().logger,
                      boost::replace_all_copy(std::string(GetParam().text), "<uri>", uriText()),
                      [&] { make(GetParam().entity, properties); });
    }
    EXPECT_NO_THROW(make(GetParam().entity, properties));
    EXPECT_TRUE(releasedClean(holder));
}

INSTANTIATE_TEST_SUITE_P(Entities, EachCreationFaultsTest, testing::ValuesIn(creations),
                         testing::PrintToStringParamName());

TEST_F(CreationFaultsTest, RefusedTypeIsNamedWithTheCodeAndNothingIsLeftBehind)
{
    auto holder = participant();
    for (const Entity entity : {Entity::Publisher, Entity::Subscriber, Entity::MrvSubscriber}) {
        for (const ReturnCode code : refusals) {
            const Fault fault("DomainParticipant::register_type", code);
            expectFailure(
                base,
                "Failed to register a DDS type. Uri: " + uriText() +
                    "type namegenerated::dds_::vexstubif::AltAz code:" + std::to_string(code),
                [&] { make(entity); }, "errMsg:");
        }
    }
    EXPECT_TRUE(holder->find_type("generated::dds_::vexstubif::AltAz").empty());
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(CreationFaultsTest, RefusedParticipantIsNamedWithItsDomain)
{
    for (const Entity entity : {Entity::Publisher, Entity::Subscriber, Entity::MrvSubscriber}) {
        const Fault fault("DomainParticipantFactory::create_participant");
        expectFailure("plexDdsPlex",
                      "Failed to create participant for domain " + std::to_string(testDomain()),
                      [&] { make(entity); });
    }
}

TEST_F(CreationFaultsTest, ListenerRefusedWithAnyCodeIsNamed)
{
    auto holder = participant();
    for (const ReturnCode code : refusals) {
        const Fault fault("DataReader::set_listener", code);
        expectFailure("plexDdsSubscriber",
                      "Failed to attach a listener to the DDS reader code:" + std::to_string(code),
                      [&] { subscriber(); });
    }
    EXPECT_TRUE(releasedClean(holder));
}

} // namespace plex::test
