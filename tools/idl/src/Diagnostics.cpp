// SPDX-License-Identifier: Apache-2.0
#include "Text.hpp"

#include <plex/idl/Diagnostics.hpp>

#include <utility>

namespace ovra::plex::idl
{

namespace
{

constexpr std::size_t widestLine = 240;

/// A line as a terminal can show it: a blank for each control character, a question mark for each stray byte.
std::string printable(std::string_view line)
{
    std::string result;
    while (!line.empty()) {
        const std::size_t size = characterSize(line);
        const bool control = static_cast<unsigned char>(line[0]) < ' ' || line[0] == '\x7F';
        if (size == 0) {
            result += '?';
        } else if (control && line[0] != '\t') {
            result += ' ';
        } else {
            result += line.substr(0, size);
        }
        line.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return result;
}

/// Blanks, and the tabulators of the line, up to a column.
std::string indentation(std::string_view line, std::uint32_t column)
{
    std::string result;
    for (std::uint32_t i = 1; i < column; ++i) {
        result += line.starts_with('\t') ? '\t' : ' ';
        line.remove_prefix(std::min(line.size(), std::max<std::size_t>(characterSize(line), 1)));
    }
    return result;
}

} // namespace

void Diagnostics::add(Diagnostic diagnostic)
{
    errors_ += diagnostic.severity == Severity::Error ? 1 : 0;
    all_.push_back(std::move(diagnostic));
}

std::string toString(const Diagnostic& diagnostic)
{
    std::string text = diagnostic.file;
    if (diagnostic.line > 0) {
        text += ":" + std::to_string(diagnostic.line) + ":" + std::to_string(diagnostic.column);
    }
    text += text.empty() ? "" : ": ";
    text += diagnostic.severity == Severity::Error ? "error: " : "warning: ";
    text += diagnostic.message;
    if (!diagnostic.sourceLine.empty() && diagnostic.column <= widestLine) {
        const std::string line = printable(std::string_view(diagnostic.sourceLine).substr(0, 4 * widestLine));
        text += "\n" + line + "\n" + indentation(line, diagnostic.column) + "^";
    }
    if (!diagnostic.hint.empty()) {
        text += "\nhint: " + diagnostic.hint;
    }
    return text;
}

std::string toString(const Diagnostics& diagnostics)
{
    std::string text;
    for (const auto& diagnostic : diagnostics.all()) {
        text += toString(diagnostic) + "\n";
    }
    if (diagnostics.areTooMany()) {
        text += "Stopped after " + std::to_string(diagnostics.errors()) + " errors.\n";
    }
    return text;
}

} // namespace ovra::plex::idl
