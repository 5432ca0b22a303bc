// SPDX-License-Identifier: Apache-2.0
// What is told of peers in another process: this program once more.
#include "ChildProcess.hpp"
#include "Mismatches.hpp"
#include "StatusTest.hpp"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>

namespace plex::test
{

namespace
{

// --- The peer's process ------------------------------------------------------------------------------------

constexpr std::int32_t lease = 2; ///< seconds

void make(PlainPeer& peer, const PeerQos& qos, bool isWriter)
{
    isWriter ? peer.write(qos.writer, qos.publisher) : peer.read(qos.reader, qos.subscriber);
}

/// Does what its standard input says, until that ends: "misfit NUMBER" and "fit NUMBER" make the endpoint of
/// that mismatch, or one that fits; "readers NUMBER" makes as many that fit the library "loose", and as many
/// that do not; "drop" deletes all.
void obey(const ovra::plex::Uri& uri)
{
    // One that is killed leaves its shared memory. NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other
    // thread
    setenv("FASTDDS_BUILTIN_TRANSPORTS", "UDPv4", 1);
    PlainPeer peer(uri, "another process", lease);
    std::size_t number = 0;
    for (std::string word; std::cin >> word;) {
        if (word == "drop") {
            peer.drop();
        } else if (std::cin >> number; word == "readers") {
            PeerQos other = fitting();
            other.reader.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
            for (std::size_t i = 0; i < number; ++i) {
                make(peer, fitting(), false);
                make(peer, other, false);
            }
        } else {
            const auto mismatch = mismatchesOfFastDds().at(number);
            PeerQos qos = fitting();
            if (word == "misfit") {
                mismatch.change(qos);
            }
            make(peer, qos, !mismatch.isOurWriter);
        }
    }
}

// --- The tests ---------------------------------------------------------------------------------------------

class StatusProcessesTest : public StatusTest
{
protected:
    void order(const std::string& text) const { ASSERT_TRUE(peer_.say(text + "\n")); }

    static bool isAlone(const ps::EntityStatus& status)
    {
        return status.matched.empty() && status.refused.empty();
    }

    /// That the peer is refused for its one reason, and matched once it has changed its mind.
    template <class Entity>
    void expectReason(Entity& entity, std::size_t number)
    {
        const auto& mismatch = mismatches_.at(number);
        SCOPED_TRACE(mismatch.name);
        order("misfit " + std::to_string(number));
        const auto status = statusOnce(entity, mismatch.isRefused ? refusesOne : matchesOne);
        const auto& here = mismatch.isRefused ? status.refused : status.matched;
        ASSERT_THAT(here, SizeIs(1));
        EXPECT_THAT(inWords(here[0].refusals), ElementsAre(mismatch.reason));
        EXPECT_THAT(mismatch.isRefused ? status.matched : status.refused, IsEmpty());
        EXPECT_EQ(here[0].participant, "another process");
        EXPECT_EQ(here[0].process, std::to_string(peer_.id()));
        EXPECT_EQ(here[0].distance, ps::Distance::SameHost);
        order("drop");
        statusOnce(entity, isAlone);
        order("fit " + std::to_string(number));
        EXPECT_THAT(statusOnce(entity, matchesOne).matched.at(0).refusals, IsEmpty());
        order("drop");
        statusOnce(entity, isAlone);
    }

    const std::vector<Mismatch> mismatches_ = mismatchesOfFastDds();
    ChildProcess peer_{{uri.string()}};
};

TEST_F(StatusProcessesTest, EveryPolicyIsNamedWhereItIsOfferedToUs)
{
    const auto subscriber = EntityTest::subscriber({}, policies("strict"));
    for (std::size_t number = 0; number < mismatches_.size(); ++number) {
        if (!mismatches_.at(number).isOurWriter) {
            expectReason(*subscriber, number);
        }
    }
}

TEST_F(StatusProcessesTest, EveryPolicyIsNamedWhereItIsAskedOfUs)
{
    const auto publisher = EntityTest::publisher({}, policies("loose"));
    for (std::size_t number = 0; number < mismatches_.size(); ++number) {
        if (mismatches_.at(number).isOurWriter) {
            expectReason(*publisher, number);
        }
    }
}

TEST_F(StatusProcessesTest, TwoHundredPeersThatComeAndGoAreAllTold)
{
    const auto publisher = EntityTest::publisher({}, policies("loose"));
    std::atomic<std::size_t> watched = 0;
    const auto watch =
        ps::watchStatus(*publisher, [&](const auto& status) { watched = status.matched.size(); });
    constexpr std::size_t half = 100;
    for (std::size_t round = 1; round <= 2; ++round) {
        order("readers " + std::to_string(half));
        ASSERT_TRUE(ps::waitForMatched(*publisher, half, patience));
        const auto status =
            statusOnce(*publisher, [](const auto& now) { return now.refused.size() == half; });
        EXPECT_THAT(status.matched, SizeIs(half));
        EXPECT_EQ(status.matchedAltogether, round * half);
        EXPECT_TRUE(waitFor([&] { return watched == half; }));
        order("drop");
        EXPECT_THAT(statusOnce(*publisher, isAlone).former, SizeIs(32));
        EXPECT_TRUE(waitFor([&] { return watched == 0; }));
    }
}

TEST_F(StatusProcessesTest, AKilledPeerIsGoneAfterItsLeaseAndToldOnce)
{
    const LogCapture log;
    const auto subscriber = EntityTest::subscriber({}, policies("strict"));
    order("fit 0 misfit 0");
    const auto before = statusOnce(*subscriber, [](const auto& status) {
        return status.matched.size() == 1 && status.refused.size() == 1;
    });
    const auto begin = std::chrono::steady_clock::now();
    peer_.kill(SIGKILL);
    const auto status = statusOnce(*subscriber, isAlone);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s) << "it has said so itself";
    ASSERT_THAT(status.former, SizeIs(1));
    EXPECT_EQ(status.former[0].guid, before.matched.at(0).guid);
    EXPECT_EQ(status.former[0].process, std::to_string(peer_.id()));
    const auto recorded = [&](const std::string& what) {
        return log.count("plexDdsDiscovery", log4cplus::INFO_LOG_LEVEL,
                         "The subscriber of topic " + ovra::plex::DdsUriHelper::topic(uri, true) + what +
                             " matched with the publisher in process " + std::to_string(peer_.id()) +
                             " on host " + before.matched.at(0).host);
    };
    EXPECT_TRUE(waitFor([&] { return recorded(" is no longer") > 0; }));
    const auto publisher = EntityTest::publisher({}, policies("strict")); // another change
    ASSERT_TRUE(ps::waitForMatched(*subscriber, 1, patience));
    EXPECT_TRUE(waitFor([&] {
        return log.count("plexDdsDiscovery", log4cplus::INFO_LOG_LEVEL,
                         "The subscriber of topic " + ovra::plex::DdsUriHelper::topic(uri, true) +
                             " is matched with the publisher in the same process") == 1;
    }));
    EXPECT_EQ(recorded(" is"), 1);
    EXPECT_EQ(recorded(" is no longer"), 1);
}

} // namespace

} // namespace plex::test

int main(int argc, char** argv)
{
    if (argc == 2 && std::string(argv[1]).starts_with("dds+ps:")) {
        plex::test::obey(ovra::plex::Uri(argv[1]));
        return 0;
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
