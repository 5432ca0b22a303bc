// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Channel.hpp"
#include "ChannelCdr.hpp"

#include <plex/Export.hpp>
#include <plex/module/PubSubType.hpp>

#include <cstdint>
#include <functional>

namespace generated::dds_::keyed
{

/// How Fast DDS handles samples of Channel: bounded, not plain, with a key. Each operation is what the base
/// says of it; they stand here so that the library exports them.
class PLEX_EXPORT ChannelPubSubType : public ovra::plex::ps::PubSubType<Channel>
{
public:
    using type = Channel;
    using SerializedPayload = ovra::plex::fastdds::SerializedPayload_t;
    using InstanceHandle = ovra::plex::fastdds::InstanceHandle_t;
    using DataRepresentationId = ovra::plex::fastdds::DataRepresentationId;

    ChannelPubSubType();
    ~ChannelPubSubType() override;

    bool serialize(void* data, SerializedPayload* payload) override;
    bool serialize(void* data, SerializedPayload* payload, DataRepresentationId representation) override;
    bool deserialize(SerializedPayload* payload, void* data) override;
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data) override;
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data,
                                                             DataRepresentationId representation) override;
    void* createData() override;
    void deleteData(void* data) override;
    bool getKey(void* data, InstanceHandle* handle, bool forceMd5 = false) override;
    bool is_bounded() const override;
    bool is_plain() const override;
    bool is_plain(DataRepresentationId representation) const override;
    bool construct_sample(void* memory) const override;

    // The same under the names of Fast DDS 3.
    bool serialize(const void* data, SerializedPayload& payload,
                   DataRepresentationId representation) override;
    bool deserialize(SerializedPayload& payload, void* data) override;
    std::uint32_t calculate_serialized_size(const void* data, DataRepresentationId representation) override;
    void* create_data() override;
    void delete_data(void* data) override;
    bool compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5 = false) override;
    bool compute_key(const void* data, InstanceHandle& handle, bool forceMd5 = false) override;
};

} // namespace generated::dds_::keyed
