// SPDX-License-Identifier: Apache-2.0
// Generated types beside those that the peer's compiler makes of the same definition: the peer reads what we
// publish and sends it back. Both write the same bytes.
#include "Kinds.hpp"

#include "PeerEnvironment.hpp"
#include "Process.hpp"
#include "TestTopic.hpp"
#include "Topics.hpp"
#include "WaitFor.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <sstream>

namespace plex::test
{

namespace
{

using namespace std::chrono_literals;

/// What the peer said of a value.
struct Said {
    std::string received;
    std::string read;
    std::string sent;
};

/// A payload in hexadecimal digits without its options, in which the peer counts the bytes that fill it up.
std::string withoutOptions(std::string payload)
{
    return payload.erase(4, 4);
}

/// Reads numbers of a little-endian payload in hexadecimal digits.
class Digits
{
public:
    explicit Digits(std::string text) : text_(std::move(text)) {}

    bool isAtEnd() const { return at_ >= text_.size(); }

    std::uint32_t number()
    {
        at_ = (at_ + 7) / 8 * 8;
        return __builtin_bswap32(static_cast<std::uint32_t>(std::stoul(bytes(4), nullptr, 16)));
    }

    /// The next number without reading it.
    std::uint32_t look() const { return Digits(*this).number(); }

    std::string bytes(std::size_t count)
    {
        at_ += 2 * count;
        return text_.substr(at_ - 2 * count, 2 * count);
    }

private:
    std::string text_;
    std::size_t at_ = 0;
};

/// The members of a mutable value in version 2 (XTypes 1.3, 7.4.3.4.2), whichever way their headers tell how
/// long they are.
std::map<std::uint32_t, std::string> membersOf(const std::string& payload)
{
    Digits in(payload.substr(8));
    in.number(); // its size
    std::map<std::uint32_t, std::string> result;
    while (!in.isAtEnd()) {
        const std::uint32_t header = in.number();
        const std::uint32_t code = header >> 28U & 7U;
        constexpr std::array elementSizes{1U, 4U, 8U};
        const std::uint32_t length = code < 4    ? 1U << code
                                     : code == 4 ? in.number()
                                                 : 4 + in.look() * elementSizes.at(code - 5);
        result[header & 0x0FFFFFFFU] = in.bytes(length);
    }
    return result;
}

class KindsTest : public testing::Test
{
protected:
    void SetUp() override { loadLoopback(*plex_, uri("")); }

    ovra::plex::Uri uri(const std::string& suffix) const
    {
        return ovra::plex::Uri("dds+ps://" + std::to_string(testDomain()) + "/" + topic_ + suffix);
    }

    /// Publishes two values of a type and hears what the peer makes of them.
    template <class T>
    std::vector<Said> exchange(const std::string& type, const std::string& representation)
    {
        auto properties = loopbackProperties(representation);
        properties["dds.module.path"] = KINDS_MODULE_DIRECTORY;
        texts_.clear();
        topic_ = "kinds/" + type + "_" + representation + "/p" + std::to_string(getpid());
        const auto subscriber = plex_->createSubscriber<T>(uri("_back"), {}, properties);
        const auto publisher = plex_->createPublisher<T>(uri(""), {}, properties);
        Process echo(
            {PEER_ECHO, std::to_string(testDomain()), topic_, type, representation, std::to_string(2)},
            peerEnvironment());
        for (const bool full : {true, false}) {
            const auto value = publisher->createDataEntity();
            (full ? fill<T> : fillSparsely<T>)(*value);
            texts_.push_back(textOf(*value));
            publisher->publish(*value, 0ms);
        }
        const auto said = parse(echo.finish());
        expectArrival(*subscriber);
        return said;
    }

    static void expectSameBytes(const std::vector<Said>& said)
    {
        for (const Said& one : said) {
            EXPECT_EQ(withoutOptions(one.received), withoutOptions(one.sent));
        }
    }

private:
    template <class Subscriber>
    void expectArrival(Subscriber& subscriber)
    {
        std::vector<std::string> arrived;
        waitFor([&] {
            for (const auto& value : subscriber.read(0)) {
                arrived.push_back(textOf(*value));
            }
            return arrived.size() >= texts_.size();
        });
        EXPECT_THAT(arrived, testing::UnorderedElementsAreArray(texts_)); // each is of an instance of its own
    }

