// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Uri.hpp>

#include <log4cplus/logger.h>

#include <memory>
#include <mutex>

namespace ovra::plex::ps::internal
{

/// What the calling thread does for callbacks, over all modules of the process.
struct CallbackThread {
    int publishing = 0;  ///< publications under way: what arrives meanwhile is noted
    int dispatching = 0; ///< turns of asynchronous callbacks under way: what arrives waits for their end
    int callbacks = 0;   ///< dispatches of any kind under way: nothing waits for another thread's callbacks
    bool onDdsThread = false; ///< DDS holds locks around what runs

    bool hasTurns = false; ///< there are turns to serve, or to wait for, when the publication ends

    bool isInCallback() const { return callbacks > 0; }

    /// The calling thread's.
    PLEX_EXPORT static CallbackThread& current();
};

/// Destroys an object: at once, or, inside a callback, when that has returned. What a callback gives up may
/// be what it was called with.
PLEX_EXPORT void giveUp(std::shared_ptr<void> object);

/// Refuses to make an entity where DDS holds locks around a callback: the making waits for them, on another
/// thread of DDS.
/// @throws IllegalStateException, logged.
PLEX_EXPORT void checkMayMakeEntities(const log4cplus::Logger& logger, const Uri& uri);

/// Locks a mutex under which an entity is closed; inside a callback only if it is free, as whoever closes may
/// wait for that callback.
PLEX_EXPORT std::unique_lock<std::mutex> lockToClose(std::mutex& mutex);

/// A time in which the calling thread runs callbacks. When the outermost ends, what they gave up goes.
class PLEX_EXPORT CallbackScope
{
public:
    CallbackScope() : thread_(CallbackThread::current()) { ++thread_.callbacks; }

    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;
    ~CallbackScope();

private:
    CallbackThread& thread_;
};

} // namespace ovra::plex::ps::internal
