// SPDX-License-Identifier: Apache-2.0
#include "BackgroundThread.hpp"

#include <plex/ps/internal/CallbackThread.hpp>

#include <pthread.h>
#include <utility>

namespace ovra::plex::ps::internal
{

void BackgroundThread::run(std::function<void()> task)
{
    const std::lock_guard lock(mutex_);
    if (isStopped_) {
        return;
    }
    tasks_.push_back(std::move(task));
    if (!isRunning_) {
        if (thread_.joinable()) {
            thread_.join(); // it has nothing left to do
        }
        isRunning_ = true;
        thread_ = std::thread([this] { runAll(); });
        pthread_setname_np(thread_.native_handle(), name_); // from here, so that it never has another one
    }
}

void BackgroundThread::runAll()
{
    std::unique_lock lock(mutex_);
    while (!tasks_.empty()) {
        {
            const auto task = std::exchange(tasks_.front(), nullptr);
            tasks_.pop_front();
            lock.unlock();
            task();
        } // what it holds goes without the lock
        lock.lock();
    }
    isRunning_ = false;
    idle_.notify_all();
}

void BackgroundThread::finish()
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

void BackgroundThread::stop()
{
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    finish();
}

bool BackgroundThread::isHere()
{
    const std::lock_guard lock(mutex_);
    return thread_.get_id() == std::this_thread::get_id();
}

} // namespace ovra::plex::ps::internal
