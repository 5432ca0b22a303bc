// SPDX-License-Identifier: Apache-2.0
// Values as one line of text, and as a template asks for them.
#pragma once

#include "Description.hpp"

#include <plex/idl/Model.hpp>

#include <functional>
#include <string>

namespace ovra::plex::tool
{

/// "name=upper motion=OPENING currents=[0.5, 0.25]": texts without quotes where they are one word.
std::string inOneLine(const Json& value);

/// What a template puts in.
struct Fields {
    std::string topic;
    std::string time; ///< as inTimeOfDay()
    std::string age;
    std::string publisher;
    Json value; ///< null: there is none
    Json key;   ///< likewise
};

using Template = std::function<std::string(const Fields&)>;

/// Reads a template: {topic}, {time}, {age}, {publisher}, {value}, {key}, and {.path} for a member. Braces
/// are doubled;
/// \n and \t are the end of a line and a tab. @param type null: unknown; it has no members then.
/// @throws Failure where it can not be read.
Template parseTemplate(const std::string& text, const idl::StructType* type);

} // namespace ovra::plex::tool
