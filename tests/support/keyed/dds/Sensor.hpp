// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <string>

namespace generated::dds_::keyed
{

/// A reading of one of many sensors, which its name tells apart, as it travels over DDS. The key is made of
/// name.
class PLEX_EXPORT Sensor
{
public:
    Sensor();
    Sensor(const Sensor&);
    Sensor(Sensor&&) noexcept;
    Sensor& operator=(const Sensor&);
    Sensor& operator=(Sensor&&) noexcept;
    ~Sensor();

    /// Key; at most 64 characters; default empty.
    void name(std::string value) noexcept;
    const std::string& name() const noexcept;
    std::string& name() noexcept;

    /// Default 0.
    void value(double value) noexcept;
    double value() const noexcept;
    double& value() noexcept;

    /// Member by member with floating-point ==, so a value that holds a NaN differs from itself.
    bool operator==(const Sensor& other) const noexcept;
    bool operator!=(const Sensor& other) const noexcept;

private:
    std::string name_;
    double value_ = 0.0;
};

} // namespace generated::dds_::keyed
