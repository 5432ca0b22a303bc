// SPDX-License-Identifier: Apache-2.0
// How what a definition names is called in C++.
#pragma once

#include <plex/idl/Model.hpp>

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ovra::plex::idl
{

/// A name as C++ takes it: with a _ behind it where it is a keyword or a common macro.
std::string cppName(std::string_view name);

/// The name of a type or constant in its module: with a _ behind it, too, where it would hide a namespace
/// that generated code refers to, or functions that it declares.
std::string declaredName(std::string_view name);

/// "windSpeed" and "wind_speed" as "WindSpeed", the last part of getWindSpeed.
std::string accessorName(std::string_view name);

/// The names of the modules around something, outermost first; none for the root.
std::vector<std::string> modulePath(const Module& module);

/// "a::b" in C++.
std::string namespaceOf(const Module& module);

/// "a_b", as it is in symbols and the name of the library: of the names in C++, by which both are looked up.
std::string symbolOf(const Module& module);

/// "::a::b::Name" in C++.
std::string qualifiedName(const NamedType& type);

/// Names that are given once each.
class NameScope
{
public:
    explicit NameScope(std::initializer_list<std::string> taken) : taken_(taken) {}

    bool isFree(const std::string& name) const { return !taken_.contains(name); }

    /// Takes a name, with as many _ behind it as make it one of its own.
    std::string take(std::string name);

private:
    std::unordered_set<std::string> taken_;
};

} // namespace ovra::plex::idl
