// SPDX-License-Identifier: Apache-2.0
#include "PeerEnvironment.hpp"
#include "Process.hpp"
#include "TestTopic.hpp"
#include "Topics.hpp"
#include "WaitFor.hpp"

#include <plex/dds/DdsUriHelper.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <iomanip>
#include <iterator>
#include <sstream>

namespace plex::test
{

namespace
{

using namespace std::chrono_literals;
using ovra::plex::Uri;

/// Numbers that are easily spoiled.
constexpr std::array<std::uint64_t, 10> numbers{
    0x4046c00000000000, // 45.5
    0x7ff80000deadbeef, // a quiet NaN with a payload
    0xfff0000000000001, // a signalling NaN
    0x7ff0000000000000, // infinity
    0xfff0000000000000, // and below zero
    0x8000000000000000, // -0.0
    0x0000000000000000, // 0.0
    0x0000000000000001, // the smallest denormal
    0x7fefffffffffffff, // the largest finite
    0x0123456789abcdef, // bytes that all differ
};

/// The values of a topic: every number in every member.
template <class Topic>
std::vector<Bits<Topic::numbers>> values()
{
    std::vector<Bits<Topic::numbers>> result;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        auto& value = result.emplace_back();
        for (std::size_t member = 0; member < value.size(); ++member) {
            value[member] = numbers[(i + 3 * member) % numbers.size()];
        }
    }
    return result;
}

/// Publishers and subscribers of ours and of a peer, on both sides reliable and transient-local.
class PeerTest : public testing::Test
{
protected:
    void SetUp() override { loadLoopback(*plex_, uri_); }

    template <class Topic>
    auto publisher(const std::string& representation)
    {
        return create(Topic::createPublisher, plex_, uri_, representation);
    }

    template <class Topic>
    auto subscriber(const std::string& representation)
    {
        return create(Topic::createSubscriber, plex_, uri_, representation);
    }

    /// The peer's process, which needs no more than the loopback interface.
    Process peer(const std::string& verb, const std::string& extensibility, const std::string& type,
                 const std::string& representation, const std::vector<std::string>& rest) const
    {
        std::vector<std::string> arguments{PEER + extensibility,
                                           verb,
                                           std::to_string(testDomain()),
                                           ovra::plex::DdsUriHelper::topic(uri_, true),
                                           type,
                                           representation};
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return Process(arguments, peerEnvironment());
    }

    /// Values as the peer takes and prints them.
    template <class Values>
    static std::string text(const Values& values)
    {
        std::ostringstream out;
        for (const auto& value : values) {
            const char* separator = "";
            for (const auto number : value) {
                out << separator << std::hex << std::setw(16) << std::setfill('0') << number;
                separator = " ";
            }
            out << '\n';
        }
        return out.str();
    }

    static std::vector<std::string> words(const std::string& text)
    {
        std::istringstream in(text);
        return {std::istream_iterator<std::string>(in), {}};
    }

    template <class Topic, class Publisher>
    static void publishValues(Publisher& publisher)
    {
        const auto value = publisher.createDataEntity();
        for (const auto& bits : values<Topic>()) {
            Topic::set(*value, bits);
            publisher.publish(*value, 0ms);
        }
    }

    /// What a subscriber reads, once it has read as many values as expected.
    template <class Topic, class Subscriber>
    static std::string arrived(Subscriber& subscriber, std::size_t count)
    {
        std::vector<Bits<Topic::numbers>> result;
        waitFor([&] {
            for (const auto& value : subscriber.read(0)) {
                result.push_back(Topic::bits(*value));
            }
            return result.size() >= count;
        });
        return text(result);
    }

