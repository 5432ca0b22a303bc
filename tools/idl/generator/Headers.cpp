// SPDX-License-Identifier: Apache-2.0
#include "Headers.hpp"

#include "Slots.hpp"

#include <array>

namespace ovra::plex::idl
{

namespace
{

/// From which block of directives a header is.
std::size_t blockOf(const std::string& name)
{
    if (name.starts_with('"')) {
        return 0;
    }
    if (name.starts_with("<fastcdr/") || name.starts_with("<fastdds/")) {
        return 2;
    }
    return name.find('/') == std::string::npos ? 3 : 1;
}

} // namespace

void Headers::addForValue(const MemberPlan& plan)
{
    addHeaders(names_, *plan.member);
}

void Headers::addForSlots(const MemberPlan& plan)
{
    addHeaders(names_, *plan.member->type);
    if (plan.shape == Shape::Text) {
        names_.erase("<string>");
        add("<string_view>");
    }
    if (plan.shape == Shape::Sequence && !plan.isOptional()) {
        names_.insert({"<plex/Span.hpp>", "<cstddef>"});
    }
    if (plan.isOptional() && !isSeenThroughPointer(plan)) {
        add("<optional>");
    }
}

std::string Headers::text() const
{
    std::array<std::string, 4> blocks;
    for (const std::string& name : names_) {
        blocks.at(blockOf(name)) += "#include " + name + "\n";
    }
    std::string text;
    for (const std::string& block : blocks) {
        text += text.empty() || block.empty() ? block : "\n" + block;
    }
    return text;
}

} // namespace ovra::plex::idl
