// SPDX-License-Identifier: Apache-2.0
// Why a publisher and a subscriber do not match, in one process.
#include "Mismatches.hpp"
#include "StatusTest.hpp"

#include <generated/vexstubif/DomeTemperaturePubSubType.hpp>

#include <fstream>
#include <iterator>

namespace plex::test
{

class RefusalTest : public StatusTest, public testing::WithParamInterface<Mismatch>
{
};

TEST_P(RefusalTest, IsSaidWithItsReason)
{
    const auto& mismatch = GetParam();
    PeerQos qos = fitting();
    mismatch.change(qos);
    PlainPeer peer(uri);
    const auto expectReason = [&](auto& entity) {
        const auto status = statusOnce(entity, mismatch.isRefused ? refusesOne : matchesOne);
        const auto& here = mismatch.isRefused ? status.refused : status.matched;
        ASSERT_THAT(here, SizeIs(1));
        EXPECT_THAT(inWords(here[0].refusals), ElementsAre(mismatch.reason));
        EXPECT_THAT(mismatch.isRefused ? status.matched : status.refused, IsEmpty());
    };
    if (mismatch.isOurWriter) {
        const auto publisher = EntityTest::publisher({}, policies(mismatch.library));
        peer.read(qos.reader, qos.subscriber);
        expectReason(*publisher);
    } else {
        const auto subscriber = EntityTest::subscriber({}, policies(mismatch.library));
        peer.write(qos.writer, qos.publisher);
        expectReason(*subscriber);
    }
}

INSTANTIATE_TEST_SUITE_P(Policies, RefusalTest, testing::ValuesIn(mismatchesOfFastDds()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Refusals, StandInTheReference)
{
    std::string table = "<!-- refusals -->\n| sentence | refused by Fast DDS | test |\n|---|---|---|\n";
    for (const auto& mismatch : mismatches) {
        table += std::string("| ") + mismatch.reason + " | " + (mismatch.isRefused ? "yes" : "no") + " | `" +
                 mismatch.name + "` |\n";
    }
    std::ifstream file(REFERENCE);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_THAT(text, testing::HasSubstr(table + "<!-- /refusals -->\n"));
}

/// The other direction of each mismatch.
TEST_F(StatusTest, HasNoRefusalWhereMoreIsOfferedThanAsked)
{
    PlainPeer peer(uri);
    PeerQos offered = fitting();
    offered.publisher.presentation().access_scope = dds::GROUP_PRESENTATION_QOS;
    offered.publisher.presentation().coherent_access = true;
    offered.publisher.presentation().ordered_access = true;
    offered.writer.ownership().kind = dds::SHARED_OWNERSHIP_QOS;
    offered.publisher.partition().clear();
    const auto subscriber = EntityTest::subscriber();
    peer.write(offered.writer, offered.publisher);
    EXPECT_THAT(statusOnce(*subscriber, matchesOne).matched.at(0).refusals, IsEmpty());

    dds::DataReaderQos asked;
    asked.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    asked.latency_budget().duration = {1, 0};
    dds::SubscriberQos where;
    where.partition().push_back("n*");
    const auto publisher = EntityTest::publisher({}, policies("strict"));
    peer.read(asked, where);
    EXPECT_THAT(statusOnce(*publisher, matchesOne).matched.at(0).refusals, IsEmpty());
}

TEST_F(StatusTest, NamesBothTypesOfATopic)
{
    const auto subscriber = EntityTest::subscriber();
    PlainPeer peer(uri);
    peer.write({}, {}, PlainPeer::Type(new generated::dds_::vexstubif::DomeTemperaturePubSubType()));
    const auto status = statusOnce(*subscriber, refusesOne);
    EXPECT_THAT(inWords(status.refused[0].refusals),
                ElementsAre("type name: generated::dds_::vexstubif::AltAz asked for, "
                            "generated::dds_::vexstubif::DomeTemperature offered"));
}

TEST_F(StatusTest, NamesEveryReasonOfAPair)
{
    const auto publisher = EntityTest::publisher();
    PlainPeer peer(uri);
    dds::DataReaderQos qos;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    qos.deadline().period = {1, 0};
    peer.read(qos);
    EXPECT_THAT(inWords(statusOnce(*publisher, refusesOne).refused[0].refusals),
                ElementsAre("deadline: 1 s asked for, infinite offered",
                            "ownership: exclusive asked for, shared offered"));
}

TEST_F(StatusTest, SaysWhenAPeerHasChangedItsMind)
{
    const auto publisher = EntityTest::publisher();
    {
        PlainPeer peer(uri);
        dds::DataReaderQos qos;
        qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
        peer.read(qos);
        statusOnce(*publisher, refusesOne);
    }
    statusOnce(*publisher, [](const auto& status) { return status.refused.empty(); });
    PlainPeer fitting(uri);
    fitting.read({});
    EXPECT_THAT(statusOnce(*publisher, matchesOne).refused, IsEmpty());
}

TEST_F(StatusTest, KnowsPeersThatWereThereBefore)
{
    PlainPeer peer(uri);
    dds::DataReaderQos qos;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    peer.read(qos);
    const auto first = EntityTest::publisher();
    statusOnce(*first, refusesOne);
    const auto second = EntityTest::publisher();
    EXPECT_THAT(ps::status(*second).refused, SizeIs(1));
}

} // namespace plex::test
