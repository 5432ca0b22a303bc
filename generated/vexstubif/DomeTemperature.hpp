// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

namespace generated::dds_::vexstubif
{

/// The temperature in the dome, as it travels over DDS. The type has no key.
class PLEX_EXPORT DomeTemperature
{
public:
    DomeTemperature();
    DomeTemperature(const DomeTemperature&);
    DomeTemperature(DomeTemperature&&) noexcept;
    DomeTemperature& operator=(const DomeTemperature&);
    DomeTemperature& operator=(DomeTemperature&&) noexcept;
    ~DomeTemperature();

    /// Default 0.
    void temp(double value) noexcept;
    double temp() const noexcept;
    double& temp() noexcept;

    /// Member by member with floating-point ==, so a value that holds a NaN differs from itself.
    bool operator==(const DomeTemperature& other) const noexcept;
    bool operator!=(const DomeTemperature& other) const noexcept;

private:
    double temp_ = 0.0;
};

} // namespace generated::dds_::vexstubif
