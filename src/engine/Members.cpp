// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/module/Members.hpp>

namespace ovra::plex::ps
{

void checkLength(const char* member, std::size_t length, std::uint32_t bound)
{
    if (bound != 0 && length > bound) {
        throw PlexException("The value for " + std::string(member) + " has a length of " +
                            std::to_string(length) + ", its bound is " + std::to_string(bound));
    }
}

void checkText(const char* member, std::string_view text, std::uint32_t bound)
{
    checkLength(member, text.size(), bound);
    if (text.find('\0') != std::string_view::npos) {
        throw PlexException("The value for " + std::string(member) +
                            " holds a NUL, at which readers would end it");
    }
}

} // namespace ovra::plex::ps
