// SPDX-License-Identifier: Apache-2.0
#include "MadeEntities.hpp"

#include <map>
#include <mutex>

namespace plex::test
{

namespace
{

struct MadeEntities {
    std::mutex mutex; ///< guards what follows
    std::map<std::string, void*> byOperation;
};

MadeEntities& madeEntities()
{
    static MadeEntities instance;
    return instance;
}

} // namespace

void rememberMade(const std::string& operation, void* entity)
{
    const std::lock_guard lock(madeEntities().mutex);
    madeEntities().byOperation[operation] = entity;
}

void* lastMade(const std::string& operation)
{
    const std::lock_guard lock(madeEntities().mutex);
    return madeEntities().byOperation[operation];
}

} // namespace plex::test
