// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/Export.hpp>

#include <cstdint>

namespace keyed
{

/// The level of one of many channels, which its number tells apart. The key is short enough to be its own
/// hash.
/// The key is made of number.
class PLEX_EXPORT Channel : public ovra::plex::ps::DataEntity<Channel>
{
public:
    ~Channel() override;

    /// Key; default 0.
    virtual std::int32_t getNumber() const = 0;
    virtual void setNumber(std::int32_t number) = 0;

    /// Default 0.
    virtual double getLevel() const = 0;
    virtual void setLevel(double level) = 0;
};

} // namespace keyed
