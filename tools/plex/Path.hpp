// SPDX-License-Identifier: Apache-2.0
// The way to a member of a value: "alt", "limits.upper", "currents[3]".
#pragma once

#include "Description.hpp"

#include <plex/idl/Model.hpp>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ovra::plex::tool
{

class Path
{
public:
    /// @throws Failure where it can not be read.
    static Path parse(std::string_view text);

    /// What it leads to in a type. Within a union it is not looked at.
    /// @returns null: unknown, as it is in a union.
    /// @throws Failure where the type has no such member; it names the one that is called most like it.
    const idl::Type* typeIn(const idl::StructType& type) const;

    /// @returns null: the value has no such member now, as it is optional or beyond the end of a list.
    const Json* find(const Json& value) const;

private:
    using Step = std::variant<std::string, std::size_t>;

    std::string text_;
    std::vector<Step> steps_;
};

} // namespace ovra::plex::tool
