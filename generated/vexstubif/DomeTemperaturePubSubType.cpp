// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperaturePubSubType.hpp"

namespace generated::dds_::vexstubif
{

DomeTemperaturePubSubType::DomeTemperaturePubSubType()
    : PubSubType({"generated::dds_::vexstubif::DomeTemperature", 20, false, 0})
{
}

DomeTemperaturePubSubType::~DomeTemperaturePubSubType() = default;

bool DomeTemperaturePubSubType::serialize(void* data, SerializedPayload* payload)
{
    return PubSubType::serialize(data, payload);
}

bool DomeTemperaturePubSubType::serialize(void* data, SerializedPayload* payload,
                                          DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool DomeTemperaturePubSubType::deserialize(SerializedPayload* payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::function<std::uint32_t()> DomeTemperaturePubSubType::getSerializedSizeProvider(void* data)
{
    return PubSubType::getSerializedSizeProvider(data);
}

std::function<std::uint32_t()>
DomeTemperaturePubSubType::getSerializedSizeProvider(void* data, DataRepresentationId representation)
{
    return PubSubType::getSerializedSizeProvider(data, representation);
}

void* DomeTemperaturePubSubType::createData()
{
    return PubSubType::createData();
}

void DomeTemperaturePubSubType::deleteData(void* data)
{
    PubSubType::deleteData(data);
}

bool DomeTemperaturePubSubType::getKey(void* data, InstanceHandle* handle, bool forceMd5)
{
    return PubSubType::getKey(data, handle, forceMd5);
}

bool DomeTemperaturePubSubType::is_bounded() const
{
    return PubSubType::is_bounded();
}

bool DomeTemperaturePubSubType::is_plain() const
{
    return PubSubType::is_plain();
}

bool DomeTemperaturePubSubType::is_plain(DataRepresentationId representation) const
{
    return PubSubType::is_plain(representation);
}

bool DomeTemperaturePubSubType::construct_sample(void* memory) const
{
    return PubSubType::construct_sample(memory);
}

bool DomeTemperaturePubSubType::serialize(const void* data, SerializedPayload& payload,
                                          DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool DomeTemperaturePubSubType::deserialize(SerializedPayload& payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::uint32_t DomeTemperaturePubSubType::calculate_serialized_size(const void* data,
                                                                   DataRepresentationId representation)
{
    return PubSubType::calculate_serialized_size(data, representation);
}

void* DomeTemperaturePubSubType::create_data()
{
    return PubSubType::create_data();
}

void DomeTemperaturePubSubType::delete_data(void* data)
{
    PubSubType::delete_data(data);
}

bool DomeTemperaturePubSubType::compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(payload, handle, forceMd5);
}

bool DomeTemperaturePubSubType::compute_key(const void* data, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(data, handle, forceMd5);
}

} // namespace generated::dds_::vexstubif
