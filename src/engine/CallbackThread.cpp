// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/CallbackThread.hpp>
#include <plex/ps/internal/Deletions.hpp>
#include <plex/ps/internal/Failure.hpp>

#include <utility>
#include <vector>

namespace ovra::plex::ps::internal
{

namespace
{

using GivenUp = std::vector<std::shared_ptr<void>>;

GivenUp& givenUpHere()
{
    thread_local GivenUp objects;
    return objects;
}

} // namespace

CallbackThread& CallbackThread::current()
{
    constinit static thread_local CallbackThread thread;
    return thread;
}

void giveUp(std::shared_ptr<void> object)
{
    if (CallbackThread::current().isInCallback()) {
        givenUpHere().push_back(std::move(object));
    }
}

std::unique_lock<std::mutex> lockToClose(std::mutex& mutex)
{
    return CallbackThread::current().isInCallback() ? std::unique_lock(mutex, std::try_to_lock)
                                                    : std::unique_lock(mutex);
}

CallbackScope::~CallbackScope()
{
    if (--thread_.callbacks > 0) {
        return;
    }
    auto& givenUp = givenUpHere();
    while (!givenUp.empty()) {
        auto objects = std::exchange(givenUp, {});
        if (thread_.onDdsThread) {
            runOnDeletionThread([objects = std::move(objects)] {});
        }
    }
}

void checkMayMakeEntities(const log4cplus::Logger& logger, const Uri& uri)
{
    if (CallbackThread::current().onDdsThread) {
        fail<IllegalStateException>(
            logger, withUri("Publishers and subscribers can not be made inside an asynchronous callback on a "
                            "thread of DDS, but with property dds.callback.thread=own",
                            uri));
    }
}

} // namespace ovra::plex::ps::internal
