// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Discovery.hpp"

#include <memory>

namespace ovra::plex::ps::internal
{

/// What watches a participant's discovery; never null for one from watched(), while somebody holds that.
std::shared_ptr<Discovery> discoveryOf(const dds::DomainParticipant& participant);

} // namespace ovra::plex::ps::internal
