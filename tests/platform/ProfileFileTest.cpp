// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"
#include "TemporaryDirectory.hpp"

#include <plex/dds/DdsPlex.hpp>
#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <TestTopic.hpp>
#include <filesystem>
#include <memory>
#include <string>

namespace plex::test
{

namespace
{

using ovra::plex::DdsPlex;
using ovra::plex::Plex;

/// XML of a profile library that has a participant of a name.
std::string profiles(const std::string& library, const std::string& participantName,
                     const std::string& more = {})
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><dds><profiles xmlns="http://www.eprosima.com">)"
           R"(<participant profile_name=")" +
           library + R"(.participant"><rtps><name>)" + participantName + "</name></rtps></participant>" +
           more + "</profiles></dds>";
}

} // namespace

class ProfileFile : public testing::Test
{
protected:
    Plex::Properties properties(const std::string& file, const std::string& library) const
    {
        return {{"dds.qos.profile.file", file}, {"dds.qos.profile.library", library}};
    }

    /// The name of the participant that a profile library of a file makes.
    std::string participantName(const std::string& file, const std::string& library) const
    {
        return plex_->getDomainParticipant(testUri(), properties(file, library))
            ->get_qos()
            .name()
            .to_string();
    }

    std::string refusal(const std::string& file) const
    {
        return refusalOf([&] { participantName(file, "any"); });
    }

    const std::shared_ptr<DdsPlex> plex_ = std::make_shared<DdsPlex>(Plex::Properties{});
    const TemporaryDirectory directory_;
    const std::string library_ = testName(); // Fast DDS keeps the names for the process
};

TEST_F(ProfileFile, GivesTheParticipantsProfile)
{
    const auto file = directory_.write("profiles.xml", profiles(library_, "Ann"));
    EXPECT_EQ(participantName(file, library_), "Ann");
}

TEST_F(ProfileFile, ThatIsShippedAnnouncesParticipantsEverySecond)
{
    for (const auto* const library : {"reliable", "latched", "latest-only", "high-rate", "large"}) {
        const auto participant = plex_->getDomainParticipant(testUri(), properties(PROFILE_FILE, library));
        const auto& discovery = participant->get_qos().wire_protocol().builtin.discovery_config;
        EXPECT_EQ(discovery.leaseDuration_announcementperiod, ovra::plex::fastdds::Duration_t(1, 0))
            << library;
    }
}

TEST_F(ProfileFile, GivesEachProfileItsOwnParticipant)
{
    const auto first = directory_.write("first.xml", profiles(library_ + "1", "Ann"));
    const auto second = directory_.write("second.xml", profiles(library_ + "2", "Bob"));
    const auto ann = plex_->getDomainParticipant(testUri(), properties(first, library_ + "1"));
    const auto bob = plex_->getDomainParticipant(testUri(), properties(second, library_ + "2"));
    const auto plain = plex_->getDomainParticipant(testUri(), {});
    EXPECT_NE(ann, bob);
    EXPECT_NE(ann, plain);
    EXPECT_NE(bob, plain);
    EXPECT_EQ(plex_->getDomainParticipant(testUri(), properties(first, library_ + "1")), ann);
}

TEST_F(ProfileFile, GivesAParticipantOfItsOwnNamedProfile)
{
    const auto file = directory_.write("profiles.xml", profiles(library_, "Ann"));
    auto named = properties(file, "another library");
    named["dds.qos.profile.participant"] = library_ + ".participant";
    EXPECT_EQ(plex_->getDomainParticipant(testUri(), named)->get_qos().name().to_string(), "Ann");
}

TEST_F(ProfileFile, IsLoadedOnceHoweverItIsSpelled)
{
    const auto file = directory_.write("profiles.xml", profiles(library_, "Ann"));
    std::filesystem::create_symlink(file, directory_.path() + "/link.xml");
    for (const auto& spelling :
         {file, directory_.path() + "/./profiles.xml", directory_.path() + "/link.xml"}) {
        EXPECT_EQ(participantName(spelling, library_), "Ann");
    }
    const DdsPlex another({});
    EXPECT_EQ(participantName(file, library_), "Ann");
}

TEST_F(ProfileFile, ServesAfterItWasRemoved)
{
    const auto file = directory_.write("profiles.xml", profiles(library_, "Ann"));
    EXPECT_EQ(participantName(file, library_), "Ann");
    std::filesystem::remove(file);
    EXPECT_EQ(participantName(file, library_), "Ann");
}

TEST_F(ProfileFile, ThatCannotBeFoundIsNamed)
{
    EXPECT_EQ(refusal("/no/such/file.xml"),
              "Failed to load QoS profile file /no/such/file.xml: No such file or directory");
    EXPECT_THAT(refusal(""), testing::StartsWith("Failed to load QoS profile file : "));
}

