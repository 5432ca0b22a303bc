// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Sensor.hpp"
#include "SensorPubSubType.hpp"

#include <keyed/Sensor.hpp>
#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>

#include <memory>
#include <string_view>

namespace generated::ddsimpl::keyed
{

/// A Sensor of the application over a wire value that it owns, or borrows from DDS.
///
/// Threads: one at a time. A borrowing adapter must not outlive its loan.
class PLEX_EXPORT Sensor : public ::keyed::Sensor
{
public:
    using DdsType = generated::dds_::keyed::Sensor;
    using PubSubType = generated::dds_::keyed::SensorPubSubType;

    /// Owns a new default wire value.
    /// @throws std::runtime_error "failed to create a DDS sample" when memory for it cannot be had.
    Sensor();

    /// Owns a copy of a wire value; throws as above.
    explicit Sensor(const DdsType& source);

    /// Views a wire value that somebody else owns.
    Sensor(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/);

    Sensor(const Sensor&) = delete;
    Sensor& operator=(const Sensor&) = delete;
    ~Sensor() override;

    std::unique_ptr<::keyed::Sensor> clone() const override;
    bool keyEquals(const ::keyed::Sensor& other) const override;
    std::unique_ptr<::keyed::Sensor> cloneKey() const override;
    bool hasKey() const override;
    std::string_view getName() const override;
    void setName(std::string_view name) override;
    double getValue() const override;
    void setValue(double value) override;

    /// The wire value that this adapter views.
    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    /// Copies every field of a wire value into this one's.
    void assign(const DdsType& source);

    /// Copies every field from one value of the application to another, whoever made them.
    static void copy(const ::keyed::Sensor& from, ::keyed::Sensor& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    explicit Sensor(SamplePointer sample);

    SamplePointer sample_;
    std::string& name_;
    double& value_;
};

} // namespace generated::ddsimpl::keyed
