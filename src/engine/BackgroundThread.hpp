// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace ovra::plex::ps::internal
{

/// A thread of the process that lives while there is something to do.
///
/// Threads: any. Objects are never destroyed, as entities may outlast main(); what is left when the process
/// exits is done before that, if their makers have finish() called.
class BackgroundThread
{
public:
    /// @param name of the thread, at most 15 bytes.
    explicit BackgroundThread(const char* name) : name_(name) {}

    BackgroundThread(const BackgroundThread&) = delete;
    BackgroundThread& operator=(const BackgroundThread&) = delete;
    ~BackgroundThread() = delete;

    /// Has a task run behind those that were given before. It must not throw.
    void run(std::function<void()> task);

    /// Waits until all is done, unless exit() was called where that can not be.
    void finish();

    /// The same, and leaves undone what is given to it from then on.
    void stop();

    /// Whether the calling thread is this one.
    bool isHere();

private:
    void runAll();

    const char* const name_;
    std::mutex mutex_; ///< guards the others
    std::condition_variable idle_;
    std::deque<std::function<void()>> tasks_;
    bool isRunning_ = false;
    bool isStopped_ = false;
    std::thread thread_;
};

} // namespace ovra::plex::ps::internal
