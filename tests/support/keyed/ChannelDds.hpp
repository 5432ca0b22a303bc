// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/module/PubSubType.hpp>

#include <fastcdr/Cdr.h>
#include <fastcdr/CdrSizeCalculator.hpp>

#include <cstddef>
#include <cstdint>

namespace generated::dds_::keyed
{

/// A channel's level as it travels over DDS; the number is its key.
class PLEX_EXPORT Channel
{
public:
    void number(std::int32_t value) noexcept { number_ = value; }

    std::int32_t number() const noexcept { return number_; }

    std::int32_t& number() noexcept { return number_; }

    void level(double value) noexcept { level_ = value; }

    double level() const noexcept { return level_; }

    double& level() noexcept { return level_; }

    bool operator==(const Channel& other) const noexcept = default;

private:
    std::int32_t number_ = 0;
    double level_ = 0.0;
};

} // namespace generated::dds_::keyed

namespace eprosima::fastcdr
{

template <>
PLEX_EXPORT std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                                  const generated::dds_::keyed::Channel& data,
                                                  std::size_t& currentAlignment);

/// @throws exception::NotEnoughMemoryException when the stream's buffer is too small.
template <>
PLEX_EXPORT void serialize(Cdr& cdr, const generated::dds_::keyed::Channel& data);

/// @throws exception::Exception when the input is truncated or malformed.
template <>
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data);

PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data, EncodingAlgorithmFlag encoding);

/// Writes the key members.
PLEX_EXPORT void serialize_key(Cdr& cdr, const generated::dds_::keyed::Channel& data);

} // namespace eprosima::fastcdr

namespace generated::dds_::keyed
{

/// How Fast DDS handles samples of Channel.
class PLEX_EXPORT ChannelPubSubType : public ovra::plex::ps::PubSubType<Channel>
{
public:
    using type = Channel;

    ChannelPubSubType();
    ~ChannelPubSubType() override;
};

} // namespace generated::dds_::keyed
