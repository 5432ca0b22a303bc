// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BareEntities.hpp"

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

namespace plex::bench
{

/// A participant as the binding's transport makes it by default.
inline ParticipantPointer makeBareParticipant(unsigned domain)
{
    auto* const factory = dds::DomainParticipantFactory::get_instance();
    auto* const participant = factory->create_participant(domain, dds::PARTICIPANT_QOS_DEFAULT);
    return {made(participant, "participant"),
            [holder = dds::DomainParticipantFactory::get_shared_instance()](dds::DomainParticipant* held) {
                holder->delete_participant(held);
            }};
}

} // namespace plex::bench
