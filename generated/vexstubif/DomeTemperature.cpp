// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperature.hpp"

namespace generated::dds_::vexstubif
{

DomeTemperature::DomeTemperature() = default;
DomeTemperature::DomeTemperature(const DomeTemperature&) = default;
DomeTemperature::DomeTemperature(DomeTemperature&&) noexcept = default;
DomeTemperature& DomeTemperature::operator=(const DomeTemperature&) = default;
DomeTemperature& DomeTemperature::operator=(DomeTemperature&&) noexcept = default;
DomeTemperature::~DomeTemperature() = default;

void DomeTemperature::temp(double value) noexcept
{
    temp_ = value;
}

double DomeTemperature::temp() const noexcept
{
    return temp_;
}

double& DomeTemperature::temp() noexcept
{
    return temp_;
}

bool DomeTemperature::operator==(const DomeTemperature& other) const noexcept
{
    return temp_ == other.temp_;
}

bool DomeTemperature::operator!=(const DomeTemperature& other) const noexcept
{
    return !(*this == other);
}

} // namespace generated::dds_::vexstubif