    static std::vector<Said> parse(const std::string& output)
    {
        std::vector<Said> result;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            const auto blank = line.find(' ');
            const std::string rest = line.substr(blank + 1);
            if (line.starts_with("received")) {
                result.push_back({rest, {}, {}});
            } else if (line.starts_with("read")) {
                result.back().read = rest;
            } else {
                result.back().sent = rest;
            }
        }
        return result;
    }

    /// Letters, digits, underscores and slashes only: the peer takes no others.
    std::string topic_ = "kinds";
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ =
        std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
    std::vector<std::string> texts_;
};

TEST_F(KindsTest, PlainTypesArriveInBothVersionsAndAsTheSameBytes)
{
    for (const std::string representation : {"xcdr1", "xcdr2"}) {
        const auto said = exchange<kinds::Plain>("Plain", representation);
        ASSERT_EQ(said.size(), 2U);
        EXPECT_EQ(said[0].read, R"({"dome",true,120,65535,-1,-0.5,2,129,{1,2,3,4,5,6},{1.5,-2.5},)"
                                R"({"a","","12345678"},{9,10.5},{2:200}})");
        EXPECT_EQ(said[1].read, R"({"0123456789abcdef",false,0,0,0,0,1,0,{0,0,0,0,0,0},{},{},{0,0},)"
                                R"({4294967293:{1,2}}})");
        expectSameBytes(said);
    }
}

TEST_F(KindsTest, FinalTypesArriveAsTheSameBytes)
{
    const auto said = exchange<kinds::Frozen>("Frozen", "xcdr2");
    ASSERT_EQ(said.size(), 2U);
    EXPECT_EQ(
        said[0].read,
        R"({"dome",7,{1.5,-2.5},{{dlh:81,2},{dlh:83,4},{dlh:85,6}},{dlh:8-1,-2},)"
        R"({pl:22,lc:5,m:20,{"to do"},lc:1,m:10,{-3}},{dlh:122:4612248968380809216},)"
        R"({4294967293:{8,9.5}},0.5,"12345678",{9,10.5},{1,-2,3},-11})"); // the peer knows 2.25 by its bits
    EXPECT_EQ(said[1].read, R"({"a longer name",0,{},{},{dlh:80,0},{pl:18,lc:5,m:20,{""},lc:1,m:10,{0}},)"
                            R"({dlh:130:"wind"},{0:"other"},NULL,NULL,{1,2},NULL,3})");
    expectSameBytes(said);
}

TEST_F(KindsTest, AppendableTypesArriveAsTheSameBytes)
{
    const auto said = exchange<kinds::Growing>("Growing", "xcdr2");
    ASSERT_EQ(said.size(), 2U);
    EXPECT_EQ(said[0].read, R"({dlh:216"dome",7,{1.5,-2.5},{{dlh:81,2},{dlh:83,4},{dlh:85,6}},{dlh:8-1,-2},)"
                            R"({pl:22,lc:5,m:20,{"to do"},lc:1,m:10,{-3}},{dlh:122:4612248968380809216},)"
                            R"({4294967293:{8,9.5}},0.5,"12345678",{9,10.5},{1,-2,3},-11})");
    EXPECT_EQ(said[1].read,
              R"({dlh:128"a longer name",0,{},{},{dlh:80,0},{pl:18,lc:5,m:20,{""},lc:1,m:10,{0}},)"
              R"({dlh:130:"wind"},{0:"other"},NULL,NULL,{1,2},NULL,3})");
    expectSameBytes(said);
}

/// The peer says of key members that they must be understood, and the length of members that begin with it
/// once more.
TEST_F(KindsTest, MutableTypesArriveWithTheSameMembers)
{
    const auto said = exchange<kinds::Loose>("Loose", "xcdr2");
    ASSERT_EQ(said.size(), 2U);
    for (const Said& one : said) {
        const auto members = membersOf(one.received);
        EXPECT_EQ(members, membersOf(one.sent));
        EXPECT_TRUE(members.contains(0));
        EXPECT_TRUE(members.contains(12));
    }
    EXPECT_EQ(membersOf(said[0].received).size(), 13U);
    EXPECT_EQ(membersOf(said[1].received).size(), 10U); // three of the optional ones are absent
}

} // namespace

} // namespace plex::test
