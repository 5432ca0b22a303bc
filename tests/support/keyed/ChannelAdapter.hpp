// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Channel.hpp"
#include "ChannelDds.hpp"

#include <plex/Export.hpp>
#include <plex/module/SampleOwnership.hpp>

#include <cstdint>
#include <memory>

namespace generated::ddsimpl::keyed
{

/// A Channel of the application over a wire value that it owns, or borrows from DDS.
class PLEX_EXPORT Channel : public ::keyed::Channel
{
public:
    using DdsType = generated::dds_::keyed::Channel;
    using PubSubType = generated::dds_::keyed::ChannelPubSubType;

    Channel();
    explicit Channel(const DdsType& source);
    Channel(DdsType& borrowed, ovra::plex::icd::dds::Borrow);
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

    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    void assign(const DdsType& source);
    static void copy(const ::keyed::Channel& from, ::keyed::Channel& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    SamplePointer sample_;
};

} // namespace generated::ddsimpl::keyed
