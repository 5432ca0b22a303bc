// SPDX-License-Identifier: Apache-2.0
#include "AltAzPubSubType.hpp"

namespace generated::dds_::vexstubif
{

AltAzPubSubType::AltAzPubSubType() : PubSubType({"generated::dds_::vexstubif::AltAz", 28, false, 0}) {}

AltAzPubSubType::~AltAzPubSubType() = default;

bool AltAzPubSubType::serialize(void* data, SerializedPayload* payload)
{
    return PubSubType::serialize(data, payload);
}

bool AltAzPubSubType::serialize(void* data, SerializedPayload* payload, DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool AltAzPubSubType::deserialize(SerializedPayload* payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::function<std::uint32_t()> AltAzPubSubType::getSerializedSizeProvider(void* data)
{
    return PubSubType::getSerializedSizeProvider(data);
}

std::function<std::uint32_t()> AltAzPubSubType::getSerializedSizeProvider(void* data,
                                                                          DataRepresentationId representation)
{
    return PubSubType::getSerializedSizeProvider(data, representation);
}

void* AltAzPubSubType::createData()
{
    return PubSubType::createData();
}

void AltAzPubSubType::deleteData(void* data)
{
    PubSubType::deleteData(data);
}

bool AltAzPubSubType::getKey(void* data, InstanceHandle* handle, bool forceMd5)
{
    return PubSubType::getKey(data, handle, forceMd5);
}

bool AltAzPubSubType::is_bounded() const
{
    return PubSubType::is_bounded();
}

bool AltAzPubSubType::is_plain() const
{
    return PubSubType::is_plain();
}

bool AltAzPubSubType::is_plain(DataRepresentationId representation) const
{
    return PubSubType::is_plain(representation);
}

bool AltAzPubSubType::construct_sample(void* memory) const
{
    return PubSubType::construct_sample(memory);
}

bool AltAzPubSubType::serialize(const void* data, SerializedPayload& payload,
                                DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool AltAzPubSubType::deserialize(SerializedPayload& payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::uint32_t AltAzPubSubType::calculate_serialized_size(const void* data,
                                                         DataRepresentationId representation)
{
    return PubSubType::calculate_serialized_size(data, representation);
}

void* AltAzPubSubType::create_data()
{
    return PubSubType::create_data();
}

void AltAzPubSubType::delete_data(void* data)
{
    PubSubType::delete_data(data);
}

bool AltAzPubSubType::compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(payload, handle, forceMd5);
}

bool AltAzPubSubType::compute_key(const void* data, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(data, handle, forceMd5);
}

} // namespace generated::dds_::vexstubif
