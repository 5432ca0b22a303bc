// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/InstancePublisher.hpp>

#include <memory>

namespace ovra::plex::ps
{

/// Publishes values of the topic type T on one topic.
///
/// Not for a single instance at a high rate: an instance publisher looks the instance up once.
/// Threads: as InstancePublisher. Ownership: the application owns it; dropping it closes it.
template <class T>
class PLEX_EXPORT Publisher : public virtual InstancePublisher<T>
{
public:
    /// A publisher for the one instance whose key the given value carries. It shares the ownership of this
    /// publisher's resources, so it may outlive it; closing this publisher closes it too.
    /// @throws IllegalStateException when the publisher is closed, or the type has no key ("Key instance
    ///         not created").
    virtual std::unique_ptr<InstancePublisher<T>> createInstancePublisher(const T& instance) = 0;
};

} // namespace ovra::plex::ps
