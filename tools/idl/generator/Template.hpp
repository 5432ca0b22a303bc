// SPDX-License-Identifier: Apache-2.0
// Texts with places to fill in.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace ovra::plex::idl
{

/// A place's name, and what stands there.
using Filling = std::pair<std::string_view, std::string>;

/// A text with each @name@ in it replaced. @throws std::logic_error for a name that is not given.
std::string filled(std::string_view text, std::initializer_list<Filling> fillings);

/// The same for a text whose first end of line is there for looks only.
std::string filledBlock(std::string_view text, std::initializer_list<Filling> fillings);

/// A documentation comment, wrapped. Lines of the text stay apart; there is nothing for an empty text.
std::string comment(std::string_view text, std::size_t indentation = 0);

} // namespace ovra::plex::idl
