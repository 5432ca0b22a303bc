// SPDX-License-Identifier: Apache-2.0
#include "Documentation.hpp"

#include "Text.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

/// A line of a block comment without the star before it. Deeper indentation, as of a list, stays.
std::string_view withoutStar(std::string_view line)
{
    const std::size_t star = line.find_first_not_of(" \t");
    if (star == std::string_view::npos) {
        return {};
    }
    line.remove_prefix(line[star] == '*' ? star + 1 : star);
    if (line.starts_with(' ')) {
        line.remove_prefix(1);
    }
    return line.substr(0, line.find_last_not_of(" \t\r") + 1);
}

std::string textOfBlock(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        result += withoutStar(text.substr(0, end));
        result += '\n';
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::string(trimmed(result));
}

} // namespace

std::string documentationOf(std::string_view comment)
{
    const bool isBlock = comment.starts_with("/*");
    comment.remove_prefix(3);
    comment.remove_prefix(comment.starts_with('<') ? 1 : 0);
    if (!isBlock) {
        comment.remove_prefix(comment.starts_with(' ') ? 1 : 0);
        return std::string(comment.substr(0, comment.find_last_not_of(" \t\r") + 1));
    }
    comment.remove_suffix(2);
    return textOfBlock(comment);
}

} // namespace ovra::plex::idl