    /// The topic's name has letters, digits, underscores and slashes only: the peer takes no others.
    const Uri uri_{"dds+ps://" + std::to_string(testDomain()) + "/interop/" + std::to_string(getpid())};
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ =
        std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
};

/// How the peer's types and endpoints are declared, and ours to go with them.
struct Variant {
    const char* extensibility;
    const char* representation;
    std::string property; ///< empty: absent
};

std::string nameOf(const Variant& variant)
{
    const auto& [extensibility, representation, property] = variant;
    return std::string(extensibility) + "_" + representation + (property.empty() ? "_by_default" : "");
}

std::ostream& operator<<(std::ostream& out, const Variant& variant)
{
    return out << nameOf(variant);
}

std::string parameterName(const testing::TestParamInfo<Variant>& info)
{
    return nameOf(info.param);
}

const Variant finalXcdr1ByDefault{"final", "xcdr1", ""};
const Variant finalXcdr1{"final", "xcdr1", "xcdr1"};
const Variant finalXcdr2{"final", "xcdr2", "xcdr2"};
const Variant appendableXcdr2{"appendable", "xcdr2", "xcdr2"};

class FromPeerTest : public PeerTest, public testing::WithParamInterface<Variant>
{
protected:
    template <class Topic>
    void expectArrival()
    {
        const auto& [extensibility, representation, property] = GetParam();
        const auto subscriber = this->subscriber<Topic>(property);
        auto peer =
            this->peer("publish", extensibility, Topic::type, representation, words(text(values<Topic>())));
        EXPECT_EQ(peer.finish(), "");
        EXPECT_EQ(arrived<Topic>(*subscriber, values<Topic>().size()), text(values<Topic>()));
    }
};

TEST_P(FromPeerTest, EveryPositionArrivesBitForBit)
{
    expectArrival<Positions>();
}

TEST_P(FromPeerTest, EveryTemperatureArrivesBitForBit)
{
    expectArrival<Temperatures>();
}

INSTANTIATE_TEST_SUITE_P(Variants, FromPeerTest,
                         testing::Values(finalXcdr1ByDefault, finalXcdr1, finalXcdr2, appendableXcdr2),
                         parameterName);

class ToPeerTest : public PeerTest, public testing::WithParamInterface<Variant>
{
protected:
    template <class Topic>
    void expectArrival()
    {
        const auto& [extensibility, representation, property] = GetParam();
        const auto publisher = this->publisher<Topic>(property);
        publishValues<Topic>(*publisher);
        auto peer = this->peer("subscribe", extensibility, Topic::type, representation,
                               {std::to_string(values<Topic>().size())});
        EXPECT_EQ(peer.finish(), text(values<Topic>()));
    }
};

TEST_P(ToPeerTest, EveryPositionArrivesBitForBit)
{
    expectArrival<Positions>();
}

TEST_P(ToPeerTest, EveryTemperatureArrivesBitForBit)
{
    expectArrival<Temperatures>();
}

// Without finalXcdr2: see FinalReaderRefusesDelimitedValues.
INSTANTIATE_TEST_SUITE_P(Variants, ToPeerTest,
                         testing::Values(finalXcdr1ByDefault, finalXcdr1, appendableXcdr2), parameterName);

/// What a reader of the peer complains about when a payload is not encoded as its own type would be.
std::size_t complaints(const std::string& output)
{
    const std::string complaint = "deserialization interop/";
    std::size_t count = 0;
    for (auto at = output.find(complaint); at != std::string::npos; at = output.find(complaint, at + 1)) {
        ++count;
    }
    return count;
}

class RefusingPeerTest : public PeerTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(RefusingPeerTest, FinalReaderRefusesDelimitedValues)
{
    const auto publisher = this->publisher<Positions>("xcdr2");
    publishValues<Positions>(*publisher);
    auto reader = peer("subscribe", "final", "AltAz", GetParam(), {"1"});
    reader.readUntil([](const std::string& output) { return complaints(output) >= numbers.size(); });

    // The reader is in order: it takes what a final type of its own kind writes, and had nothing else.
    const std::vector<Bits<2>> own{{1, 2}};
    peer("publish", "final", "AltAz", "xcdr2", words(text(own))).finish();
    std::istringstream output(reader.finish());
    std::string values;
    for (std::string line; std::getline(output, line);) {
        values += complaints(line) == 0 ? line + "\n" : "";
    }
    EXPECT_EQ(values, text(own));
}

INSTANTIATE_TEST_SUITE_P(Representations, RefusingPeerTest, testing::Values("xcdr2", "default"));

TEST_F(PeerTest, OrdinarySubscriberIsNotMatchedByAnXcdr2Writer)
{
    for (const std::string extensibility : {"final", "appendable"}) {
        const auto subscriber = this->subscriber<Positions>("");
        auto writer = peer("publish", extensibility, "AltAz", "xcdr2", {"1", "2"});
        EXPECT_EQ(writer.finish(), "incompatible data representation\n") << extensibility;
        EXPECT_TRUE(subscriber->read(0).empty());
    }
}

TEST_F(PeerTest, OrdinaryPublisherIsNotMatchedByAnXcdr2Reader)
{
    for (const std::string extensibility : {"final", "appendable"}) {
        const auto publisher = this->publisher<Positions>("");
        publishValues<Positions>(*publisher);
        auto reader = peer("subscribe", extensibility, "AltAz", "xcdr2", {"1"});
        EXPECT_EQ(reader.finish(), "incompatible data representation\n") << extensibility;
    }
}

} // namespace

} // namespace plex::test
