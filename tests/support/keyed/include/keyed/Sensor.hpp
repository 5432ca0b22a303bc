// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/Export.hpp>

#include <string_view>

namespace keyed
{

/// A reading of one of many sensors, which its name tells apart. The key is long enough for its hash to be an
/// MD5.
/// The key is made of name.
class PLEX_EXPORT Sensor : public ovra::plex::ps::DataEntity<Sensor>
{
public:
    ~Sensor() override;

    /// Key; at most 64 characters; default empty.
    virtual std::string_view getName() const = 0;
    virtual void setName(std::string_view name) = 0;

    /// Default 0.
    virtual double getValue() const = 0;
    virtual void setValue(double value) = 0;
};

} // namespace keyed
