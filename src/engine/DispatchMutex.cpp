// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/DispatchMutex.hpp>
#include <plex/ps/internal/Failure.hpp>

namespace ovra::plex::ps::internal
{

std::unique_lock<std::mutex> DispatchMutex::lockForChange(const log4cplus::Logger& logger)
{
    if (isDispatchingHere()) {
        fail<IllegalStateException>(
            logger, "Subscriptions of a kind can not be changed inside a callback of the same kind");
    }
    return std::unique_lock(mutex_);
}

} // namespace ovra::plex::ps::internal
