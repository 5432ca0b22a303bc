// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <log4cplus/logger.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace ovra::plex::ps::internal
{

/// A mutex under which callbacks run, and which knows the thread that runs them: locking it again there would
/// hang, and is refused.
class PLEX_EXPORT DispatchMutex
{
public:
    /// Held while callbacks run.
    class DispatchLock
    {
    public:
        explicit DispatchLock(DispatchMutex& mutex) : mutex_(mutex), lock_(mutex.mutex_)
        {
            mutex_.dispatcher_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }

        DispatchLock(const DispatchLock&) = delete;
        DispatchLock& operator=(const DispatchLock&) = delete;

        ~DispatchLock() { mutex_.dispatcher_.store(std::thread::id(), std::memory_order_relaxed); }

    private:
        DispatchMutex& mutex_;
        const std::lock_guard<std::mutex> lock_;
    };

    /// Whether the calling thread is holds the dispatch lock.
    bool isDispatchingHere() const
    {
        // A thread sees its own id only if it has stored it itself, so no order is needed.
        return dispatcher_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    /// Locks for a change, waiting for callbacks on another thread to end.
    /// @throws IllegalStateException inside a callback that runs under this mutex, logged.
    /// @throws std::system_error when the mutex cannot be locked.
    std::unique_lock<std::mutex> lockForChange(const log4cplus::Logger& logger);

private:
    std::mutex mutex_;
    std::atomic<std::thread::id> dispatcher_;
};

} // namespace ovra::plex::ps::internal