TEST_F(ProfileFile, ThatCannotBeReachedIsNamedWithTheReason)
{
    const auto loop = directory_.path() + "/loop.xml";
    std::filesystem::create_symlink(loop, loop);
    EXPECT_EQ(refusal(loop),
              "Failed to load QoS profile file " + loop + ": Too many levels of symbolic links");
}

TEST_F(ProfileFile, ThatIsNoFileOfProfilesIsNamed)
{
    for (const auto& file :
         {directory_.path(), directory_.write("empty.xml", ""), directory_.write("other.xml", "<html/>"),
          directory_.write("wrong.xml", profiles(library_, "Ann",
                                                 "<data_writer profile_name=\"w\"><no_such_element/>"
                                                 "</data_writer>"))}) {
        EXPECT_EQ(refusal(file),
                  "Failed to load QoS profile file " + file + ": not a valid file of QoS profiles");
    }
}

TEST_F(ProfileFile, ThatIsNoXmlIsNamedWithTheLine)
{
    EXPECT_EQ(refusal(directory_.write("text.xml", "reliable please\n")),
              "Failed to load QoS profile file " + directory_.path() +
                  "/text.xml: not a valid file of QoS profiles (expected < in line 1)");
    EXPECT_THAT(refusal(directory_.write("open.xml", "<dds>\n<profiles>")),
                testing::EndsWith("not a valid file of QoS profiles (unexpected end of data in line 2)"));
}

TEST_F(ProfileFile, ThatRepeatsANameOfAnotherIsRefused)
{
    const auto first = directory_.write("first.xml", profiles(library_, "Ann"));
    const auto second = directory_.write("second.xml", profiles(library_, "Bob"));
    EXPECT_EQ(participantName(first, library_), "Ann");
    EXPECT_EQ(refusal(second), "Failed to load QoS profile file " + second + ": participant " + library_ +
                                   ".participant is already loaded from " + first);
    EXPECT_EQ(participantName(first, library_), "Ann");
}

TEST_F(ProfileFile, ThatRepeatsATransportOfAnotherIsRefused)
{
    const auto transport = [](const std::string& size) {
        return "<transport_descriptors><transport_descriptor><transport_id>" + testName() +
               "</transport_id><type>UDPv4</type><maxMessageSize>" + size +
               "</maxMessageSize></transport_descriptor></transport_descriptors>";
    };
    const auto first = directory_.write("first.xml", profiles(library_ + "1", "Ann", transport("1000")));
    const auto second = directory_.write("second.xml", profiles(library_ + "2", "Bob", transport("2000")));
    EXPECT_EQ(participantName(first, library_ + "1"), "Ann");
    EXPECT_THAT(refusal(second), testing::EndsWith(": transport_descriptor " + testName() +
                                                   " is already loaded from " + first));
}

TEST_F(ProfileFile, ThatIsACopyOfAnotherServesAsWell)
{
    const auto first = directory_.write("first.xml", profiles(library_, "Ann"));
    const auto copy = directory_.write("copy.xml", profiles(library_, "Ann"));
    EXPECT_EQ(participantName(first, library_), "Ann");
    EXPECT_EQ(participantName(copy, library_), "Ann");
}

TEST_F(ProfileFile, IsLoadedOnceItIsMended)
{
    const auto file = directory_.write("profiles.xml", "not yet");
    EXPECT_THAT(refusal(file), testing::HasSubstr("not a valid file of QoS profiles"));
    directory_.write("profiles.xml", profiles(library_, "Ann"));
    EXPECT_EQ(participantName(file, library_), "Ann");
}

TEST_F(ProfileFile, ThatLacksAProfileIsAskedForTheNearest)
{
    const auto file = directory_.write("profiles.xml", profiles(library_, "Ann"));
    EXPECT_EQ(participantName(file, library_), "Ann");
    EXPECT_THAT(refusalOf([&] { participantName(file, library_ + "s"); }),
                testing::StartsWith("Failed to create participant for domain " +
                                    std::to_string(testDomain()) + " with profile:" + library_ +
                                    "s.participant; there is no such profile, the nearest are: " + library_ +
                                    ".participant"));
}

TEST_F(ProfileFile, MayUseTheElementNamesOfAnyGeneration)
{
    int count = 0;
    for (const std::string element : {"heartbeat_period", "heartbeatPeriod"}) {
        const auto library = library_ + std::to_string(++count);
        const auto writer = "<data_writer profile_name=\"" + library + ".writer\"><times><" + element +
                            "><sec>1</sec></" + element + "></times></data_writer>";
        const auto file = directory_.write(element + ".xml", profiles(library, "Ann", writer));
        EXPECT_EQ(participantName(file, library), "Ann");
    }
}

} // namespace plex::test
