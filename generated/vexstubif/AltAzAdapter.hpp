// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "AltAz.hpp"
#include "AltAzPubSubType.hpp"

#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>
#include <vexstubif/AltAz.hpp>

#include <memory>

namespace generated::ddsimpl::vexstubif
{

/// An AltAz of the application over a wire value that it owns, or borrows from DDS.
///
/// Threads: one at a time. A borrowing adapter must not outlive its loan.
class PLEX_EXPORT AltAz : public ::vexstubif::AltAz
{
public:
    using DdsType = generated::dds_::vexstubif::AltAz;
    using PubSubType = generated::dds_::vexstubif::AltAzPubSubType;

    /// Owns a new default wire value.
    /// @throws std::runtime_error "failed to create a DDS sample" when memory for it cannot be had.
    AltAz();

    /// Owns a copy of a wire value; throws as above.
    explicit AltAz(const DdsType& source);

    /// Views a wire value that somebody else owns.
    AltAz(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/);

    AltAz(const AltAz&) = delete;
    AltAz& operator=(const AltAz&) = delete;
    ~AltAz() override;

    std::unique_ptr<::vexstubif::AltAz> clone() const override;
    bool keyEquals(const ::vexstubif::AltAz& other) const override;
    std::unique_ptr<::vexstubif::AltAz> cloneKey() const override;
    bool hasKey() const override;
    double getAlt() const override;
    void setAlt(double alt) override;
    double getAz() const override;
    void setAz(double az) override;

    /// The wire value that this adapter views.
    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    /// Copies every field of a wire value into this one's.
    void assign(const DdsType& source);

    /// Copies every field from one value of the application to another, whoever made them.
    static void copy(const ::vexstubif::AltAz& from, ::vexstubif::AltAz& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    explicit AltAz(SamplePointer sample);

    SamplePointer sample_;
    double& alt_;
    double& az_;
};

} // namespace generated::ddsimpl::vexstubif
