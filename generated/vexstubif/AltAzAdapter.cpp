// SPDX-License-Identifier: Apache-2.0
#include "AltAzAdapter.hpp"

#include <utility>

namespace generated::ddsimpl::vexstubif
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

AltAz::AltAz() : AltAz(SamplePointer(createSample<DdsType>(), ddsSampleDeleter<DdsType>)) {}

AltAz::AltAz(const DdsType& source)
    : AltAz(SamplePointer(createSample<DdsType>(source), ddsSampleDeleter<DdsType>))
{
}

AltAz::AltAz(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/)
    : AltAz(SamplePointer(&borrowed, noOpDeleter<DdsType>))
{
}

AltAz::AltAz(SamplePointer sample) : sample_(std::move(sample)), alt_(sample_->alt()), az_(sample_->az()) {}

AltAz::~AltAz() = default;

std::unique_ptr<::vexstubif::AltAz> AltAz::clone() const
{
    return std::make_unique<AltAz>(wire());
}

bool AltAz::keyEquals(const ::vexstubif::AltAz& /*other*/) const
{
    return false;
}

std::unique_ptr<::vexstubif::AltAz> AltAz::cloneKey() const
{
    return std::make_unique<AltAz>();
}

bool AltAz::hasKey() const
{
    return false;
}

double AltAz::getAlt() const
{
    return alt_;
}

void AltAz::setAlt(double alt)
{
    alt_ = alt;
}

double AltAz::getAz() const
{
    return az_;
}

void AltAz::setAz(double az)
{
    az_ = az;
}

void AltAz::assign(const DdsType& source)
{
    alt_ = source.alt();
    az_ = source.az();
}

void AltAz::copy(const ::vexstubif::AltAz& from, ::vexstubif::AltAz& to)
{
    to.setAlt(from.getAlt());
    to.setAz(from.getAz());
}

} // namespace generated::ddsimpl::vexstubif
