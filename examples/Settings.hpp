// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CommandLine.hpp"

#include <plex/Plex.hpp>

#include <string>

/// What the example programs have in common: where to meet, and with which quality of service.
struct Settings {
    unsigned domain = 0;
    std::string profiles;
    std::string library = "latched";

    void addTo(CommandLine& commandLine);
    ovra::plex::Plex::Properties properties() const;
    ovra::plex::Uri uri(const std::string& topic) const;
};

/// Sends warnings and errors of the middleware to standard error. The libraries leave logging to the
/// application.
void configureLogging();
