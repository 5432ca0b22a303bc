// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <plex/idl/Encoding.hpp>

#include <cstdint>
#include <map>
#include <utility>

namespace ovra::plex::idl
{

/// Of a payload with a value of a topic, its encapsulation header included.
LargestSize largestPayload(const TopicPlan& topic);

/// Of its key, in plain CDR; 0 where it has none.
LargestSize largestKey(const TopicPlan& topic);

/// The bytes that values of types take at least, in each version of XCDR.
class LeastSizes
{
public:
    /// Without padding; the truth may be more.
    std::uint64_t of(const Type& declared, XcdrVersion version);

private:
    std::uint64_t ofParts(const Type& type, XcdrVersion version);

    std::map<std::pair<const Type*, XcdrVersion>, std::uint64_t> known_;
};

} // namespace ovra::plex::idl
