// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "HostCheck.hpp"

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

#include <cstdint>
#include <vector>

/// A look at the host before a participant is made.
namespace ovra::plex::startup
{

/// Logs findings at WARN under "plexDdsDiscovery", but for those whose cause this process has logged already.
void record(const std::vector<hostcheck::Finding>& findings);

/// Looks, once a process and domain, at what a participant of this QoS will meet, and records it.
void checkOnce(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos);

} // namespace ovra::plex::startup
