// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <plex/dds/DdsPlex.hpp>
#include <vexstubif/AltAz.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>
#include <gtest/gtest.h>

#include <LogCapture.hpp>
#include <TestTopic.hpp>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
using ovra::plex::DdsPlex;
using ovra::plex::Plex;
using ovra::plex::Uri;
using ParticipantPointer = std::shared_ptr<dds::DomainParticipant>;

unsigned otherDomain()
{
    static const ReservedDomain domain;
    return domain.number();
}

Uri uriIn(unsigned domain)
{
    return Uri("dds+ps://" + std::to_string(domain) + "/topic");
}

std::size_t participantsIn(unsigned domain)
{
    return dds::DomainParticipantFactory::get_instance()->lookup_participants(domain).size();
}

} // namespace

class Participant : public testing::Test
{
protected:
    ~Participant() override
    {
        EXPECT_EQ(participantsIn(testDomain()), 0U);
        EXPECT_EQ(participantsIn(otherDomain()), 0U);
    }

    ParticipantPointer participant(const Uri& uri = testUri(), const Plex::Properties& properties = {})
    {
        return plex_->getDomainParticipant(uri, properties);
    }

    std::shared_ptr<DdsPlex> plex_ = std::make_shared<DdsPlex>(Plex::Properties{});
};

TEST_F(Participant, IsSharedByAllWhoAskForItsDomain)
{
    const auto first = participant(testUri("first"));
    const auto second = participant(testUri("second"));
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->get_domain_id(), testDomain());
    EXPECT_EQ(participantsIn(testDomain()), 1U);
}

TEST_F(Participant, IsAnotherInAnotherDomain)
{
    const auto first = participant(uriIn(testDomain()));
    const auto second = participant(uriIn(otherDomain()));
    EXPECT_NE(first, second);
    EXPECT_EQ(second->get_domain_id(), otherDomain());
}

TEST_F(Participant, IsTheSameWhereverItsDomainIsNamed)
{
    const auto byUri = participant(uriIn(testDomain()));
    const auto byProperty =
        participant(Uri("dds+ps:///topic"), {{"dds.domain", std::to_string(testDomain())}});
    EXPECT_EQ(byUri, byProperty);
}

TEST_F(Participant, HasTheDomainOfTheCallRatherThanOfTheInstance)
{
    const auto plex = Plex::create({{"dds.domain", std::to_string(testDomain())}});
    const Plex::Properties ofCall{{"dds.domain", std::to_string(otherDomain())}};
    const Uri withoutDomain("dds+ps:///topic");
    const auto expectDomains = [&](const auto& create) {
        const auto inOwnDomain = create({});
        EXPECT_EQ(participantsIn(testDomain()), 1U);
        EXPECT_EQ(participantsIn(otherDomain()), 0U);
        const auto inDomainOfCall = create(ofCall);
        EXPECT_EQ(participantsIn(otherDomain()), 1U);
    };
    using vexstubif::AltAz;
    using Properties = const Plex::Properties&;
    expectDomains([&](Properties given) { return plex->createPublisher<AltAz>(withoutDomain, {}, given); });
    expectDomains([&](Properties given) { return plex->createSubscriber<AltAz>(withoutDomain, {}, given); });
    expectDomains(
        [&](Properties given) { return plex->createMrvSubscriber<AltAz>(withoutDomain, {}, given); });
}

TEST_F(Participant, LeavesTheChoiceOfTransportsToAnEnvironmentThatMakesIt)
{
    for (const auto* const variable : {"FASTDDS_BUILTIN_TRANSPORTS", "FASTDDS_ENVIRONMENT_FILE"}) {
        setenv(variable, "UDPv4", 1); // NOLINT(concurrency-mt-unsafe): alone yet
        const auto held = participant();
        EXPECT_TRUE(held->get_qos().transport().use_builtin_transports) << variable;
        EXPECT_TRUE(held->get_qos().transport().user_transports.empty()) << variable;
        unsetenv(variable); // NOLINT(concurrency-mt-unsafe): alone again soon
    }
}

