// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/CallbackThread.hpp>

#include <functional>
#include <mutex>
#include <utility>

/// Where and when DDS's entities are deleted.
namespace ovra::plex::ps::internal
{

/// Runs a deletion on a thread of the process's own, which lives while there is something to do. What is left
/// when the process exits is done before that. Any thread may call it.
PLEX_EXPORT void runOnDeletionThread(std::function<void()> deletion);

/// Holds deletions of the calling thread back until it ends, for a time in which a lock is held that a
/// deletion must not wait under. Scopes nest; the outermost runs them.
class PLEX_EXPORT HeldDeletions
{
public:
    HeldDeletions();
    HeldDeletions(const HeldDeletions&) = delete;
    HeldDeletions& operator=(const HeldDeletions&) = delete;
    ~HeldDeletions();

    /// Whether the calling thread is in a scope.
    static bool areHere();

    /// Keeps a deletion for the end of the calling thread's scope.
    static void keep(std::function<void()> deletion);
};

/// Runs what deletes an entity of DDS: at once, or later where a scope holds it back, or elsewhere where DDS
/// holds locks around a callback. A deletion waits for the participant's event thread, and that thread for
/// these locks.
template <class Deletion>
void deleteEntity(const Deletion& deletion)
{
    if (HeldDeletions::areHere()) {
        HeldDeletions::keep(deletion);
    } else if (CallbackThread::current().onDdsThread) {
        runOnDeletionThread(deletion);
    } else {
        deletion();
    }
}

/// Makes and deletes readers and writers one after the other in the process: Fast DDS's discovery meets
/// endpoints that go while others come (segmentation faults, 2.14 and 3.1). Given up after a second, so that
/// it can not deadlock: who holds it may wait for locks of DDS that are held around a callback, and that
/// callback for a thread that is about to take it. Never taken on a thread of DDS.
class PLEX_EXPORT EndpointLock
{
public:
    EndpointLock();

private:
    std::unique_lock<std::timed_mutex> lock_;
};

} // namespace ovra::plex::ps::internal
