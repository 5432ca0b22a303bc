// SPDX-License-Identifier: Apache-2.0
#include "Slots.hpp"

namespace ovra::plex::idl
{

namespace
{

Slot getter(const MemberPlan& plan, const std::string& result, const std::string& body)
{
    return {result, "get" + plan.accessor, "", body, true};
}

Slot setter(const MemberPlan& plan, const std::string& parameter, const std::string& body)
{
    return {"void", "set" + plan.accessor, parameter + " " + plan.name, body, false};
}

} // namespace

std::vector<Slot> slotsOf(const MemberPlan& plan)
{
    return {getter(plan, plan.wireType, "return " + plan.field + ";"),
            setter(plan, plan.wireType, plan.field + " = " + plan.name + ";")};
}

} // namespace ovra::plex::idl
