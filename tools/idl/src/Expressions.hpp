// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Context.hpp"

#include <optional>

namespace ovra::plex::idl
{

/// Where an expression ends at `>`: between angle brackets, where `>>` is no shift outside of parentheses.
enum class Angles : std::uint8_t { Open, Closed };

/// Reads a constant expression and evaluates it as a value of a type: `|`, `^`, `&`, `<<`, `>>`, `+`, `-`,
/// `*`, `/`, `%`, unary `+`, `-` and `~`, parentheses, literals and names of constants, enumerators and
/// flags. Integers are calculated with 64 bits, beyond which they are an error; `~` is that of the type asked
/// for.
///
/// @returns nothing after reporting that it has no such value. @throws SyntaxError where there is no
/// expression.
std::optional<Value> readValue(Context& context, const Type& type, Angles angles = Angles::Closed);

/// Reads a bound or a dimension: a number from 1 on that takes 32 bits. @param what it is, for messages.
/// @returns 1 after reporting that it is none.
std::uint32_t readBound(Context& context, const std::string& what, Angles angles);

/// The number of an integer, character, boolean or enumerator in two's complement.
std::uint64_t bitsOf(const Value& value);

} // namespace ovra::plex::idl
