// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace ovra::plex::tool
{

enum class Layout {
    Escaped, ///< a text is part of a line
    Kept,    ///< ends of lines and tabs stay
};

/// A text that a terminal shows and does not obey, whoever has made it: control characters, and those that
/// change the direction of writing, stand as in JSON ("\u001b", "\n"), bytes that are no UTF-8 as "\xff".
std::string printable(std::string_view text, Layout layout = Layout::Escaped);

} // namespace ovra::plex::tool
