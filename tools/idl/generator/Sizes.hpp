// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <plex/idl/Encoding.hpp>

namespace ovra::plex::idl
{

/// Of a payload with a value of a topic, its encapsulation header included.
LargestSize largestPayload(const TopicPlan& topic);

/// Of its key, in plain CDR; 0 where it has none.
LargestSize largestKey(const TopicPlan& topic);

} // namespace ovra::plex::idl
