// SPDX-License-Identifier: Apache-2.0
#include "../../platform/plex-dds/src/StartupCheck.hpp"

#include "Refusal.hpp"
#include "TemporaryDirectory.hpp"

#include <plex/dds/DdsPlex.hpp>
#include <plex/fastdds/Transports.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <LogCapture.hpp>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace plex::test
{

namespace hostcheck = ovra::plex::hostcheck;
namespace startup = ovra::plex::startup;
using testing::ElementsAre;
using testing::IsEmpty;

class StartupCheck : public testing::Test
{
protected:
    /// A participant of domain 3 with UDP and shared memory on a host where nothing is wrong.
    StartupCheck()
    {
        needs.usesUdp = true;
        needs.sharedMemoryBytes = 524288;
        needs.mostPortsTried = 101;
        setDomain(3);
        host.freeSharedMemory = 1 << 20;
        host.now = hostcheck::WallClock::now();
    }

    void setDomain(std::uint32_t domain)
    {
        needs.domain = domain;
        needs.firstUnicastPort = 7410 + 250 * domain;
    }

    /// Has participants on the host, with two ports each.
    void occupy(int participants)
    {
        host.udpPorts.clear();
        for (std::uint32_t port = 0; port < 2U * static_cast<unsigned>(participants); ++port) {
            host.udpPorts.emplace(static_cast<std::uint16_t>(needs.firstUnicastPort + port), host.user);
        }
    }

    std::vector<std::string> texts() const
    {
        std::vector<std::string> all;
        for (const auto& finding : hostcheck::findings(needs, host)) {
            all.push_back(finding.text());
        }
        return all;
    }

    hostcheck::Needs needs;
    hostcheck::Host host;
};

TEST_F(StartupCheck, FindsNothingWhereNothingIsWrong)
{
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(StartupCheck, FindsThatNoInterfaceCanMulticast)
{
    host.canMulticast = false;
    EXPECT_THAT(texts(), ElementsAre("No network interface is up that can multicast, so programs on other "
                                     "hosts are not found; start this one when the network is there"));
    needs.usesUdp = false;
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(StartupCheck, FindsThatSharedMemoryIsMissing)
{
    host.hasSharedMemory = false;
    host.mayWriteSharedMemory = false;
    host.freeSharedMemory = 0;
    EXPECT_THAT(texts(), ElementsAre("There is no /dev/shm, so values go to other processes of this host by "
                                     "UDP only; mount a tmpfs there"));
    needs.sharedMemoryBytes = 0;
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(StartupCheck, FindsThatSharedMemoryMayNotBeWritten)
{
    host.mayWriteSharedMemory = false;
    EXPECT_THAT(texts(), ElementsAre("This user may not write to /dev/shm, so values go to other processes "
                                     "of this host by UDP only; allow it (mode 1777)"));
}

TEST_F(StartupCheck, FindsThatSharedMemoryIsFull)
{
    host.freeSharedMemory = 524288;
    EXPECT_THAT(texts(), IsEmpty());
    host.freeSharedMemory = 524287;
    EXPECT_THAT(
        texts(),
        ElementsAre("/dev/shm has 524287 bytes left of the 524288 that a participant needs, so values "
                    "go to other processes of this host by UDP only; enlarge it, or remove what "
                    "killed programs have left there"));
}

TEST_F(StartupCheck, FindsThatRootAndAnotherUserDoNotShareMemory)
{
    const std::vector<std::string> found{
        "Programs of root and of user 1001 are in domain 3 on this host: what root publishes, the other does "
        "not "
        "hear, as it may not open root's shared memory; run them as one user, or without shared memory"};
    host.sharedMemoryPorts = {8161, 8163};
    for (const auto& [self, other] : std::vector<std::pair<uid_t, uid_t>>{{0, 1001}, {1001, 0}}) {
        host.user = self;
        host.udpPorts = {{8161, other}, {8163, other}};
        EXPECT_EQ(texts(), found);
    }
    host.user = 1002; // ordinary users go by UDP
    host.udpPorts = {{8161, 1001}, {8163, 1001}};
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(StartupCheck, FindsThatAllPortsThatAreTriedAreTaken)
{
    occupy(100);
    EXPECT_THAT(texts(), IsEmpty());
    occupy(101);
    EXPECT_THAT(texts(), ElementsAre("All 101 ports that participants of domain 3 have on a host are taken, "
                                     "so a further one may hear nothing; use fewer processes, or another "
                                     "domain for some"));
}

TEST_F(StartupCheck, CountsNoPortsOfTheNextDomain)
{
    needs.mostPortsTried = 1000;
    occupy(119);
    EXPECT_THAT(texts(), IsEmpty());
    occupy(120);
    EXPECT_THAT(texts(), ElementsAre(testing::StartsWith("All 120 ports that participants of domain 3 ")));
}

TEST_F(StartupCheck, CountsNoPortsBeyondTheHighest)
{
    setDomain(232);
    occupy(62);
    EXPECT_THAT(texts(), IsEmpty());
    occupy(63);
    EXPECT_THAT(texts(), ElementsAre(testing::StartsWith("All 63 ports that participants of domain 232 ")));
}

TEST_F(StartupCheck, FindsAClockThatWasNeverSet)
{
    host.now = hostcheck::WallClock::time_point(); // of 1970
    EXPECT_THAT(texts(), ElementsAre("The clock of this host is in the year 1970, so subscribers elsewhere "
                                     "may drop its values as too old; set it, by NTP or PTP"));
}

TEST_F(StartupCheck, FindsSeveralThingsAtOnce)
{
    host.canMulticast = false;
    host.hasSharedMemory = false;
    host.now = hostcheck::WallClock::time_point();
    occupy(101);
    EXPECT_THAT(texts(), testing::SizeIs(4));
}

TEST_F(StartupCheck, RecordsACauseOnceAProcess)
{
    const LogCapture log;
    startup::record({{testName(), "first", "mend it"}});
    startup::record({{testName(), "second", "mend it"}, {testName() + " other", "third", "mend it"}});
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, "first; mend it"), 1);
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, "second; mend it"), 0);
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, "third; mend it"), 1);
}

