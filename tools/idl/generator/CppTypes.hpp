// SPDX-License-Identifier: Apache-2.0
// What types and values are in C++.
#pragma once

#include <plex/idl/Model.hpp>

#include <set>
#include <string>

namespace ovra::plex::idl
{

/// Of what kind a member is, which decides on its accessors.
enum class Shape : std::uint8_t {
    Small,    ///< handed over by value: primitives, enums, bitmasks
    Text,     ///< a string
    Sequence, ///< seen through a span
    Whole     ///< handed over by reference: arrays, structs, unions
};

Shape shapeOf(const Type& type);

/// The C++ type of a value: "double", "std::vector<::dome::Vec3>".
std::string cppType(const Type& type);

/// The same for a member, which may be optional.
std::string cppType(const Member& member);

/// The type that an enum or a bitmask is kept in.
std::string underlyingType(const Type& type);

/// What a new value is set to, "0.0", or nothing where its type does that by itself.
std::string initialValue(const Type& type);

/// The same for a member: its default where it has one, nothing where it is optional.
std::string initialValue(const Member& member);

/// A value of a type as an expression in C++.
std::string cppValue(const Type& type, const Value& value);

/// A text in quotes.
std::string quoted(std::string_view text);

/// The headers that a value of a type needs: "<cstdint>", and those of the contract.
void addHeaders(std::set<std::string>& headers, const Type& type);
void addHeaders(std::set<std::string>& headers, const Member& member);

/// The headers that values of members need, as they stand in a text.
void addHeadersOfText(std::set<std::string>& headers, const std::string& text);

/// The header with the plain types of a module and those within it: "dome/Values.hpp".
std::string valuesHeader(const Module& module);

/// Whether comparing two values compares floating-point numbers.
bool holdsFloating(const Type& type);

} // namespace ovra::plex::idl
