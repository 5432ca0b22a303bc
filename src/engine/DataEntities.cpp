// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/ps/DataEntities.hpp>

#include <string>

namespace ovra::plex::ps
{

void internal::refuseForeignValue(const log4cplus::Logger& logger, int line)
{
    const std::string text = "Data type for instance or value is incorrect. Not a DDS supported type";
    if (logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL)) {
        logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, text, "include/plex/ps/internal/DdsBasePubSub", line);
    }
    throw IllegalStateException(text);
}

} // namespace ovra::plex::ps
