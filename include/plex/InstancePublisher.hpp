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
/// Threads: publish() and createDataEntity() may be called from several threads at once. close() and the
/// destructor must not run while another thread is inside another operation of the same object.
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
    /// @throws PlexException when the timeout is negative or the transport refuses the value.
    virtual void publish(const T& value, const std::chrono::milliseconds& timeout) = 0;

    /// Sends one value with the given source timestamp.
    ///
    /// @param sourceTimestamp seconds since the epoch, at nanosecond resolution as far as a double carries
    ///        it. DDS refuses times before the epoch.
    /// @throws PlexException as above, and when the timestamp does not fit signed 32-bit seconds.
    virtual void publish(double sourceTimestamp, const T& value,
                         const std::chrono::milliseconds& timeout) = 0;

    /// Waits until the values sent so far are acknowledged (for a limited time) and gives the transport's
    /// resources back. Closing again does nothing.
    /// @throws IllegalStateException inside a callback of Subscriber::subscribeAsync().
    virtual void close() = 0;
};

} // namespace ovra::plex::ps
