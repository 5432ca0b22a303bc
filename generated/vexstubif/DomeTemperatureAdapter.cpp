// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperatureAdapter.hpp"

#include <utility>

namespace generated::ddsimpl::vexstubif
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

DomeTemperature::DomeTemperature()
    : DomeTemperature(SamplePointer(createSample<DdsType>(), ddsSampleDeleter<DdsType>))
{
}

DomeTemperature::DomeTemperature(const DdsType& source)
    : DomeTemperature(SamplePointer(createSample<DdsType>(source), ddsSampleDeleter<DdsType>))
{
}

DomeTemperature::DomeTemperature(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/)
    : DomeTemperature(SamplePointer(&borrowed, noOpDeleter<DdsType>))
{
}

DomeTemperature::DomeTemperature(SamplePointer sample) : sample_(std::move(sample)), temp_(sample_->temp()) {}

DomeTemperature::~DomeTemperature() = default;

std::unique_ptr<::vexstubif::DomeTemperature> DomeTemperature::clone() const
{
    return std::make_unique<DomeTemperature>(wire());
}

bool DomeTemperature::keyEquals(const ::vexstubif::DomeTemperature& /*other*/) const
{
    return false;
}

std::unique_ptr<::vexstubif::DomeTemperature> DomeTemperature::cloneKey() const
{
    return std::make_unique<DomeTemperature>();
}

bool DomeTemperature::hasKey() const
{
    return false;
}

double DomeTemperature::getTemp() const
{
    return temp_;
}

void DomeTemperature::setTemp(double temp)
{
    temp_ = temp;
}

void DomeTemperature::assign(const DdsType& source)
{
    temp_ = source.temp();
}

void DomeTemperature::copy(const ::vexstubif::DomeTemperature& from, ::vexstubif::DomeTemperature& to)
{
    to.setTemp(from.getTemp());
}

} // namespace generated::ddsimpl::vexstubif
