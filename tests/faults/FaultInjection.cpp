// SPDX-License-Identifier: Apache-2.0
#include "FaultInjection.hpp"

#include <gtest/gtest.h>

#include <algorithm>
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

Disturbance* disturbanceOf(const std::string& operation)
{
    const std::lock_guard lock(disturbances().mutex);
    auto& all = disturbances().all;
    const auto found = std::find_if(all.rbegin(), all.rend(), [&](const Disturbance* disturbance) {
        return disturbance->operation() == operation;
    });
    if (found == all.rend()) {
        return nullptr;
    }
    (*found)->count();
    return *found;
}

} // namespace plex::test
