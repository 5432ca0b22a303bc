// SPDX-License-Identifier: Apache-2.0
#include "SensorPubSubType.hpp"

namespace generated::dds_::keyed
{

SensorPubSubType::SensorPubSubType() : PubSubType({"generated::dds_::keyed::Sensor", 92, true, 69}) {}

SensorPubSubType::~SensorPubSubType() = default;

bool SensorPubSubType::serialize(void* data, SerializedPayload* payload)
{
    return PubSubType::serialize(data, payload);
}

bool SensorPubSubType::serialize(void* data, SerializedPayload* payload, DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool SensorPubSubType::deserialize(SerializedPayload* payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::function<std::uint32_t()> SensorPubSubType::getSerializedSizeProvider(void* data)
{
    return PubSubType::getSerializedSizeProvider(data);
}

std::function<std::uint32_t()>
SensorPubSubType::getSerializedSizeProvider(void* data, DataRepresentationId representation)
{
    return PubSubType::getSerializedSizeProvider(data, representation);
}

void* SensorPubSubType::createData()
{
    return PubSubType::createData();
}

void SensorPubSubType::deleteData(void* data)
{
    PubSubType::deleteData(data);
}

bool SensorPubSubType::getKey(void* data, InstanceHandle* handle, bool forceMd5)
{
    return PubSubType::getKey(data, handle, forceMd5);
}

bool SensorPubSubType::is_bounded() const
{
    return PubSubType::is_bounded();
}

bool SensorPubSubType::is_plain() const
{
    return PubSubType::is_plain();
}

bool SensorPubSubType::is_plain(DataRepresentationId representation) const
{
    return PubSubType::is_plain(representation);
}

bool SensorPubSubType::construct_sample(void* memory) const
{
    return PubSubType::construct_sample(memory);
}

bool SensorPubSubType::serialize(const void* data, SerializedPayload& payload,
                                 DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool SensorPubSubType::deserialize(SerializedPayload& payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::uint32_t SensorPubSubType::calculate_serialized_size(const void* data,
                                                          DataRepresentationId representation)
{
    return PubSubType::calculate_serialized_size(data, representation);
}

void* SensorPubSubType::create_data()
{
    return PubSubType::create_data();
}

void SensorPubSubType::delete_data(void* data)
{
    PubSubType::delete_data(data);
}

bool SensorPubSubType::compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(payload, handle, forceMd5);
}

bool SensorPubSubType::compute_key(const void* data, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(data, handle, forceMd5);
}

} // namespace generated::dds_::keyed
