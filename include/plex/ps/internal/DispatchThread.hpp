// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>

#include <memory>
#include <thread>

namespace ovra::plex::ps::internal
{

class CallbackTurn;

/// The thread of a participant on which callbacks run that asked for one of their own, named
/// "plex-callbacks". It lives as long as somebody holds this object; then it serves what it was given, and
/// ends.
class PLEX_EXPORT DispatchThread
{
public:
    /// The one of a participant, started if there is none. Any thread may call it.
    /// @throws std::system_error when no thread can be started.
    static std::shared_ptr<DispatchThread> of(const eprosima::fastdds::dds::DomainParticipant& participant);

    DispatchThread();
    DispatchThread(const DispatchThread&) = delete;
    DispatchThread& operator=(const DispatchThread&) = delete;

    /// Waits for the thread's end, but inside a callback.
    ~DispatchThread();

    /// Has a turn served that the calling thread has taken.
    void post(CallbackTurn& turn);

private:
    struct Queue;

    static void run(Queue& queue);

    std::shared_ptr<Queue> queue_; ///< shared with the thread, which may outlive this object
    std::thread thread_;
};

} // namespace ovra::plex::ps::internal