TEST_F(Participant, LivesAsLongAsSomebodyHoldsIt)
{
    auto first = participant();
    auto second = participant();
    first.reset();
    EXPECT_EQ(participantsIn(testDomain()), 1U);
    second.reset();
    EXPECT_EQ(participantsIn(testDomain()), 0U);
    EXPECT_NE(participant(), nullptr);
}

TEST_F(Participant, OutlivesTheInstanceThatMadeIt)
{
    const auto held = participant();
    plex_.reset();
    EXPECT_EQ(participantsIn(testDomain()), 1U);
    EXPECT_EQ(held->get_domain_id(), testDomain());
}

TEST_F(Participant, IsDeletedWithWhatIsLeftInIt)
{
    const LogCapture log;
    auto held = participant();
    const dds::TypeSupport type(new generated::dds_::vexstubif::AltAzPubSubType());
    type.register_type(held.get());
    EXPECT_NE(held->create_topic("left", type.get_type_name(), dds::TOPIC_QOS_DEFAULT), nullptr);
    EXPECT_NE(held->create_publisher(dds::PUBLISHER_QOS_DEFAULT), nullptr);
    held.reset();
    EXPECT_EQ(participantsIn(testDomain()), 0U);
    for (const auto& record : log.records()) {
        EXPECT_LT(record.level, log4cplus::ERROR_LOG_LEVEL) << record.text;
    }
}

TEST_F(Participant, IsNotSharedBetweenInstances)
{
    const auto another = std::make_shared<DdsPlex>(Plex::Properties{});
    EXPECT_NE(participant(), another->getDomainParticipant(testUri(), {}));
}

TEST_F(Participant, IsOneForThreadsThatAskAtOnce)
{
    std::vector<ParticipantPointer> found(8);
    {
        std::vector<std::jthread> threads;
        for (auto& place : found) {
            threads.emplace_back(
                [&place, plex = plex_, uri = testUri()] { place = plex->getDomainParticipant(uri, {}); });
        }
    }
    EXPECT_EQ(found, std::vector<ParticipantPointer>(found.size(), found.front()));
    EXPECT_EQ(participantsIn(testDomain()), 1U);
}

TEST_F(Participant, IsRefusedForAnIllFormedUriWhichIsLogged)
{
    const LogCapture log;
    const auto text = refusalOf([&] { participant(Uri("dds+ps://0/t?q")); });
    EXPECT_EQ(text, "Uri dds+ps://0/t?q is not a DDS Uri: it has a query");
    EXPECT_EQ(log.count("plexDdsUriHelper", log4cplus::ERROR_LOG_LEVEL, text), 1);
}

TEST_F(Participant, IsRefusedForItsUriBeforeAnyProperty)
{
    const Plex::Properties bad{{"dds.domain", "233"}, {"dds.qos.profile.file", "/no/such/file.xml"}};
    EXPECT_EQ(refusalOf([&] { participant(Uri("dds+ps:///t?q"), bad); }),
              "Uri dds+ps:///t?q is not a DDS Uri: it has a query");
}

TEST_F(Participant, IsRefusedForADomainThatIsNone)
{
    EXPECT_EQ(refusalOf([&] { participant(Uri("dds+ps:///t"), {{"dds.domain", "233"}}); }),
              "Property dds.domain is not a whole number from 0 to 232: \"233\"");
}

TEST_F(Participant, IsRefusedForAProfileThatIsMissing)
{
    const LogCapture log;
    const auto text = refusalOf([&] { participant(testUri(), {{"dds.qos.profile.library", "nowhere"}}); });
    EXPECT_EQ(text, "Failed to create participant for domain " + std::to_string(testDomain()) +
                        " with profile:nowhere.participant");
    EXPECT_EQ(log.count("plexDdsPlex", log4cplus::ERROR_LOG_LEVEL, text), 1);
}

} // namespace plex::test
