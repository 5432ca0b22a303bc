// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

namespace generated::dds_::vexstubif
{

/// A position in horizontal coordinates, as it travels over DDS. The type has no key.
class PLEX_EXPORT AltAz
{
public:
    AltAz();
    AltAz(const AltAz&);
    AltAz(AltAz&&) noexcept;
    AltAz& operator=(const AltAz&);
    AltAz& operator=(AltAz&&) noexcept;
    ~AltAz();

    /// Default 0.
    void alt(double value) noexcept;
    double alt() const noexcept;
    double& alt() noexcept;

    /// Default 0.
    void az(double value) noexcept;
    double az() const noexcept;
    double& az() noexcept;

    /// Member by member with floating-point ==, so a value that holds a NaN differs from itself.
    bool operator==(const AltAz& other) const noexcept;
    bool operator!=(const AltAz& other) const noexcept;

private:
    double alt_ = 0.0;
    double az_ = 0.0;
};

} // namespace generated::dds_::vexstubif
