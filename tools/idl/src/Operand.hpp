// SPDX-License-Identifier: Apache-2.0
// What parts of an expression come to before it is known what the whole is to be.
#pragma once

#include "Scopes.hpp"

#include <string>
#include <variant>

namespace ovra::plex::idl
{

/// Wide enough for a signed and an unsigned number of 64 bits, and for what one step makes of them.
__extension__ using Integer = __int128;

struct CharacterOperand {
    char32_t value = 0;
    bool wide = false;
};

struct TextOperand {
    std::string text;
    bool wide = false;
};

using Operand = std::variant<Integer, double, bool, CharacterOperand, TextOperand, EnumeratorSymbol>;

/// Why an operation or a conversion is not possible.
struct OperandFault {
    std::string message;
};

/// Carries out one of `|`, `^`, `&`, `<<`, `>>`, `+`, `-`, `*`, `/`, `%`. @throws OperandFault
Operand combined(std::string_view name, const Operand& left, const Operand& right);

/// Carries out `+`, `-` or `~`. @param type of the whole, whose width `~` has. @throws OperandFault
Operand prefixed(std::string_view name, const Operand& operand, const Type& type);

/// The operand as a value of a type that is no alias. @throws OperandFault
Value converted(const Operand& operand, const Type& type);

/// A value that a constant has, as an operand. @param type of the constant.
Operand operandOf(const Value& value, const Type& type);

/// "-1"
std::string toString(Integer value);

} // namespace ovra::plex::idl
