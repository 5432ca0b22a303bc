// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

namespace ovra::plex
{

/// Lets a participant of this QoS send through shared memory what it has to send, and nothing that was there
/// before; and has it heard by processes that take the place of killed ones.
///
/// Changes nothing for versions of Fast DDS without the first defect, see PLEX_FASTDDS_SENDS_LEFTOVERS; they
/// have the second one, but other interfaces to transports. Otherwise the transports
/// for shared memory, the built-in one included, are replaced by ones of the same settings. Built-in
/// transports that the environment may choose (FASTDDS_BUILTIN_TRANSPORTS, FASTDDS_ENVIRONMENT_FILE) are left
/// as they are.
void mendSharedMemory(eprosima::fastdds::dds::DomainParticipantQos& qos);

} // namespace ovra::plex
