// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/Export.hpp>

namespace vexstubif
{

/// A position in horizontal coordinates. The type has no key: a topic of it has one instance.
class PLEX_EXPORT AltAz : public ovra::plex::ps::DataEntity<AltAz>
{
public:
    ~AltAz() override;

    /// Altitude; default 0.
    virtual double getAlt() const = 0;
    virtual void setAlt(double alt) = 0;

    /// Azimuth; default 0.
    virtual double getAz() const = 0;
    virtual void setAz(double az) = 0;
};

} // namespace vexstubif