TEST_F(StartupCheck, KnowsTheNeedsOfAParticipant)
{
    const auto found = hostcheck::needsOf(3, eprosima::fastdds::dds::DomainParticipantQos());
    EXPECT_EQ(found.domain, 3U);
    EXPECT_TRUE(found.usesUdp);
    EXPECT_EQ(found.sharedMemoryBytes, 512U * 1024U);
    EXPECT_EQ(found.firstUnicastPort, 8160U);
    EXPECT_EQ(found.portsApart, 2U);
    EXPECT_EQ(found.mostPortsTried, 101U);
}

TEST_F(StartupCheck, TellsTransportsApart)
{
    namespace rtps = eprosima::fastdds::rtps;
    const auto kindOf = [](const rtps::TransportDescriptorInterface& descriptor) {
        return ovra::plex::fastdds::transportOf(descriptor).kind;
    };
    EXPECT_EQ(kindOf(rtps::UDPv4TransportDescriptor()), "UDPv4");
    EXPECT_EQ(kindOf(rtps::UDPv6TransportDescriptor()), "UDPv6");
    EXPECT_EQ(kindOf(rtps::TCPv4TransportDescriptor()), "TCP");
    EXPECT_EQ(kindOf(rtps::SharedMemTransportDescriptor()), "shared memory");
}

TEST_F(StartupCheck, KnowsTheLargestReceiveBufferThatIsAskedFor)
{
    eprosima::fastdds::dds::DomainParticipantQos qos;
    EXPECT_EQ(hostcheck::needsOf(3, qos).receiveBufferBytes, 0U);
    qos.transport().listen_socket_buffer_size = 1000;
    EXPECT_EQ(hostcheck::needsOf(3, qos).receiveBufferBytes, 1000U);
    const auto udp = std::make_shared<eprosima::fastdds::rtps::UDPv4TransportDescriptor>();
    udp->receiveBufferSize = 2000;
    qos.transport().user_transports.push_back(udp);
    EXPECT_EQ(hostcheck::needsOf(3, qos).receiveBufferBytes, 2000U);
}

TEST_F(StartupCheck, KnowsTheInterfacesOfTheHost)
{
    const auto interfaces = hostcheck::interfacesOfHost();
    ASSERT_TRUE(interfaces);
    EXPECT_THAT(*interfaces, testing::Contains(testing::Field(&hostcheck::Interface::addresses,
                                                              testing::Contains("127.0.0.1"))));
}

TEST_F(StartupCheck, LeavesTransportsThatTheEnvironmentChoosesAside)
{
    setenv("FASTDDS_BUILTIN_TRANSPORTS", "UDPv4", 1); // NOLINT(concurrency-mt-unsafe): alone
    const auto found = hostcheck::needsOf(3, eprosima::fastdds::dds::DomainParticipantQos());
    unsetenv("FASTDDS_BUILTIN_TRANSPORTS"); // NOLINT(concurrency-mt-unsafe): alone
    EXPECT_FALSE(found.usesUdp);
    EXPECT_EQ(found.sharedMemoryBytes, 0U);
}

