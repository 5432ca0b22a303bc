// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>

namespace vexstubif
{

class DomeTemperature : public ovra::plex::ps::DataEntity<DomeTemperature>
{
public:
    ~DomeTemperature() override;
    virtual double getTemp() const = 0;
    virtual void setTemp(double temp) = 0;
};

} // namespace vexstubif
