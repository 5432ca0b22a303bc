// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <memory>

namespace ovra::plex::ps
{

/// Makes values of the topic type T for the transport of the object that implements it.
template <class T>
class PLEX_EXPORT DataEntityFactory
{
public:
    /// A new value, all fields at their defaults. The caller owns it; it stays valid when the factory is
    /// gone.
    /// @throws IllegalStateException when the entity is closed.
    /// @throws std::runtime_error when memory for the value cannot be had.
    virtual std::shared_ptr<T> createDataEntity() = 0;

    virtual ~DataEntityFactory() = default;
};

} // namespace ovra::plex::ps
