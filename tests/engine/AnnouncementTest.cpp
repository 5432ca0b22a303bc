// SPDX-License-Identifier: Apache-2.0
// What comes from the network as announcements: of a participant that is nothing but its datagrams, and
// garbage.
#include "StatusTest.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <random>
#include <sys/socket.h>
#include <system_error>
#include <tests/platform/TemporaryDirectory.hpp>
#include <unistd.h>

namespace plex::test
{

namespace
{

using namespace std::string_literals;

/// A message in the making, little-endian.
class Bytes
{
public:
    Bytes& octets(const std::string& octets)
    {
        bytes_ += octets;
        return *this;
    }

    Bytes& number(std::size_t number, unsigned size = 4)
    {
        for (unsigned i = 0; i < size; ++i) {
            bytes_ += static_cast<char>(number >> 8 * i & 0xffU);
        }
        return *this;
    }

    /// A string as CDR has it, filled up to a multiple of four.
    Bytes& text(const std::string& text)
    {
        return number(text.size() + 1).octets(text + std::string(4 - text.size() % 4, '\0'));
    }

    /// A parameter of a list (RTPS 2.5, 9.4.2.11).
    Bytes& parameter(std::size_t id, const Bytes& value)
    {
        return number(id, 2).number(value.bytes_.size(), 2).octets(value.bytes_);
    }

    const std::string& str() const { return bytes_; }

private:
    std::string bytes_;
};

/// A datagram socket of the loopback interface.
class Socket
{
public:
    Socket()
    {
        sockaddr_in own = address(0);
        socklen_t size = sizeof own;
        check(socket_ >= 0 && bind(socket_, general(own), size) == 0 &&
              getsockname(socket_, general(own), &size) == 0);
        port_ = ntohs(own.sin_port);
    }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() { close(socket_); }

    std::uint16_t port() const { return port_; }

    void send(const std::string& bytes, std::uint16_t port) const
    {
        sockaddr_in to = address(port);
        check(sendto(socket_, bytes.data(), bytes.size(), 0, general(to), sizeof to) >= 0);
    }

private:
    static sockaddr_in address(std::uint16_t port)
    {
        sockaddr_in result{};
        result.sin_family = AF_INET;
        result.sin_port = htons(port);
        result.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return result;
    }

    static sockaddr* general(sockaddr_in& address) { return reinterpret_cast<sockaddr*>(&address); }

    static void check(bool isGood)
    {
        if (!isGood) {
            throw std::system_error(errno, std::generic_category(), "socket");
        }
    }

    const int socket_ = socket(AF_INET, SOCK_DGRAM, 0);
    std::uint16_t port_ = 0;
};

/// The messages of a participant that is not there (RTPS 2.5, 8.3, 8.5 and 9.6).
class Stranger
{
public:
    /// @param port of the one that is not there.
    Stranger(std::size_t number, std::uint16_t port)
        : prefix_(Bytes().octets("\x01\x63stranger").number(number, 2).str())
        , port_(port)
    {
    }

    std::string participant() const
    {
        Bytes list;
        list.parameter(0x0015, Bytes().number(0x0302))        // version of the protocol
            .parameter(0x0016, Bytes().number(0x6301))        // vendor
            .parameter(0x0050, Bytes().octets(prefix_ + own)) // GUID
            .parameter(0x0032, locator())                     // of announcements
            .parameter(0x0031, locator())                     // of values
            .parameter(0x0002, Bytes().number(100).number(0)) // lease
            .parameter(0x0058, Bytes().number(0x3f))          // announces and hears of endpoints
            .parameter(0x0062, Bytes().text("a stranger"));   // name
        return message({"\0\1\0\xc7", 4}, {"\0\1\0\xc2", 4}, 1, list);
    }

    /// Announces a best-effort writer of positions. @param number of the announcement, from 1 on.
    std::string writer(const std::string& topic, std::size_t number) const
    {
        return writer(topic, number, Bytes().parameter(0x001a, Bytes().number(1).number(0).number(0)));
    }

    /// And one that is reliable, but takes its time: which keeps Fast DDS from nothing.
    std::string slowWriter(const std::string& topic, std::size_t number) const
    {
        return writer(topic, number,
                      Bytes()
                          .parameter(0x001a, Bytes().number(2).number(0).number(0)) // reliability
                          .parameter(0x0027, Bytes().number(3).number(0)));         // latency budget
    }

private:
    std::string writer(const std::string& topic, std::size_t number, const Bytes& policies) const
    {
        Bytes list;
        list.parameter(0x005a, Bytes().octets(prefix_ + "\0\0"s).number(number, 1).octets("\3"))
            .parameter(0x0005, Bytes().text(topic))
            .parameter(0x0007, Bytes().text("generated::dds_::vexstubif::AltAz"))
            .octets(policies.str());
        return message({"\0\0\3\xc7", 4}, {"\0\0\3\xc2", 4}, number, list);
    }

    static inline const std::string own{"\0\0\1\xc1", 4};

    Bytes locator() const
    {
        return Bytes().number(1).number(port_).octets(std::string(12, '\0') + "\x7f\0\0\1"s);
    }

    /// A list of parameters in a submessage of its own.
    std::string message(const std::string& reader, const std::string& writer, std::size_t number,
                        const Bytes& list) const
    {
        const std::string payload = "\0\3\0\0"s + list.str() + "\1\0\0\0"s;
        return Bytes()
            .octets("RTPS\2\3\1\x63" + prefix_)
            .octets("\x15\5")
            .number(20 + payload.size(), 2)
            .number(0, 2)
            .number(16, 2)
            .octets(reader + writer)
            .number(0)
            .number(number)
            .octets(payload)
            .str();
    }

