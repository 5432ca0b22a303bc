// SPDX-License-Identifier: Apache-2.0
#include "Template.hpp"

#include <algorithm>
#include <stdexcept>

namespace ovra::plex::idl
{

namespace
{

constexpr std::size_t widestLine = 110;

const std::string& valueOf(std::string_view name, std::initializer_list<Filling> fillings)
{
    const auto* const found =
        std::ranges::find_if(fillings, [name](const Filling& filling) { return filling.first == name; });
    if (found == fillings.end()) {
        throw std::logic_error("nothing is given for @" + std::string(name) + "@");
    }
    return found->second;
}

/// The part of a line that fits, up to a blank where there is one.
std::size_t fittingSize(std::string_view line, std::size_t width)
{
    if (line.size() <= width) {
        return line.size();
    }
    const std::size_t blank = line.rfind(' ', width);
    return blank == std::string_view::npos || blank == 0 ? std::min(line.find(' '), line.size()) : blank;
}

void appendWrapped(std::string& result, std::string_view line, const std::string& margin)
{
    const std::size_t width = widestLine - std::min(widestLine / 2, margin.size() + 1);
    do {
        const std::size_t size = fittingSize(line, width);
        result += margin;
        result += size == 0 ? "" : " ";
        result += line.substr(0, size);
        result += '\n';
        line.remove_prefix(std::min(size + 1, line.size()));
    } while (!line.empty());
}

} // namespace

std::string filled(std::string_view text, std::initializer_list<Filling> fillings)
{
    std::string result;
    for (std::size_t mark = text.find('@'); mark != std::string_view::npos; mark = text.find('@')) {
        const std::size_t end =
            text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", mark + 1);
        const bool isPlace = end != std::string_view::npos && text[end] == '@' && end > mark + 1;
        result += text.substr(0, isPlace ? mark : mark + 1);
        if (isPlace) {
            result += valueOf(text.substr(mark + 1, end - mark - 1), fillings);
        }
        text.remove_prefix(isPlace ? end + 1 : mark + 1);
    }
    return result.append(text);
}

std::string filledBlock(std::string_view text, std::initializer_list<Filling> fillings)
{
    return filled(text.substr(text.starts_with('\n') ? 1 : 0), fillings);
}

std::string comment(std::string_view text, std::size_t indentation)
{
    const std::string margin = std::string(indentation, ' ') + "///";
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        // A backslash at its end would make the line that follows part of the comment.
        appendWrapped(result, line.substr(0, line.find_last_not_of("\\ ") + 1), margin);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

} // namespace ovra::plex::idl
