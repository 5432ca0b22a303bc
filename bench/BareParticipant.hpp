// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BareEntities.hpp"

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <string>

namespace plex::bench
{

/// A participant as the binding's transport makes it.
/// @param library of QoS profiles, which must be loaded; empty for none.
inline ParticipantPointer makeBareParticipant(unsigned domain, const std::string& library = {})
{
    auto* const factory = dds::DomainParticipantFactory::get_instance();
    auto* const participant =
        library.empty() ? factory->create_participant(domain, dds::PARTICIPANT_QOS_DEFAULT)
                        : factory->create_participant_with_profile(domain, library + ".participant");
    return {made(participant, "participant"),
            [holder = dds::DomainParticipantFactory::get_shared_instance()](dds::DomainParticipant* held) {
                holder->delete_participant(held);
            }};
}

} // namespace plex::bench