    const std::string prefix_;
    const std::uint16_t port_;
};

class AnnouncementTest : public StatusTest
{
protected:
    void SetUp() override
    {
        const auto file =
            directory_.write("listening.xml", R"(<dds><profiles xmlns="http://www.eprosima.com">
            <transport_descriptors><transport_descriptor><transport_id>)" +
                                                  profile_ + R"(</transport_id><type>UDPv4</type>
              <interfaceWhiteList><address>127.0.0.1</address></interfaceWhiteList>
            </transport_descriptor></transport_descriptors>
            <participant profile_name=")" + profile_ +
                                                  R"("><rtps>
              <userTransports><transport_id>)" + profile_ +
                                                  R"(</transport_id></userTransports>
              <useBuiltinTransports>false</useBuiltinTransports>
              <builtin><metatrafficUnicastLocatorList><locator><udpv4><address>127.0.0.1</address>
                <port>)" + std::to_string(port_) +
                                                  R"(</port></udpv4></locator></metatrafficUnicastLocatorList>
              </builtin></rtps></participant></profiles></dds>)");
        plex->getDomainParticipant(uri, {{"dds.qos.profile.file", file}});
    }

    void say(const std::string& message) const { socket_.send(message, port_); }

    Properties listening() const
    {
        return {{"dds.qos.profile.library", "reliable"},
                {"dds.qos.profile.file", PROFILE_FILE},
                {"dds.qos.profile.participant", profile_}};
    }

    const Socket socket_;
    const std::uint16_t port_ = Socket().port(); ///< a free one
    const std::string profile_ =
        "listening." + std::to_string(port_); ///< as profiles last as long as the process
    const TemporaryDirectory directory_;
};

} // namespace

TEST_F(AnnouncementTest, OfAStrangerIsTold)
{
    const auto subscriber = EntityTest::subscriber({}, listening());
    const Stranger stranger(1, socket_.port());
    say(stranger.participant());
    say(stranger.writer(ovra::plex::DdsUriHelper::topic(uri, true), 1));
    const auto status = statusOnce(*subscriber, refusesOne);
    EXPECT_EQ(status.refused.at(0).vendor, "1.99");
    EXPECT_EQ(status.refused.at(0).participant, "a stranger");
    EXPECT_EQ(status.refused.at(0).host, "");
    EXPECT_EQ(status.refused.at(0).distance, ps::Distance::Unknown);
    EXPECT_THAT(inWords(status.refused.at(0).refusals),
                ElementsAre("reliability: reliable asked for, best-effort offered"));
}

TEST_F(AnnouncementTest, OfAStrangerThatMayRefuseAMatchIsAWarning)
{
    const LogCapture log;
    const auto subscriber = EntityTest::subscriber({}, listening());
    const auto topic = ovra::plex::DdsUriHelper::topic(uri, true);
    const Stranger stranger(1, socket_.port());
    say(stranger.participant());
    say(stranger.slowWriter(topic, 1));
    const auto status = statusOnce(*subscriber, matchesOne);
    EXPECT_THAT(status.refused, IsEmpty());
    const std::string reason = "latency budget: 0 s asked for, 3 s offered";
    EXPECT_THAT(inWords(status.matched.at(0).refusals), ElementsAre(reason));
    const auto recorded = [&](const std::string& text) {
        return log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL,
                         "The subscriber of topic " + topic + text + reason);
    };
    const auto name = "the publisher " + status.matched.at(0).guid + " of 1.99";
    EXPECT_TRUE(waitFor(
        [&] { return recorded(" is matched with " + name + ", whose DDS (1.99) may refuse it: ") == 1; }));
    EXPECT_EQ(recorded(" and " + name + " do not match: "), 0);
}

TEST_F(AnnouncementTest, ThatIsGarbageChangesNothing)
{
    const auto subscriber = EntityTest::subscriber({}, listening());
    const auto publisher = EntityTest::publisher({}, listening());
    const auto topic = ovra::plex::DdsUriHelper::topic(uri, true);
    const Stranger stranger(1, socket_.port());
    say(stranger.participant());
    say(stranger.writer(topic, 1));
    const auto before = statusOnce(*subscriber, refusesOne);

    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same garbage each time
    std::size_t number = 2;
    const auto sayCut = [&](std::size_t step) {
        const auto whole = Stranger(number, socket_.port()).participant();
        for (std::size_t size = 0; size < whole.size(); size += step) {
            say(whole.substr(0, size));
        }
        const auto writer = Stranger(number, socket_.port()).writer(topic, 1);
        for (std::size_t size = 20; size < writer.size(); size += step) {
            const Stranger known(++number, socket_.port());
            say(known.participant());
            say(known.writer(topic, 1).substr(0, size));
        }
    };
    sayCut(3);
    for (int i = 0; i < 500; ++i) {
        std::string noise = stranger.participant().substr(0, 20);
        for (std::size_t size = random() % 300; size > 0; --size) {
            noise += static_cast<char>(random());
        }
        say(noise);
    }

    auto status = statusOnce(*subscriber, [&](const auto& now) {
        say(stranger.writer(topic, 2)); // until it is heard: so much garbage overflows the socket
        return now.refused.size() >= 2;
    });
    EXPECT_THAT(status.refused, SizeIs(2));
    EXPECT_THAT(status.matched, SizeIs(1));
    EXPECT_THAT(status.former, IsEmpty());
    EXPECT_EQ(status.refused.at(0).guid, before.refused.at(0).guid);
    EXPECT_EQ(inWords(status.refused.at(0).refusals), inWords(before.refused.at(0).refusals));
    publishPositions(*publisher, 1);
    EXPECT_THAT(subscriber->read(0), SizeIs(1));
}

} // namespace plex::test
