// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Sensor.hpp"
#include "SensorDds.hpp"

#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>

#include <memory>
#include <string>

namespace generated::ddsimpl::keyed
{

/// A Sensor of the application over a wire value that it owns, or borrows from DDS.
class PLEX_EXPORT Sensor : public ::keyed::Sensor
{
public:
    using DdsType = generated::dds_::keyed::Sensor;
    using PubSubType = generated::dds_::keyed::SensorPubSubType;

    Sensor();
    explicit Sensor(const DdsType& source);
    Sensor(DdsType& borrowed, ovra::plex::icd::dds::Borrow);
    Sensor(const Sensor&) = delete;
    Sensor& operator=(const Sensor&) = delete;
    ~Sensor() override;

    std::unique_ptr<::keyed::Sensor> clone() const override;
    bool keyEquals(const ::keyed::Sensor& other) const override;
    std::unique_ptr<::keyed::Sensor> cloneKey() const override;
    bool hasKey() const override;
    std::string getName() const override;
    void setName(const std::string& name) override;
    double getValue() const override;
    void setValue(double value) override;

    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    void assign(const DdsType& source);
    static void copy(const ::keyed::Sensor& from, ::keyed::Sensor& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    SamplePointer sample_;
};

} // namespace generated::ddsimpl::keyed
