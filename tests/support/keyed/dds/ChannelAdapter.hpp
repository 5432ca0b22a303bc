// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Channel.hpp"
#include "ChannelPubSubType.hpp"

#include <keyed/Channel.hpp>
#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>

#include <cstdint>
#include <memory>

namespace generated::ddsimpl::keyed
{

/// A Channel of the application over a wire value that it owns, or borrows from DDS.
///
/// Threads: one at a time. A borrowing adapter must not outlive its loan.
class PLEX_EXPORT Channel : public ::keyed::Channel
{
public:
    using DdsType = generated::dds_::keyed::Channel;
    using PubSubType = generated::dds_::keyed::ChannelPubSubType;

    /// Owns a new default wire value.
    /// @throws std::runtime_error "failed to create a DDS sample" when memory for it cannot be had.
    Channel();

    /// Owns a copy of a wire value; throws as above.
    explicit Channel(const DdsType& source);

    /// Views a wire value that somebody else owns.
    Channel(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/);

    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    ~Channel() override;

    std::unique_ptr<::keyed::Channel> clone() const override;
    bool keyEquals(const ::keyed::Channel& other) const override;
    std::unique_ptr<::keyed::Channel> cloneKey() const override;
    bool hasKey() const override;
    std::int32_t getNumber() const override;
    void setNumber(std::int32_t number) override;
    double getLevel() const override;
    void setLevel(double level) override;

    /// The wire value that this adapter views.
    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    /// Copies every field of a wire value into this one's.
    void assign(const DdsType& source);

    /// Copies every field from one value of the application to another, whoever made them.
    static void copy(const ::keyed::Channel& from, ::keyed::Channel& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    explicit Channel(SamplePointer sample);

    SamplePointer sample_;
    std::int32_t& number_;
    double& level_;
};

} // namespace generated::ddsimpl::keyed
