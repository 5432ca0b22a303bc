// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/Export.hpp>

namespace vexstubif
{

/// The temperature in the dome. The type has no key: a topic of it has one instance.
class PLEX_EXPORT DomeTemperature : public ovra::plex::ps::DataEntity<DomeTemperature>
{
public:
    ~DomeTemperature() override;

    /// Temperature; default 0.
    virtual double getTemp() const = 0;
    virtual void setTemp(double temp) = 0;
};

} // namespace vexstubif
