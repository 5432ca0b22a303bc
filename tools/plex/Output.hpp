// SPDX-License-Identifier: Apache-2.0
// What commands write to the standard output, line by line. Only the main thread writes.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace ovra::plex::tool
{

/// Thrown when nobody reads the output any more, as with `plex echo … | head`: the command is to end, and all
/// is well.
struct OutputClosed {
};

enum class Colour { Plain, Bold, Dim, Red, Green, Yellow };

/// Takes the places of standard input, output and error output that are closed, as with `plex list >&-`: else
/// the next file or socket that is opened gets what is written there. To be called first.
void holdStandardDescriptors();

/// Writes a line, with its end, at once. Names and values may hold anything, so that of what a terminal obeys
/// only colours get through, and ends of lines and tabs: see printable().
/// @throws OutputClosed; Failure where it can not be written, as on a full disk.
void writeLine(std::string_view line);

/// Writes JSON, with the end of its line. Texts that are no UTF-8 have U+FFFD instead of what is none.
/// @param indentation of its lines; -1: it is one line. @throws as writeLine().
void writeJson(const nlohmann::ordered_json& json, int indentation = -1);

/// Writes a text of the program's own as it is. @throws as writeLine().
void write(std::string_view text);

/// Whether nobody reads the output any more. Commands that wait ask this now and then.
bool isOutputClosed();

/// A text, printable(), in a colour, on a terminal that is to have colours: not where NO_COLOR is set, or
/// TERM is "dumb".
std::string coloured(std::string_view text, Colour colour);

/// Writes a remark for people to the standard error output, behind "plex: ", printable().
void remark(const std::string& text);

} // namespace ovra::plex::tool
