// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <memory>

namespace ovra::plex::ps
{

/// Root of every value that can be published.
class PLEX_EXPORT DataEntityBase
{
public:
    DataEntityBase() = default;
    DataEntityBase(const DataEntityBase&) = default;
    DataEntityBase& operator=(const DataEntityBase&) = default;
    virtual ~DataEntityBase();
};

/// What every value of the topic type T offers besides its fields.
///
/// A value belongs to whoever made it and may be used by one thread at a time.
template <class T>
class PLEX_EXPORT DataEntity : public virtual DataEntityBase
{
public:
    /// A deep copy that shares nothing with this value.
    /// @throws std::runtime_error when memory for the value cannot be had.
    virtual std::unique_ptr<T> clone() const = 0;

    /// Whether both values name the same instance; always false for a type without a key.
    /// @throws IllegalStateException when the other value comes from another transport and the type has a
    ///         key.
    virtual bool keyEquals(const T& other) const = 0;

    /// A value with this one's key fields and all other fields at their defaults.
    /// @throws std::runtime_error when memory for the value cannot be had.
    virtual std::unique_ptr<T> cloneKey() const = 0;

    /// Whether the type has key fields, that is, whether its topic can have more than one instance.
    virtual bool hasKey() const = 0;
};

} // namespace ovra::plex::ps
