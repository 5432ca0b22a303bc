// SPDX-License-Identifier: Apache-2.0
#include "../../tools/plex/Diagnosis.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace plex::test
{

using namespace ovra::plex::tool;
namespace fastdds = ovra::plex::fastdds;
namespace hostcheck = ovra::plex::hostcheck;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

/// A host and a domain where nothing is wrong.
class Diagnosis : public testing::Test
{
protected:
    Diagnosis()
    {
        machine.needs.usesUdp = true;
        machine.host.now = hostcheck::WallClock::now();
    }

    static fastdds::GuidPrefix prefixOf(std::uint8_t number)
    {
        fastdds::GuidPrefix prefix;
        prefix.value[0] = number;
        return prefix;
    }

    /// A participant on a host, and its writers and readers of topic "dome/position".
    void addParticipant(std::uint8_t number, const std::string& host, const std::string& version)
    {
        fastdds::AnnouncedParticipant participant;
        participant.prefix = prefixOf(number);
        participant.vendor = {0x01, 0x0f};
        participant.properties = {{"fastdds.physical_data.host", host},
                                  {"fastdds.physical_data.process", std::to_string(number)}};
        participant.version = version;
        scene.participants[participant.prefix] = participant;
    }

    fastdds::AnnouncedEndpoint& addEndpoint(std::uint8_t participant, bool writes)
    {
        fastdds::AnnouncedEndpoint endpoint;
        endpoint.guid.guidPrefix = prefixOf(participant);
        endpoint.guid.entityId.value[3] = writes ? 0x03 : 0x04; // without a key
        endpoint.topic = "dome/position";
        endpoint.type = "AltAz";
        scene.endpoints.push_back(endpoint);
        return scene.endpoints.back();
    }

    Machine machine;
    Scene scene;
};

TEST_F(Diagnosis, FindsNothingWhereNothingIsWrong)
{
    EXPECT_THAT(problemsOf(machine), IsEmpty());
    EXPECT_THAT(problemsOf(scene), IsEmpty());
}

TEST_F(Diagnosis, KnowsWhatTheStartUpCheckKnows)
{
    machine.host.canMulticast = false;
    EXPECT_THAT(
        problemsOf(machine),
        ElementsAre(AllOf(Field(&Problem::area, "multicast"), Field(&Problem::text, HasSubstr("multicast")),
                          Field(&Problem::cure, HasSubstr("when the network is there")))));
}

TEST_F(Diagnosis, FindsInterfacesThatDoNotHearThemselves)
{
    machine.deafInterfaces = {"eth0"};
    EXPECT_THAT(problemsOf(machine), ElementsAre(Field(&Problem::text, HasSubstr("sent by eth0"))));
}

TEST_F(Diagnosis, FindsLeftovers)
{
    machine.leftovers = {{"fastdds_1", {"fastdds_1", "fastdds_1_el"}, 500'000, Holder::Nobody},
                         {"fastdds_2", {"fastdds_2"}, 500'000, Holder::Nobody}};
    EXPECT_THAT(
        problemsOf(machine),
        ElementsAre(AllOf(Field(&Problem::text, HasSubstr("left 3 files in /dev/shm, which take 1 MB")),
                          Field(&Problem::cure, "plex doctor --clean"))));
}

TEST_F(Diagnosis, FindsBuffersSmallerThanTheProfileAsksFor)
{
    machine.needs.receiveBufferBytes = 2'000'000;
    EXPECT_THAT(problemsOf(machine), IsEmpty()); // the system does not tell
    machine.buffers.receiveMost = 2'000'000;
    EXPECT_THAT(problemsOf(machine), IsEmpty());
    machine.buffers.receiveMost = 200'000;
    EXPECT_THAT(problemsOf(machine),
                ElementsAre(Field(&Problem::cure, "sysctl -w net.core.rmem_max=2000000")));
}

TEST_F(Diagnosis, FindsPacketsThatAreDropped)
{
    machine.dropped = 3;
    EXPECT_THAT(problemsOf(machine), ElementsAre(Field(&Problem::text, HasSubstr("drops packets, 3 since"))));
}

TEST_F(Diagnosis, TellsImplementationsApart)
{
    addParticipant(1, "a", "3.1.2");
    addParticipant(2, "b", "3.1.2");
    addParticipant(3, "a", "3.1.2");
    addParticipant(4, "a", "");
    addParticipant(5, "a", "");
    scene.participants[prefixOf(5)].vendor = {0x01, 0x10};
    const auto found = implementationsOf(scene);
    std::vector<std::string> names;
    for (const auto& each : found) {
        names.push_back(each.name() + " " + std::to_string(each.participants));
    }
    const std::string unknown = fastdds::tellsVersions ? "Fast DDS 2 1" : "Fast DDS 1";
    EXPECT_THAT(names, ElementsAre("Cyclone DDS 1", unknown, "Fast DDS 3.1.2 3"));
    EXPECT_THAT(found.back().hosts, ElementsAre("a", "b"));
}

TEST_F(Diagnosis, FindsGenerationsThatDoNotShareMemory)
{
    addParticipant(1, "a", "3.1.2");
    addParticipant(2, "b", "2.14.6");
    EXPECT_THAT(problemsOf(scene), IsEmpty()); // two hosts share none anyway
    addParticipant(3, "b", "3.2.0");
    EXPECT_THAT(problemsOf(scene),
                ElementsAre(Field(&Problem::text, HasSubstr("Fast DDS 2 and 3 on b do not share memory"))));
}

TEST_F(Diagnosis, FindsEveryPairThatIsNotMatchedWithItsCure)
{
    using namespace eprosima::fastdds::dds;
    addParticipant(1, "a", "3.1.2");
    addParticipant(2, "b", "3.1.2");
    addEndpoint(1, true).reliability = BEST_EFFORT_RELIABILITY_QOS;
    addEndpoint(2, false).reliability = RELIABLE_RELIABILITY_QOS;
    auto& other = addEndpoint(2, false);
    other.reliability = BEST_EFFORT_RELIABILITY_QOS;
    EXPECT_THAT(
        problemsOf(scene),
        ElementsAre(AllOf(
            Field(&Problem::area, "topic dome/position"),
            Field(&Problem::text, "The writer in a 1 and the reader in b 2 are not matched: reliability: "
                                  "reliable asked for, best-effort offered"),
            Field(&Problem::cure,
                  "reliability: have the writer offer reliable, or the reader ask for best-effort"))));
    other.type = "Temperature";
    other.partitions = {"north"};
    EXPECT_THAT(problemsOf(scene),
                testing::Contains(Field(
                    &Problem::cure, "give both the same type, or one of them another topic; have both in a "
                                    "partition of the same name")));
    other = scene.endpoints.at(1);
    other.guid.entityId.value[3] = 0x07; // with a key
    EXPECT_THAT(problemsOf(scene), testing::Contains(Field(&Problem::cure, HasSubstr("same definition"))));
}

TEST(HostNetwork, DroppedPacketsAreReadByTheirName)
{
    const std::string path = testing::TempDir() + "plex-snmp-" + std::to_string(getpid());
    std::ofstream(path) << "Ip: Forwarding\nIp: 1\nUdp: InDatagrams RcvbufErrors\nUdp: 7 42\n";
    EXPECT_EQ(droppedPackets(path), 42U);
    std::ofstream(path) << "Udp: InDatagrams\nUdp: 7\n";
    EXPECT_EQ(droppedPackets(path), std::nullopt);
    unlink(path.c_str());
    EXPECT_EQ(droppedPackets(path), std::nullopt);
}

TEST(HostNetwork, NoInterfaceHearsNothing)
{
    EXPECT_FALSE(hearsItsMulticast("no-such-one"));
}

} // namespace plex::test
