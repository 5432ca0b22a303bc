// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/PollTurn.hpp>

namespace ovra::plex::ps::internal
{

PollTurn::Pass::Pass(PollTurn& turn, WallClock::time_point end) : turn_(turn), lock_(turn.mutex_, end)
{
    if (lock_) {
        turn_.poller_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
}

PollTurn::Pass::~Pass()
{
    if (lock_) {
        turn_.poller_.store(std::thread::id(), std::memory_order_relaxed);
    }
}

bool PollTurn::beginCall(const CallRecord& record)
{
    const std::lock_guard lock(callMutex_);
    running_ = &record;
    return !record.ended;
}

void PollTurn::endCall()
{
    {
        const std::lock_guard lock(callMutex_);
        running_ = nullptr;
    }
    callEnded_.notify_all();
}

bool PollTurn::endRecord(CallRecord& record)
{
    record.ended = true;
    return awaitOtherThan(&record);
}

void PollTurn::awaitCalls()
{
    std::unique_lock lock(callMutex_);
    const auto* const running = running_;
    lock.unlock();
    if (running != nullptr) {
        awaitOtherThan(running);
    }
}

/// Outside callbacks, waits until another call than a record's runs, or none. @returns whether it is so.
bool PollTurn::awaitOtherThan(const CallRecord* record)
{
    std::unique_lock lock(callMutex_);
    const auto isOver = [&] {
        return running_ != record;
    };
    if (!isOver() && !CallbackThread::current().isInCallback()) {
        callEnded_.wait(lock, isOver);
    }
    return isOver();
}

} // namespace ovra::plex::ps::internal
