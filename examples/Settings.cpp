// SPDX-License-Identifier: Apache-2.0
#include "Settings.hpp"

#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>

void Settings::addTo(CommandLine& commandLine)
{
    commandLine.option("--domain", domain, "DDS domain", 232);
    commandLine.option("--profiles", profiles, "XML file of QoS profiles; without it the defaults of DDS");
    commandLine.option("--library", library, "the library of profiles to use");
}

ovra::plex::Plex::Properties Settings::properties() const
{
    if (profiles.empty()) {
        return {};
    }
    return {{"dds.qos.profile.file", profiles}, {"dds.qos.profile.library", library}};
}

ovra::plex::Uri Settings::uri(const std::string& topic) const
{
    return ovra::plex::Uri("dds+ps://" + std::to_string(domain) + "/" + topic);
}

void configureLogging()
{
    log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
}
