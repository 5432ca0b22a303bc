// SPDX-License-Identifier: Apache-2.0
#include "AltAz.hpp"

namespace generated::dds_::vexstubif
{

AltAz::AltAz() = default;
AltAz::AltAz(const AltAz&) = default;
AltAz::AltAz(AltAz&&) noexcept = default;
AltAz& AltAz::operator=(const AltAz&) = default;
AltAz& AltAz::operator=(AltAz&&) noexcept = default;
AltAz::~AltAz() = default;

void AltAz::alt(double value) noexcept
{
    alt_ = value;
}

double AltAz::alt() const noexcept
{
    return alt_;
}

double& AltAz::alt() noexcept
{
    return alt_;
}

void AltAz::az(double value) noexcept
{
    az_ = value;
}

double AltAz::az() const noexcept
{
    return az_;
}

double& AltAz::az() noexcept
{
    return az_;
}

bool AltAz::operator==(const AltAz& other) const noexcept
{
    return alt_ == other.alt_ && az_ == other.az_;
}

bool AltAz::operator!=(const AltAz& other) const noexcept
{
    return !(*this == other);
}

} // namespace generated::dds_::vexstubif
