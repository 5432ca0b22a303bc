// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Plan.hpp"

#include <initializer_list>
#include <set>
#include <string>

namespace ovra::plex::idl
{

/// The headers that a file includes.
class Headers
{
public:
    Headers(std::initializer_list<std::string> names) : names_(names) {}

    void add(const std::string& name) { names_.insert(name); }

    /// Those that a member's value needs.
    void addForValue(const MemberPlan& plan);

    /// Those that its accessors in the abstract class need.
    void addForSlots(const MemberPlan& plan);

    /// The directives: those beside the file, the project's, other libraries', the standard library's.
    std::string text() const;

private:
    std::set<std::string> names_;
};

} // namespace ovra::plex::idl
