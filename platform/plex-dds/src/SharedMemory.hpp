// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

namespace ovra::plex
{

/// Lets a participant of this QoS send through shared memory what it has to send, and nothing that was there
/// before.
///
/// Changes nothing where Fast DDS does so itself, see PLEX_FASTDDS_SENDS_LEFTOVERS. Otherwise the transports
/// for shared memory, the built-in one included, are replaced by ones of the same settings. Built-in
/// transports that the environment may choose (FASTDDS_BUILTIN_TRANSPORTS, FASTDDS_ENVIRONMENT_FILE) are left
/// as they are.
void sendNoLeftovers(eprosima::fastdds::dds::DomainParticipantQos& qos);

} // namespace ovra::plex