TEST_F(StartupCheck, LooksAtTheDirectoryOfSharedMemory)
{
    const TemporaryDirectory directory;
    const auto here = hostcheck::lookAtHost(needs, directory.path());
    EXPECT_TRUE(here.hasSharedMemory);
    EXPECT_TRUE(here.mayWriteSharedMemory);
    struct statvfs room{};
    ASSERT_EQ(statvfs(directory.path().c_str(), &room), 0);
    EXPECT_GT(here.freeSharedMemory, std::uint64_t{room.f_bavail} * room.f_frsize / 2);
    EXPECT_THAT(here.sharedMemoryPorts, IsEmpty());
    const auto missing = hostcheck::lookAtHost(needs, directory.path() + "/none");
    EXPECT_FALSE(missing.hasSharedMemory);
    EXPECT_FALSE(missing.mayWriteSharedMemory);
}

TEST_F(StartupCheck, ReadsTheTableOfUdpSockets)
{
    const TemporaryDirectory directory;
    const auto table = directory.write(
        "udp",
        "   sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   17: 00000000:1CE8 00000000:0000 07 00000000:00000000 00:00000000 00000000     0        0 7\n"
        " 3271: 0100007F:E35F 00000000:0000 07 00000000:00000000 00:00000000 00000000  1001        0 8\n"
        "no socket\n");
    const auto here = hostcheck::lookAtHost(needs, directory.path(), table);
    EXPECT_THAT(here.udpPorts, ElementsAre(testing::Pair(7400, 0), testing::Pair(58207, 1001)));
    EXPECT_THAT(hostcheck::lookAtHost(needs, directory.path(), "/no/such/table").udpPorts, IsEmpty());
}

TEST_F(StartupCheck, SeesWhichPortsOfOthersGoWithSharedMemory)
{
    const TemporaryDirectory directory;
    const auto socketOf = [](const std::string& port, uid_t owner) {
        return "  1: 00000000:" + port + " 00000000:0000 07 00000000:00000000 00:00000000 00000000 " +
               std::to_string(owner) + " 0 7\n";
    };
    const auto another = geteuid() + 1;
    const auto table = directory.write("udp", socketOf("1FE1", another) + socketOf("1FE3", another) +
                                                  socketOf("1FE5", geteuid()) + socketOf("20DB", another));
    for (const auto* const port : {"8161", "8165", "8411"}) { // not 8163; 8411 is of the next domain
        directory.write(ovra::plex::fastdds::sharedMemoryPrefix + ("port" + std::string(port)), "");
    }
    EXPECT_THAT(hostcheck::lookAtHost(needs, directory.path(), table).sharedMemoryPorts, ElementsAre(8161));
}

TEST_F(StartupCheck, SeesASocketOfThisHost)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    socklen_t length = sizeof address;
    ASSERT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length), 0);
    const auto here = hostcheck::lookAtHost(needs);
    close(socket);
    EXPECT_EQ(here.user, geteuid());
    ASSERT_TRUE(here.udpPorts.contains(ntohs(address.sin_port)));
    EXPECT_EQ(here.udpPorts.at(ntohs(address.sin_port)), geteuid());
}

TEST_F(StartupCheck, PropertySaysWhetherItIsMade)
{
    // A participant that tries one port only, which another one has.
    const TemporaryDirectory directory;
    const auto library = testName();
    const auto file = directory.write(
        "profiles.xml",
        R"(<dds><profiles xmlns="http://www.eprosima.com"><participant profile_name=")" + library +
            R"(.participant"><rtps><builtin><mutation_tries>0</mutation_tries></builtin></rtps>)"
            "</participant></profiles></dds>");
    using ovra::plex::DdsPlex;
    const ovra::plex::Uri uri("dds+ps://170/topic");
    const auto make = [&](const std::string& check) {
        DdsPlex({}).getDomainParticipant(uri, {{"dds.startup.check", check},
                                               {"dds.qos.profile.file", file},
                                               {"dds.qos.profile.library", library}});
    };
    DdsPlex plex({});
    const auto other = plex.getDomainParticipant(uri, {{"dds.startup.check", "off"}});

    const LogCapture log;
    const std::string text =
        "All 1 ports that participants of domain 170 have on a host are taken, so a further "
        "one may hear nothing; use fewer processes, or another domain for some";
    make("off");
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, text), 0);
    make("on");
    make("on");
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, text), 1);
    EXPECT_EQ(refusalOf([&] { make("no"); }),
              "Property dds.startup.check is neither \"on\" nor \"off\": \"no\"");
}

} // namespace plex::test
