// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vexstubif::values
{

/// A position in horizontal coordinates. The type has no key: a topic of it has one instance.
struct AltAz {
    /// Altitude; default 0.
    double alt = 0.0;
    /// Azimuth; default 0.
    double az = 0.0;
};

inline bool operator==(const AltAz& left, const AltAz& right)
{
    return left.alt == right.alt && left.az == right.az;
}

inline bool operator!=(const AltAz& left, const AltAz& right)
{
    return !(left == right);
}

} // namespace vexstubif::values

namespace vexstubif::values
{

/// The temperature in the dome. The type has no key: a topic of it has one instance.
struct DomeTemperature {
    /// Temperature; default 0.
    double temp = 0.0;
};

inline bool operator==(const DomeTemperature& left, const DomeTemperature& right)
{
    return left.temp == right.temp;
}

inline bool operator!=(const DomeTemperature& left, const DomeTemperature& right)
{
    return !(left == right);
}

} // namespace vexstubif::values
