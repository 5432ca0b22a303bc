// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>

namespace vexstubif
{

class AltAz : public ovra::plex::ps::DataEntity<AltAz>
{
public:
    ~AltAz() override;
    virtual double getAlt() const = 0;
    virtual void setAlt(double alt) = 0;
    virtual double getAz() const = 0;
    virtual void setAz(double az) = 0;
};

} // namespace vexstubif
