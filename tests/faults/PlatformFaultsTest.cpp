// SPDX-License-Identifier: Apache-2.0
#include "../platform/TemporaryDirectory.hpp"
#include "FaultTest.hpp"

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

namespace plex::test
{

class PlatformFaultsTest : public FaultTest
{
protected:
    static constexpr const char* logger = "plexDdsPlex";

    const Properties profiles{{"dds.qos.profile.file", PROFILE_FILE},
                              {"dds.qos.profile.library", "reliable"}};
};

TEST_F(PlatformFaultsTest, ParticipantThatCannotBeMadeIsNamedByItsDomain)
{
    const Fault fault("DomainParticipantFactory::create_participant");
    expectFailure(logger, "Failed to create participant for domain " + std::to_string(testDomain()),
                  [&] { participant(); });
}

TEST_F(PlatformFaultsTest, ParticipantThatCannotBeMadeIsNamedByItsProfileToo)
{
    const Fault fault("DomainParticipantFactory::create_participant");
    expectFailure(logger,
                  "Failed to create participant for domain " + std::to_string(testDomain()) +
                      " with profile:reliable.participant",
                  [&] { plex->getDomainParticipant(uri, profiles); });
}

TEST_F(PlatformFaultsTest, ParticipantIsMadeAfterAFailure)
{
    {
        const Fault fault("DomainParticipantFactory::create_participant");
        EXPECT_THROW(participant(), PlexException);
    }
    EXPECT_NE(participant(), nullptr);
}

TEST_F(PlatformFaultsTest, ParticipantThatCannotBeDeletedIsLoggedOnly)
{
    auto held = participant();
    auto* const stays = held.get();
    const LogCapture log;
    {
        const Fault fault("DomainParticipantFactory::delete_participant", 2);
        held.reset();
    }
    EXPECT_EQ(recordsOf(log), records({error(logger, "Failed to delete participant code:2")}));
    auto* const factory = eprosima::fastdds::dds::DomainParticipantFactory::get_instance();
    EXPECT_EQ(fastdds::code(factory->delete_participant(stays)), fastdds::RETCODE_OK);
}

TEST_F(PlatformFaultsTest, ParticipantThatIsNeverEmptyIsWarnedOfAndThenLogged)
{
    auto held = participant();
    auto* const stays = held.get();
    const LogCapture log;
    {
        const Fault fault("DomainParticipantFactory::delete_participant", RETCODE_PRECONDITION_NOT_MET);
        held.reset();
    }
    EXPECT_EQ(recordsOf(log),
              records({warning(logger, "Participant is deleted with the entities that were left in it"),
                       error(logger, "Failed to delete participant code:4")}));
    eprosima::fastdds::dds::DomainParticipantFactory::get_instance()->delete_participant(stays);
}

TEST_F(PlatformFaultsTest, ProfilesThatDdsRefusesAreNamedByTheirFileAndLoadedLater)
{
    const TemporaryDirectory directory;
    const std::string file =
        directory.write("profiles.xml", R"(<dds><profiles xmlns="http://www.eprosima.com">)"
                                        R"(<participant profile_name="late.participant"/></profiles></dds>)");
    const Properties late{{"dds.qos.profile.file", file}, {"dds.qos.profile.library", "late"}};
    {
        const Fault fault("DomainParticipantFactory::load_XML_profiles_string");
        EXPECT_EQ(thrownText<PlexException>([&] { plex->getDomainParticipant(uri, late); }),
                  "Failed to load QoS profile file " + file + ": not a valid file of QoS profiles");
    }
    EXPECT_NE(plex->getDomainParticipant(uri, late), nullptr);
}

TEST_F(PlatformFaultsTest, LoaderThatDoesNotSayWhyItFailedIsQuotedAsSuch)
{
    const Fault fault("dlerror");
    EXPECT_EQ(thrownText<PlexException>(
                  [] { ovra::plex::Plex::create()->createDataEntity<AltAz>("smoke+signal"); }),
              "No transport for Uri scheme \"smoke+signal\": Cannot load library libplex-smoke.so for symbol "
              "plex_create_transport_smoke: unknown error of the dynamic loader");
}

} // namespace plex::test
