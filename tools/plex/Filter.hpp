// SPDX-License-Identifier: Apache-2.0
// Conditions on values: "alt > 40 and not (motion == STOPPED or name == 'upper')".
//
//     condition:  condition `or` condition | condition `and` condition | `not` condition | ( condition ) |
//                 operand compared operand | operand
//     compared:   == != < <= > >=
//     operand:    a member's path, a number, a 'text', true, false, or the name of an enumerator
//
// `or`, `and` and `not` may be written ||, && and !, and = is ==. A comparison with a member that is not
// there does not hold. An operand alone holds if it is there and neither false nor 0.
#pragma once

#include "Description.hpp"

#include <plex/idl/Model.hpp>

#include <functional>
#include <string>

namespace ovra::plex::tool
{

/// Whether a value, as JSON, fulfils a condition.
using Filter = std::function<bool(const Json&)>;

/// @throws Failure where the condition can not be read, or names what the type has not.
Filter parseFilter(const std::string& text, const idl::StructType& type);

} // namespace ovra::plex::tool
