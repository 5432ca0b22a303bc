// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntityFactory.hpp>

#include <chrono>
#include <memory>

namespace ovra::plex
{
class Plex;
}

namespace ovra::plex::ps
{

/// Publishes values: of one instance of a topic, or (as a Publisher) of any.
///
/// Threads: all operations may be called from several threads at once, close() and inside callbacks included.
/// The destructor must not run while another thread is inside an operation, but may inside a callback that
/// its own publish() runs. publish() runs the callbacks of subscribers of the same process before it returns,
/// see Subscriber::subscribeAsync().
template <class T>
class PLEX_EXPORT InstancePublisher : public virtual DataEntityFactory<T>
{
public:
    /// The middleware instance through which this publisher was made.
    virtual std::shared_ptr<Plex> getPlex() const = 0;

    /// Sends one value; its source timestamp is the time of the call.
    ///
    /// @param value a value made by this transport; it is copied and may be reused at once.
    /// @param timeout must not be negative. How long the call may block for room in the history is a
    ///        matter of the writer's quality of service, not of this argument.
    /// @throws IllegalStateException when the publisher is closed or the value is another transport's.
    /// @throws PlexException when the timeout is negative or the transport refuses the value; and whatever a
    ///         callback throws that it runs, unless such exceptions are logged.
    virtual void publish(const T& value, const std::chrono::milliseconds& timeout) = 0;

    /// Sends one value with the given source timestamp.
    ///
    /// @param sourceTimestamp seconds since the epoch, at nanosecond resolution as far as a double carries
    ///        it. DDS refuses times before the epoch.
    /// @throws PlexException as above, and when the timestamp does not fit signed 32-bit seconds.
    virtual void publish(double sourceTimestamp, const T& value,
                         const std::chrono::milliseconds& timeout) = 0;

    /// Waits until the values sent so far are acknowledged (for a limited time) and gives the transport's
    /// resources back. Closing again does nothing. Publications under way on other threads are finished.
    virtual void close() = 0;
};

} // namespace ovra::plex::ps
