// SPDX-License-Identifier: Apache-2.0
#include "FaultInjection.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <vector>

namespace plex::test
{

namespace
{

struct Disturbances {
    std::mutex mutex; ///< guards what follows
    std::vector<Disturbance*> all;
};

Disturbances& disturbances()
{
    static Disturbances instance;
    return instance;
}

// Where locking fails.
std::atomic<std::uintptr_t> unlockableBegin = 0;
std::atomic<std::uintptr_t> unlockableEnd = 0;

} // namespace

Disturbance::Disturbance(std::string operation, Calls expectation)
    : operation_(std::move(operation))
    , expectation_(expectation)
{
    const std::lock_guard lock(disturbances().mutex);
    disturbances().all.push_back(this);
}

Disturbance::~Disturbance()
{
    const std::lock_guard lock(disturbances().mutex);
    std::erase(disturbances().all, this);
    EXPECT_TRUE(calls_ > 0 || expectation_ == Calls::Optional) << operation_ << " was never called";
}

Unlockable::Unlockable(const void* object, std::size_t size)
{
    unlockableBegin = reinterpret_cast<std::uintptr_t>(object);
    unlockableEnd = unlockableBegin + size;
}

Unlockable::~Unlockable()
{
    unlockableEnd = 0;
}

bool Unlockable::contains(const void* mutex)
{
    const auto address = reinterpret_cast<std::uintptr_t>(mutex);
    return address >= unlockableBegin && address < unlockableEnd;
}

Disturbance* disturbanceOf(const std::string& operation)
{
    const std::lock_guard lock(disturbances().mutex);
    const auto& known = disturbances().all;
    const auto found = std::find_if(known.rbegin(), known.rend(), [&](const Disturbance* disturbance) {
        return disturbance->operation() == operation;
    });
    if (found == known.rend()) {
        return nullptr;
    }
    (*found)->count();
    return *found;
}

} // namespace plex::test
