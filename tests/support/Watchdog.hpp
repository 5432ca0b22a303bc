// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace plex::test
{

/// Ends the process when what it watches takes too long, and says what that was.
class Watchdog
{
public:
    static constexpr int exitCode = 4;

    Watchdog(std::string what, std::chrono::milliseconds deadline)
        : step_(std::move(what))
        , thread_([this, deadline] { watch(deadline); })
    {
    }

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    ~Watchdog()
    {
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }

    /// Names what comes next.
    void enter(std::string step)
    {
        const std::lock_guard lock(mutex_);
        step_ = std::move(step);
    }

    /// Gives the whole time anew.
    void restart() { restarted_ = true; }

private:
    void watch(std::chrono::milliseconds deadline)
    {
        std::unique_lock lock(mutex_);
        bool over = false;
        do {
            restarted_ = false;
            over = changed_.wait_for(lock, deadline, [this] { return over_; });
        } while (!over && restarted_);
        if (!over) {
            std::fprintf(stderr, "HANGS: %s\n", step_.c_str());
            _exit(exitCode);
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool over_ = false;
    std::atomic<bool> restarted_ = false;
    std::string step_;
    std::thread thread_;
};

} // namespace plex::test
