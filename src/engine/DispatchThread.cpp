// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/CallbackTurn.hpp>
#include <plex/ps/internal/Deletions.hpp>
#include <plex/ps/internal/DispatchThread.hpp>

#include <condition_variable>
#include <deque>
#include <map>
#include <pthread.h>
#include <utility>

namespace ovra::plex::ps::internal
{

struct DispatchThread::Queue {
    std::mutex mutex; ///< guards the others
    std::condition_variable changed;
    std::deque<CallbackTurn*> turns;
    bool closed = false;
};

std::shared_ptr<DispatchThread>
DispatchThread::of(const eprosima::fastdds::dds::DomainParticipant& participant)
{
    using Threads = std::map<const void*, std::weak_ptr<DispatchThread>>;
    static std::mutex& mutex = *new std::mutex; // never destroyed, as entities may outlast main()
    static Threads& threads = *new Threads;
    const std::lock_guard lock(mutex);
    std::erase_if(threads, [](const auto& entry) { return entry.second.expired(); });
    auto& known = threads[&participant];
    auto thread = known.lock();
    if (!thread) {
        thread = std::make_shared<DispatchThread>();
        known = thread;
    }
    return thread;
}

DispatchThread::DispatchThread()
    : queue_(std::make_shared<Queue>())
    , thread_([queue = queue_] { run(*queue); })
{
}

DispatchThread::~DispatchThread()
{
    {
        const std::lock_guard lock(queue_->mutex);
        queue_->closed = true;
    }
    queue_->changed.notify_one();
    if (thread_.get_id() == std::this_thread::get_id() || CallbackThread::current().isInCallback()) {
        auto thread = std::make_shared<std::thread>(std::move(thread_)); // std::function copies
        runOnDeletionThread([thread] { thread->join(); });
    } else {
        thread_.join();
    }
}

void DispatchThread::post(CallbackTurn& turn)
{
    {
        const std::lock_guard lock(queue_->mutex);
        queue_->turns.push_back(&turn);
    }
    queue_->changed.notify_one();
}

void DispatchThread::run(Queue& queue)
{
    pthread_setname_np(pthread_self(), "plex-callbacks");
    std::unique_lock lock(queue.mutex);
    for (;;) {
        queue.changed.wait(lock, [&] { return queue.closed || !queue.turns.empty(); });
        if (queue.turns.empty()) {
            return;
        }
        CallbackTurn* const turn = queue.turns.front();
        queue.turns.pop_front();
        lock.unlock();
        turn->serveOnDispatchThread();
        lock.lock();
    }
}

} // namespace ovra::plex::ps::internal
