// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/CallbackTurn.hpp>
#include <plex/ps/internal/Time.hpp>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ovra::plex::ps::internal
{

/// The right to run a subscriber's polled callbacks, which one thread at a time has.
class PLEX_EXPORT PollTurn
{
public:
    /// The time in which a thread has the turn.
    class PLEX_EXPORT Pass
    {
    public:
        /// Waits for the turn until a point in time, not longer, as it may be inside a callback that the one
        /// who has the turn waits for.
        Pass(PollTurn& turn, WallClock::time_point end);
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass();

        /// Whether the thread has the turn.
        explicit operator bool() const { return lock_.owns_lock(); }

    private:
        PollTurn& turn_;
        const CallbackScope scope_;
        std::unique_lock<std::timed_mutex> lock_;
    };

    /// Whether the calling thread has the turn.
    bool isHere() const
    {
        // A thread sees its own id only if it has stored it itself, so no order is needed.
        return poller_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    /// As those of a CallbackTurn.
    bool beginCall(const CallRecord& record);
    void endCall();
    bool endRecord(CallRecord& record);
    void awaitCalls();

private:
    bool awaitOtherThan(const CallRecord* record);

    std::timed_mutex mutex_; ///< held by the thread that has the turn
    std::atomic<std::thread::id> poller_;
    std::mutex callMutex_; ///< guards the next
    const CallRecord* running_ = nullptr;
    std::condition_variable callEnded_;
};

} // namespace ovra::plex::ps::internal
