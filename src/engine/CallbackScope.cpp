// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/CallbackScope.hpp>
#include <plex/ps/internal/Failure.hpp>

namespace ovra::plex::ps::internal
{

namespace
{

thread_local int scopes = 0;

} // namespace

int& CallbackScope::depth()
{
    return scopes;
}

void CallbackScope::checkMayClose(const log4cplus::Logger& logger, const Uri& uri)
{
    if (depth() > 0) {
        fail<IllegalStateException>(
            logger,
            withUri("Publishers and subscribers can not be closed inside an asynchronous callback", uri));
    }
}

} // namespace ovra::plex::ps::internal
