// SPDX-License-Identifier: Apache-2.0
// What is told of peers of another implementation, and whether that refuses what we say it does.
#include "PeerEnvironment.hpp"
#include "Process.hpp"
#include "TestTopic.hpp"
#include "Topics.hpp"
#include "WaitFor.hpp"

#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/Status.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <tests/engine/Mismatches.hpp>
#include <unistd.h>

namespace plex::test
{

namespace
{

namespace ps = ovra::plex::ps;

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class PeerStatusTest : public testing::Test
{
protected:
    void SetUp() override { loadLoopback(*plex_, uri_); }

    static ovra::plex::Plex::Properties properties(const char* library)
    {
        auto result = loopbackProperties(""); // so that readers accept version 1 only
        result["dds.qos.profile.file"] = POLICIES_FILE;
        result["dds.qos.profile.library"] = library;
        return result;
    }

    std::unique_ptr<ps::Publisher<vexstubif::AltAz>> publisher() const
    {
        return std::unique_ptr<ps::Publisher<vexstubif::AltAz>>(
            Positions::createPublisher(plex_, uri_, {}, properties("loose")));
    }

    std::unique_ptr<ps::Subscriber<vexstubif::AltAz>> subscriber() const
    {
        return std::unique_ptr<ps::Subscriber<vexstubif::AltAz>>(
            Positions::createSubscriber(plex_, uri_, {}, properties("strict")));
    }

    Process peer(const std::string& type) const
    {
        // Without key hashes, Fast DDS takes no notice of the end of an endpoint.
        return Process(
            {PEER_POLICIES, std::to_string(testDomain()), ovra::plex::DdsUriHelper::topic(uri_, true), type},
            peerEnvironment("<Internal><GenerateKeyhash>true</GenerateKeyhash></Internal>"));
    }

    template <class Entity, class Condition>
    static ps::EntityStatus statusOnce(const Entity& entity, Condition condition)
    {
        ps::EntityStatus status;
        EXPECT_TRUE(waitFor([&] { return condition(status = ps::status(entity)); }));
        return status;
    }

    static std::vector<std::string> inWords(const std::vector<ps::Refusal>& refusals)
    {
        std::vector<std::string> texts;
        for (const auto& refusal : refusals) {
            texts.push_back(toString(refusal));
        }
        return texts;
    }

    static bool matchesOne(const ps::EntityStatus& status) { return status.matched.size() == 1; }

    static bool refusesOne(const ps::EntityStatus& status) { return status.refused.size() == 1; }

    static bool isAlone(const ps::EntityStatus& status)
    {
        return status.matched.empty() && status.refused.empty();
    }

    /// What the peer says of the one on our side.
    static std::string verdictOf(Process& peer)
    {
        peer.say("judge\n");
        std::string line = peer.readLine();
        while (!line.empty() && !line.starts_with("matches") && !line.starts_with("refuses")) {
            line = peer.readLine(); // that one was a record of the peer's
        }
        return line;
    }

    static void expectName(const ps::Peer& described, const Process& peer)
    {
        std::array<char, 256> host{};
        ASSERT_EQ(gethostname(host.data(), host.size() - 1), 0);
        EXPECT_EQ(described.vendor, "Cyclone DDS");
        EXPECT_EQ(described.host, host.data());
        EXPECT_EQ(described.process, std::to_string(peer.id()));
        EXPECT_EQ(described.distance, ps::Distance::SameHost);
        EXPECT_EQ(described.type, "generated::dds_::vexstubif::AltAz");
        EXPECT_THAT(described.policies,
                    testing::Contains(
                        testing::AllOf(testing::Field(&ps::Policy::name, "data representation"),
                                       testing::Field(&ps::Policy::value, testing::StartsWith("xcdr")))));
    }

    /// That the peer is described with its one reason, that it says the same, and that it is matched once it
    /// has changed its mind.
    template <class Entity>
    void expectReason(const Entity& entity, Process& peer, const Mismatch& mismatch)
    {
        SCOPED_TRACE(mismatch.name);
        peer.say(std::string("misfit ") + mismatch.name + "\n");
        const auto status = statusOnce(entity, mismatch.isRefused ? refusesOne : matchesOne);
        const auto& here = mismatch.isRefused ? status.refused : status.matched;
        ASSERT_THAT(here, SizeIs(1));
        EXPECT_THAT(inWords(here[0].refusals), ElementsAre(mismatch.reason));
        expectName(here[0], peer);
        const std::string policy = here[0].refusals.empty() ? "" : here[0].refusals[0].policy;
        if (policy != "partition") { // which is none of the incompatibilities that DDS reports
            EXPECT_EQ(verdictOf(peer), "refuses " + policy);
        }
        peer.say("drop\n");
        statusOnce(entity, isAlone);
        peer.say(std::string("fit ") + mismatch.name + "\n");
        EXPECT_THAT(statusOnce(entity, matchesOne).matched.at(0).refusals, IsEmpty());
        EXPECT_EQ(verdictOf(peer), "matches");
        peer.say("drop\n");
        statusOnce(entity, isAlone);
    }

    /// Letters, digits, underscores and slashes only: the peer takes no others.
    const ovra::plex::Uri uri_{"dds+ps://" + std::to_string(testDomain()) + "/interop/policies/" +
                               std::to_string(getpid())};
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ =
        std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
};

TEST_F(PeerStatusTest, NamesEveryPolicyThatAPeerOffersTooLittleOf)
{
    const auto subscriber = this->subscriber();
    auto peer = this->peer("AltAz");
    for (const auto& mismatch : mismatches) {
        if (!mismatch.isOurWriter) {
            expectReason(*subscriber, peer, mismatch);
        }
    }
}

TEST_F(PeerStatusTest, NamesEveryPolicyThatAPeerAsksTooMuchOf)
{
    const auto publisher = this->publisher();
    auto peer = this->peer("AltAz");
    for (const auto& mismatch : mismatches) {
        if (mismatch.isOurWriter) {
            expectReason(*publisher, peer, mismatch);
        }
    }
}

TEST_F(PeerStatusTest, NamesAPeersOtherType)
{
    const auto publisher = this->publisher();
    auto peer = this->peer("DomeTemperature");
    peer.say("fit ReliabilityAskedOfUs\n");
    EXPECT_THAT(inWords(statusOnce(*publisher, refusesOne).refused.at(0).refusals),
                ElementsAre("type name: generated::dds_::vexstubif::DomeTemperature asked for, "
                            "generated::dds_::vexstubif::AltAz offered"));
}

} // namespace

} // namespace plex::test
