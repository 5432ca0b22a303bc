// SPDX-License-Identifier: Apache-2.0
#include <plex/module/PubSubType.hpp>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

namespace ovra::plex::ps
{

void reportTooSmall(const char* typeName, const char* what, std::uint32_t bytes)
{
    LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("plexDdsBasePubSub"),
                    "The " << what << " of a value of " << typeName << " takes more than the " << bytes
                           << " bytes that its module states");
}

} // namespace ovra::plex::ps
