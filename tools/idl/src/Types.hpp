// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Context.hpp"

#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// Reads a type where one is used. @returns a type that stands in for it after reporting that there is none
/// of that name.
/// @throws SyntaxError
const Type& readType(Context& context);

/// A name with the type that it has.
struct Declarator {
    Token name;
    const Type* type = nullptr;
};

/// Reads a name and the dimensions behind it. @param what is named. @param type of the elements, if it is an
/// array.
Declarator readDeclarator(Context& context, const std::string& what, const Type& type);

/// Reads names with commas between them.
std::vector<Declarator> readDeclarators(Context& context, const std::string& what, const Type& type);

/// Says so where a value of a type would contain itself, or something of which only the name is known.
void requireComplete(Context& context, const Type& type, const Location& place);

/// Lets what contains something be as deep as that requires; says so where that is too deep.
void deepen(Context& context, Type& container, const Type& part, const Location& place);

/// Whether something is nested in the text where types are declared beforehand only; says so and throws
/// SyntaxError.
void refuseNestedDeclaration(Context& context);

} // namespace ovra::plex::idl
