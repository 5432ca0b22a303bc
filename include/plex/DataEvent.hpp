// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <cstdint>
#include <memory>

namespace ovra::plex::ps
{

/// Which instances a filter selects.
enum class InstanceState : std::int32_t {
    Alive = 0,    ///< instances that are being written
    Disposed = 1, ///< instances that a publisher has disposed of
    Any = 2       ///< every instance
};

/// What a sample means for its instance.
enum class InstanceEvent : std::int32_t {
    New = 0,    ///< the first sample of the instance that this reader sees
    Update = 1, ///< a further sample of it
    Gone = 2    ///< the instance is no longer alive
};

/// One received sample with its circumstances. Immutable; valid as long as somebody holds it, but the value
/// that getData() gives inside an asynchronous callback is valid only until the callback returns.
template <class T>
class PLEX_EXPORT DataEvent
{
public:
    /// Whether there is a value; false for a mere change of the instance's state.
    virtual bool hasValidData() const = 0;

    /// The value; empty when hasValidData() is false.
    virtual const std::shared_ptr<T>& getData() const = 0;

    /// The instance-state selector of the filter that this event passed.
    virtual InstanceState getInstanceState() const = 0;

    /// What happened to the instance.
    virtual InstanceEvent getInstanceEvent() const = 0;

    /// When the sample was published, in seconds since the epoch.
    virtual double getSourceTimestamp() const = 0;

    virtual ~DataEvent() = default;
};

} // namespace ovra::plex::ps
