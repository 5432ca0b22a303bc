// SPDX-License-Identifier: Apache-2.0
#include "StartupCheck.hpp"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <mutex>
#include <set>
#include <string>

namespace ovra::plex::startup
{

void record(const std::vector<hostcheck::Finding>& findings)
{
    static std::mutex mutex;
    static std::set<std::string> recorded;
    for (const auto& finding : findings) {
        const std::lock_guard lock(mutex);
        if (recorded.insert(finding.cause).second) {
            LOG4CPLUS_WARN(log4cplus::Logger::getInstance("plexDdsDiscovery"), finding.text());
        }
    }
}

void checkOnce(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos)
{
    static std::mutex mutex;
    static std::set<std::uint32_t> checked;
    {
        const std::lock_guard lock(mutex);
        if (!checked.insert(domain).second) {
            return;
        }
    }
    const auto needs = hostcheck::needsOf(domain, qos);
    record(hostcheck::findings(needs, hostcheck::lookAtHost(needs)));
}

} // namespace ovra::plex::startup
