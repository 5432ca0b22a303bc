// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Source.hpp"

#include <plex/idl/Diagnostics.hpp>

#include <string>

namespace ovra::plex::idl
{

/// Thrown when there are so many errors that nobody would read more of them.
struct TooManyErrors {
};

/// Turns a complaint about a place into a diagnostic.
class Reporter
{
public:
    Reporter(const Sources& sources, Diagnostics& diagnostics) : sources_(sources), diagnostics_(diagnostics)
    {
    }

    /// @throws TooManyErrors after the last one that is taken.
    void error(const Location& place, std::string message, std::string hint = {});
    void warn(const Location& place, std::string message, std::string hint = {});

    /// How many errors there are so far.
    std::size_t errors() const { return diagnostics_.errors(); }

    /// Whether a place is in a file that was included, not named.
    bool isIncluded(const Location& place) const { return sources_[place.file].included; }

    /// The path of the file in which a place is.
    const std::string& path(const Location& place) const { return sources_[place.file].path; }

    /// "file:line", for a hint that refers to another place.
    std::string name(const Location& place) const;

private:
    void add(Severity severity, const Location& place, std::string message, std::string hint);

    const Sources& sources_;
    Diagnostics& diagnostics_;
};

} // namespace ovra::plex::idl
