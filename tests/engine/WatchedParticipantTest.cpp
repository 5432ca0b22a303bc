// SPDX-License-Identifier: Apache-2.0
// Participants that were made without the listener of the transport, as another platform may make them.
#include "TestTopic.hpp"

#include <plex/dds/DdsUriHelper.hpp>
#include <plex/ps/internal/Endpoint.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/domain/DomainParticipantListener.hpp>
#include <gtest/gtest.h>

#include <memory>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace internal = ovra::plex::ps::internal;

std::shared_ptr<dds::DomainParticipant> participantWith(dds::DomainParticipantListener* listener)
{
    auto* const factory = dds::DomainParticipantFactory::get_instance();
    const auto domain = ovra::plex::DdsUriHelper::domain(testUri(), {});
    return {factory->create_participant(domain, {}, listener, dds::StatusMask::none()),
            [factory](auto* participant) {
                factory->delete_participant(participant);
            }};
}

} // namespace

TEST(WatchedParticipantTest, IsWatchedForAsLongAsItIsUsed)
{
    const auto participant = participantWith(nullptr);
    for (int round = 0; round < 2; ++round) {
        const auto watched = internal::watched(participant);
        EXPECT_EQ(watched.get(), participant.get());
        EXPECT_NE(participant->get_listener(), nullptr);
    }
    EXPECT_EQ(participant->get_listener(), nullptr);
}

TEST(WatchedParticipantTest, KeepsTheListenerOfSomebodyElse)
{
    dds::DomainParticipantListener listener;
    const auto participant = participantWith(&listener);
    auto watched = internal::watched(participant);
    EXPECT_EQ(participant->get_listener(), &listener);
    watched.reset();
    EXPECT_EQ(participant->get_listener(), &listener);
}

} // namespace plex::test
