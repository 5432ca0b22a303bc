// SPDX-License-Identifier: Apache-2.0
#include "ChannelPubSubType.hpp"

namespace generated::dds_::keyed
{

ChannelPubSubType::ChannelPubSubType() : PubSubType({"generated::dds_::keyed::Channel", 20, true, 4}) {}

ChannelPubSubType::~ChannelPubSubType() = default;

bool ChannelPubSubType::serialize(void* data, SerializedPayload* payload)
{
    return PubSubType::serialize(data, payload);
}

bool ChannelPubSubType::serialize(void* data, SerializedPayload* payload, DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool ChannelPubSubType::deserialize(SerializedPayload* payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::function<std::uint32_t()> ChannelPubSubType::getSerializedSizeProvider(void* data)
{
    return PubSubType::getSerializedSizeProvider(data);
}

std::function<std::uint32_t()>
ChannelPubSubType::getSerializedSizeProvider(void* data, DataRepresentationId representation)
{
    return PubSubType::getSerializedSizeProvider(data, representation);
}

void* ChannelPubSubType::createData()
{
    return PubSubType::createData();
}

void ChannelPubSubType::deleteData(void* data)
{
    PubSubType::deleteData(data);
}

bool ChannelPubSubType::getKey(void* data, InstanceHandle* handle, bool forceMd5)
{
    return PubSubType::getKey(data, handle, forceMd5);
}

bool ChannelPubSubType::is_bounded() const
{
    return PubSubType::is_bounded();
}

bool ChannelPubSubType::is_plain() const
{
    return PubSubType::is_plain();
}

bool ChannelPubSubType::is_plain(DataRepresentationId representation) const
{
    return PubSubType::is_plain(representation);
}

bool ChannelPubSubType::construct_sample(void* memory) const
{
    return PubSubType::construct_sample(memory);
}

bool ChannelPubSubType::serialize(const void* data, SerializedPayload& payload,
                                  DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool ChannelPubSubType::deserialize(SerializedPayload& payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::uint32_t ChannelPubSubType::calculate_serialized_size(const void* data,
                                                           DataRepresentationId representation)
{
    return PubSubType::calculate_serialized_size(data, representation);
}

void* ChannelPubSubType::create_data()
{
    return PubSubType::create_data();
}

void ChannelPubSubType::delete_data(void* data)
{
    PubSubType::delete_data(data);
}

bool ChannelPubSubType::compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(payload, handle, forceMd5);
}

bool ChannelPubSubType::compute_key(const void* data, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(data, handle, forceMd5);
}

} // namespace generated::dds_::keyed
