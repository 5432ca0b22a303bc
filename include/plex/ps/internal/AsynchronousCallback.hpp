// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/Failure.hpp>

namespace ovra::plex::ps::internal
{

/// Marks the time in which the calling thread runs callbacks for DDS.
///
/// DDS holds locks of the reader, and inside the process of the writer too, around them. Deleting an entity
/// there hangs now and then: the deletion waits for the participant's event thread, and that thread for
/// these locks.
class PLEX_EXPORT AsynchronousCallback // exported, so that all modules of a process count together
{
public:
    AsynchronousCallback() { ++depth(); }

    AsynchronousCallback(const AsynchronousCallback&) = delete;
    AsynchronousCallback& operator=(const AsynchronousCallback&) = delete;

    ~AsynchronousCallback() { --depth(); }

    /// Refuses to close an entity inside such a callback.
    /// @throws IllegalStateException, logged.
    static void checkMayClose(const log4cplus::Logger& logger, const Uri& uri)
    {
        if (depth() > 0) {
            fail<IllegalStateException>(
                logger,
                withUri("Publishers and subscribers can not be closed inside an asynchronous callback", uri));
        }
    }

private:
    // Initial-exec: found without a call, which each callback would pay for.
    static int& depth()
    {
        [[gnu::tls_model("initial-exec")]] thread_local int callbacks = 0;
        return callbacks;
    }
};

} // namespace ovra::plex::ps::internal
