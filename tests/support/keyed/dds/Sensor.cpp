// SPDX-License-Identifier: Apache-2.0
#include "Sensor.hpp"

#include <utility>

namespace generated::dds_::keyed
{

Sensor::Sensor() = default;
Sensor::Sensor(const Sensor&) = default;
Sensor::Sensor(Sensor&&) noexcept = default;
Sensor& Sensor::operator=(const Sensor&) = default;
Sensor& Sensor::operator=(Sensor&&) noexcept = default;
Sensor::~Sensor() = default;

void Sensor::name(std::string value) noexcept
{
    name_ = std::move(value);
}

const std::string& Sensor::name() const noexcept
{
    return name_;
}

std::string& Sensor::name() noexcept
{
    return name_;
}

void Sensor::value(double value) noexcept
{
    value_ = value;
}

double Sensor::value() const noexcept
{
    return value_;
}

double& Sensor::value() noexcept
{
    return value_;
}

bool Sensor::operator==(const Sensor& other) const noexcept
{
    return name_ == other.name_ && value_ == other.value_;
}

bool Sensor::operator!=(const Sensor& other) const noexcept
{
    return !(*this == other);
}

} // namespace generated::dds_::keyed
