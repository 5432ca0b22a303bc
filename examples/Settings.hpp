// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

#include <CLI/CLI.hpp>
#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>

#include <string>

/// What the example programs have in common: where to meet, and with which quality of service.
struct Settings {
    unsigned domain = 0;
    std::string profiles;
    std::string library = "latched";

    void addTo(CLI::App& app)
    {
        app.add_option("--domain", domain, "DDS domain")->check(CLI::Range(0, 232))->capture_default_str();
        app.add_option("--profiles", profiles, "XML file of QoS profiles; without it the defaults of DDS");
        app.add_option("--library", library, "the library of profiles to use")->capture_default_str();
    }

    ovra::plex::Plex::Properties properties() const
    {
        if (profiles.empty()) {
            return {};
        }
        return {{"dds.qos.profile.file", profiles}, {"dds.qos.profile.library", library}};
    }

    ovra::plex::Uri uri(const std::string& topic) const
    {
        return ovra::plex::Uri("dds+ps://" + std::to_string(domain) + "/" + topic);
    }
};

/// Sends warnings and errors of the middleware to standard error. The libraries leave logging to the
/// application.
inline void configureLogging()
{
    log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
}
