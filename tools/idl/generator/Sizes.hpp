// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <cstdint>

namespace ovra::plex::idl
{

/// How many bytes something takes at most. Where that is not bounded, or too much to be set aside, it is what
/// room is made for at first.
struct LargestSize {
    std::uint32_t bytes = 0;
    bool isBounded = true;
};

/// Of a payload with a value of a topic, its encapsulation header included.
LargestSize largestPayload(const TopicPlan& topic);

/// Of its key, in plain CDR; 0 where it has none.
LargestSize largestKey(const TopicPlan& topic);

} // namespace ovra::plex::idl
