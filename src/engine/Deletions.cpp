// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/Deletions.hpp>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <thread>
#include <vector>

namespace ovra::plex::ps::internal
{

namespace
{

using Deletion = std::function<void()>;

class DeletionThread
{
public:
    /// The one of the process, never destroyed, as entities may outlast main().
    static DeletionThread& ofProcess()
    {
        static DeletionThread& thread = *new DeletionThread;
        return thread;
    }

    void run(Deletion deletion)
    {
        const std::lock_guard lock(mutex_);
        deletions_.push_back(std::move(deletion));
        if (!isRunning_) {
            if (thread_.joinable()) {
                thread_.join(); // it has nothing left to do
            }
            isRunning_ = true;
            thread_ = std::thread([this] { runAll(); });
        }
    }

private:
    // After Fast DDS has made what it keeps for the process, so that it still has it when the process exits.
    DeletionThread()
    {
        std::atexit([] { ofProcess().finish(); });
    }

    void runAll()
    {
        std::unique_lock lock(mutex_);
        while (!deletions_.empty()) {
            {
                const auto deletion = std::exchange(deletions_.front(), nullptr);
                deletions_.pop_front();
                lock.unlock();
                deletion();
            } // what it holds goes without the lock
            lock.lock();
        }
        isRunning_ = false;
        idle_.notify_all();
    }

    /// Waits until all is done, unless exit() was called where that can not be.
    void finish()
    {
        std::unique_lock lock(mutex_);
        if (CallbackThread::current().onDdsThread || thread_.get_id() == std::this_thread::get_id()) {
            return;
        }
        idle_.wait(lock, [this] { return !isRunning_; });
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    std::mutex mutex_; ///< guards the others
    std::condition_variable idle_;
    std::deque<Deletion> deletions_;
    bool isRunning_ = false;
    std::thread thread_;
};

struct HeldHere {
    int scopes = 0;
    std::vector<Deletion> deletions;
};

HeldHere& heldHere()
{
    thread_local HeldHere held;
    return held;
}

std::timed_mutex& endpointMutex()
{
    static std::timed_mutex& mutex = *new std::timed_mutex; // as above
    return mutex;
}

} // namespace

void runOnDeletionThread(std::function<void()> deletion)
{
    DeletionThread::ofProcess().run(std::move(deletion));
}

HeldDeletions::HeldDeletions()
{
    ++heldHere().scopes;
}

HeldDeletions::~HeldDeletions()
{
    auto& held = heldHere();
    if (--held.scopes > 0) {
        return;
    }
    for (const auto& deletion : std::exchange(held.deletions, {})) {
        deleteEntity(deletion);
    }
}

bool HeldDeletions::areHere()
{
    return heldHere().scopes > 0;
}

void HeldDeletions::keep(std::function<void()> deletion)
{
    heldHere().deletions.push_back(std::move(deletion));
}

EndpointLock::EndpointLock() : lock_(endpointMutex(), std::chrono::seconds(1)) {}

} // namespace ovra::plex::ps::internal
