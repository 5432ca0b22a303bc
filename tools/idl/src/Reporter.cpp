// SPDX-License-Identifier: Apache-2.0
#include "Reporter.hpp"

#include <utility>

namespace ovra::plex::idl
{

void Reporter::add(Severity severity, const Location& place, std::string message, std::string hint)
{
    const Source& source = sources_[place.file];
    diagnostics_.add({severity, source.path, place.line, place.column, std::move(message), std::move(hint),
                      std::string(source.line(place.line))});
}

void Reporter::error(const Location& place, std::string message, std::string hint)
{
    add(Severity::Error, place, std::move(message), std::move(hint));
    if (diagnostics_.areTooMany()) {
        throw TooManyErrors();
    }
}

void Reporter::warn(const Location& place, std::string message, std::string hint)
{
    // As many warnings as errors: what is beyond them says nothing new.
    if (diagnostics_.warnings() < Diagnostics::MaximumErrors) {
        add(Severity::Warning, place, std::move(message), std::move(hint));
    }
}

std::string Reporter::name(const Location& place) const
{
    return sources_[place.file].path + ":" + std::to_string(place.line);
}

} // namespace ovra::plex::idl
