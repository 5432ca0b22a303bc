// SPDX-License-Identifier: Apache-2.0
#include "SensorAdapter.hpp"

#include <plex/module/Members.hpp>
#include <plex/ps/DataEntities.hpp>

#include <utility>

namespace generated::ddsimpl::keyed
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

Sensor::Sensor() : Sensor(SamplePointer(createSample<DdsType>(), ddsSampleDeleter<DdsType>)) {}

Sensor::Sensor(const DdsType& source)
    : Sensor(SamplePointer(createSample<DdsType>(source), ddsSampleDeleter<DdsType>))
{
}

Sensor::Sensor(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/)
    : Sensor(SamplePointer(&borrowed, noOpDeleter<DdsType>))
{
}

Sensor::Sensor(SamplePointer sample)
    : sample_(std::move(sample))
    , name_(sample_->name())
    , value_(sample_->value())
{
}

Sensor::~Sensor() = default;

std::unique_ptr<::keyed::Sensor> Sensor::clone() const
{
    return std::make_unique<Sensor>(wire());
}

bool Sensor::keyEquals(const ::keyed::Sensor& other) const
{
    auto logger = log4cplus::Logger::getInstance("keyed_Sensor");
    const auto& key = ovra::plex::ps::obtainImpl<::keyed::Sensor, Sensor>(other, logger);
    return name_ == key.name_;
}

std::unique_ptr<::keyed::Sensor> Sensor::cloneKey() const
{
    auto key = std::make_unique<Sensor>();
    key->name_ = name_;
    return key;
}

bool Sensor::hasKey() const
{
    return true;
}

std::string_view Sensor::getName() const
{
    return name_;
}

void Sensor::setName(std::string_view name)
{
    ovra::plex::ps::assignText("name", name_, name, 64);
}

double Sensor::getValue() const
{
    return value_;
}

void Sensor::setValue(double value)
{
    value_ = value;
}

void Sensor::assign(const DdsType& source)
{
    name_ = source.name();
    value_ = source.value();
}

void Sensor::copy(const ::keyed::Sensor& from, ::keyed::Sensor& to)
{
    to.setName(from.getName());
    to.setValue(from.getValue());
}

} // namespace generated::ddsimpl::keyed
