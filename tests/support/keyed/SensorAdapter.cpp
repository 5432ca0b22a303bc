// SPDX-License-Identifier: Apache-2.0
#include "SensorAdapter.hpp"

#include <plex/ps/DataEntities.hpp>

namespace generated::ddsimpl::keyed
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

Sensor::Sensor() : sample_(createSample<DdsType>(), ddsSampleDeleter<DdsType>) {}

Sensor::Sensor(const DdsType& source) : sample_(createSample<DdsType>(source), ddsSampleDeleter<DdsType>) {}

Sensor::Sensor(DdsType& borrowed, ovra::plex::icd::dds::Borrow) : sample_(&borrowed, noOpDeleter<DdsType>) {}

Sensor::~Sensor() = default;

std::unique_ptr<::keyed::Sensor> Sensor::clone() const
{
    return std::make_unique<Sensor>(wire());
}

bool Sensor::keyEquals(const ::keyed::Sensor& other) const
{
    auto logger = log4cplus::Logger::getInstance("keyedSensor");
    return wire().name() == ovra::plex::ps::obtainImpl<::keyed::Sensor, Sensor>(other, logger).wire().name();
}

std::unique_ptr<::keyed::Sensor> Sensor::cloneKey() const
{
    auto key = std::make_unique<Sensor>();
    key->wire().name(wire().name());
    return key;
}

bool Sensor::hasKey() const
{
    return true;
}

std::string Sensor::getName() const
{
    return wire().name();
}

void Sensor::setName(const std::string& name)
{
    wire().name(name);
}

double Sensor::getValue() const
{
    return wire().value();
}

void Sensor::setValue(double value)
{
    wire().value(value);
}

void Sensor::assign(const DdsType& source)
{
    wire() = source;
}

void Sensor::copy(const ::keyed::Sensor& from, ::keyed::Sensor& to)
{
    to.setName(from.getName());
    to.setValue(from.getValue());
}

} // namespace generated::ddsimpl::keyed
