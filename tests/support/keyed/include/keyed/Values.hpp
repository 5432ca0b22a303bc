// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace keyed::values
{

/// The level of one of many channels, which its number tells apart. The key is short enough to be its own
/// hash.
struct Channel {
    /// Key; default 0.
    std::int32_t number = 0;
    /// Default 0.
    double level = 0.0;
};

inline bool operator==(const Channel& left, const Channel& right)
{
    return left.number == right.number && left.level == right.level;
}

inline bool operator!=(const Channel& left, const Channel& right)
{
    return !(left == right);
}

} // namespace keyed::values

namespace keyed::values
{

/// A reading of one of many sensors, which its name tells apart. The key is long enough for its hash to be an
/// MD5.
struct Sensor {
    /// Key; at most 64 characters; default empty.
    std::string name;
    /// Default 0.
    double value = 0.0;
};

inline bool operator==(const Sensor& left, const Sensor& right)
{
    return left.name == right.name && left.value == right.value;
}

inline bool operator!=(const Sensor& left, const Sensor& right)
{
    return !(left == right);
}

} // namespace keyed::values
