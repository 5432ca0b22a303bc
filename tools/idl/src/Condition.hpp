// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Token.hpp"

#include <optional>
#include <span>
#include <string>

namespace ovra::plex::idl
{

/// What a condition of the preprocessor comes to.
struct ConditionResult {
    bool holds = false;
    std::string fault; ///< why it can not be told; empty where it can
    Location place;    ///< of the fault
};

/// Evaluates an `#if`: integers, comparisons, arithmetic, `&&`, `||`, `!`, parentheses. A name that is still
/// there counts 0.
/// @param tokens what is left of the line after `defined` and macros were replaced, with an end.
ConditionResult evaluateCondition(std::span<const Token> tokens);

} // namespace ovra::plex::idl
