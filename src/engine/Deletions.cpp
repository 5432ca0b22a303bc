// SPDX-License-Identifier: Apache-2.0
#include "BackgroundThread.hpp"

#include <plex/ps/internal/Deletions.hpp>

#include <chrono>
#include <cstdlib>
#include <vector>

namespace ovra::plex::ps::internal
{

namespace
{

using Deletion = std::function<void()>;

/// Made after Fast DDS has made what it keeps for the process, so that it still has it when the process
/// exits.
BackgroundThread& deletionThread()
{
    static BackgroundThread& thread = []() -> BackgroundThread& {
        static auto& made = *new BackgroundThread("plex-deletions");
        std::atexit([] { made.finish(); });
        return made;
    }();
    return thread;
}

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
    deletionThread().run(std::move(deletion));
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
