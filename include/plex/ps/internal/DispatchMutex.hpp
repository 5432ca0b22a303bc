// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Failure.hpp>

#include <atomic>
#include <mutex>
#include <thread>

namespace ovra::plex::ps::internal
{

/// A mutex under which callbacks run, and which knows the thread that runs them: locking it again there would
/// hang, and is refused.
class DispatchMutex
{
public:
    /// Held while callbacks run.
    class Pass
    {
    public:
        explicit Pass(DispatchMutex& mutex) : mutex_(mutex), lock_(mutex.mutex_)
        {
            mutex_.dispatcher_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }

        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        ~Pass() { mutex_.dispatcher_.store(std::thread::id(), std::memory_order_relaxed); }

    private:
        DispatchMutex& mutex_;
        const std::lock_guard<std::mutex> lock_;
    };

    /// Whether the calling thread is inside a pass.
    bool isDispatchingHere() const
    {
        // A thread sees its own id only if it has stored it itself, so no order is needed.
        return dispatcher_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    /// Locks for a change, waiting for a pass on another thread to end.
    /// @throws IllegalStateException inside a callback that runs under this mutex, logged.
    /// @throws std::system_error when the mutex cannot be locked.
    std::unique_lock<std::mutex> lockForChange(const log4cplus::Logger& logger)
    {
        if (isDispatchingHere()) {
            fail<IllegalStateException>(
                logger, "Subscriptions of a kind can not be changed inside a callback of the same kind");
        }
        return std::unique_lock(mutex_);
    }

private:
    std::mutex mutex_;
    std::atomic<std::thread::id> dispatcher_;
};

} // namespace ovra::plex::ps::internal
