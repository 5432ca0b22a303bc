// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Uri.hpp>

#include <log4cplus/logger.h>

namespace ovra::plex::ps::internal
{

/// The time in which the calling thread runs asynchronous callbacks, for DDS. Scopes of a thread nest.
///
/// DDS holds locks of the reader, and inside the process of the writer too, around them. Deleting an entity
/// there hangs now and then: the deletion waits for the participant's event thread, and that thread for
/// these locks.
class PLEX_EXPORT CallbackScope
{
public:
    CallbackScope() : depth_(depth()) { ++depth_; }

    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    ~CallbackScope() { --depth_; }

    /// Refuses to close an entity inside such a callback.
    /// @throws IllegalStateException, logged.
    static void checkMayClose(const log4cplus::Logger& logger, const Uri& uri);

private:
    /// How many scopes the calling thread is in, whichever modules they belong to.
    static int& depth();

    int& depth_;
};

} // namespace ovra::plex::ps::internal
