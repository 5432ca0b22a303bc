// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <cstdint>

namespace ovra::plex::idl
{

/// The most bytes that a payload with a value of a topic has, its encapsulation header included.
std::uint32_t largestPayload(const TopicPlan& topic);

/// The most bytes that its key has, in plain CDR; 0 where it has none.
std::uint32_t largestKey(const TopicPlan& topic);

} // namespace ovra::plex::idl
