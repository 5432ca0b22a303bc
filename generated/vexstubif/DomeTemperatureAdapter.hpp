// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DomeTemperature.hpp"
#include "DomeTemperaturePubSubType.hpp"

#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <memory>

namespace generated::ddsimpl::vexstubif
{

/// A DomeTemperature of the application over a wire value that it owns, or borrows from DDS.
///
/// Threads: one at a time. A borrowing adapter must not outlive its loan.
class PLEX_EXPORT DomeTemperature : public ::vexstubif::DomeTemperature
{
public:
    using DdsType = generated::dds_::vexstubif::DomeTemperature;
    using PubSubType = generated::dds_::vexstubif::DomeTemperaturePubSubType;

    /// Owns a new default wire value.
    /// @throws std::runtime_error "failed to create a DDS sample" when memory for it cannot be had.
    DomeTemperature();

    /// Owns a copy of a wire value; throws as above.
    explicit DomeTemperature(const DdsType& source);

    /// Views a wire value that somebody else owns.
    DomeTemperature(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/);

    DomeTemperature(const DomeTemperature&) = delete;
    DomeTemperature& operator=(const DomeTemperature&) = delete;
    ~DomeTemperature() override;

    std::unique_ptr<::vexstubif::DomeTemperature> clone() const override;
    bool keyEquals(const ::vexstubif::DomeTemperature& other) const override;
    std::unique_ptr<::vexstubif::DomeTemperature> cloneKey() const override;
    bool hasKey() const override;
    double getTemp() const override;
    void setTemp(double temp) override;

    /// The wire value that this adapter views.
    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    /// Copies every field of a wire value into this one's.
    void assign(const DdsType& source);

    /// Copies every field from one value of the application to another, whoever made them.
    static void copy(const ::vexstubif::DomeTemperature& from, ::vexstubif::DomeTemperature& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    explicit DomeTemperature(SamplePointer sample);

    SamplePointer sample_;
    double& temp_;
};

} // namespace generated::ddsimpl::vexstubif
