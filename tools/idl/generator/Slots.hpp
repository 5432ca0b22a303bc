// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// A virtual function of a topic's abstract class, and what its adapter does there.
struct Slot {
    std::string result;
    std::string name;
    std::string parameters;
    std::string body; ///< of the adapter's
    bool isConst = false;
};

/// Those of a member, in their order.
std::vector<Slot> slotsOf(const MemberPlan& plan);

/// Whether get hands over a pointer, which is null where the member is absent.
bool isSeenThroughPointer(const MemberPlan& plan);

} // namespace ovra::plex::idl
