// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <chrono>
#include <memory>
#include <vector>

namespace ovra::plex::ps
{

/// Gives the most recent value of each instance of a topic, as often as asked.
///
/// Not for seeing every sample: older ones are replaced. Threads: operations may be called from several
/// threads at once; close() and the destructor must not run while another thread is inside
/// readMostRecent(). Ownership: the application owns it and the values that it returns.
template <class T>
class PLEX_EXPORT MrvSubscriber
{
public:
    /// Gives the transport's resources back. Closing again does nothing.
    virtual void close() = 0;

    /// The latest value of every instance that is alive; empty when nothing was received yet. A transport may
    /// leave an instance out that lives on, until its next value, when one of its several writers has left
    /// it.
    ///
    /// @param timeout sleeps for the whole of this time first, whether or not there is data; not negative.
    /// @throws IllegalStateException when the subscriber is closed.
    /// @throws PlexException when the timeout is negative or the transport fails.
    virtual std::vector<std::shared_ptr<T>> readMostRecent(const std::chrono::milliseconds& timeout) = 0;

    virtual ~MrvSubscriber() = default;
};

} // namespace ovra::plex::ps
