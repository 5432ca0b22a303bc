// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/Export.hpp>

#include <string>

namespace keyed
{

/// A reading of one of many sensors, which its name tells apart. The key is long enough for its hash to be
/// an MD5.
class PLEX_EXPORT Sensor : public ovra::plex::ps::DataEntity<Sensor>
{
public:
    ~Sensor() override;

    /// Key, at most 64 characters; default empty.
    virtual std::string getName() const = 0;
    virtual void setName(const std::string& name) = 0;

    /// Default 0.
    virtual double getValue() const = 0;
    virtual void setValue(double value) = 0;
};

} // namespace keyed
