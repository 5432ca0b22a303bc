// SPDX-License-Identifier: Apache-2.0
#include "RawType.hpp"

#include <algorithm>

namespace ovra::plex::tool
{

namespace
{

constexpr KeyHash theOneInstance{1};

const RawSample& sampleOf(const void* data)
{
    return *static_cast<const RawSample*>(data);
}

} // namespace

RawType::RawType(const std::string& name, bool keyed, bool keepsBytes) : keepsBytes_(keepsBytes)
{
    setName(name.c_str());
    m_typeSize = 256; // what room is made for at first
    m_isGetKeyDefined = keyed;
}

bool RawType::serialize(void* data, fastdds::SerializedPayload_t* payload)
{
    const auto& bytes = sampleOf(data).payload;
    if (bytes.size() > payload->max_size) {
        return false;
    }
    std::ranges::copy(bytes, payload->data);
    payload->length = static_cast<std::uint32_t>(bytes.size());
    payload->encapsulation = (bytes[1] & 1U) == 0 ? CDR_BE : CDR_LE;
    return true;
}

bool RawType::serialize(void* data, fastdds::SerializedPayload_t* payload,
                        fastdds::DataRepresentationId /*representation*/)
{
    return serialize(data, payload);
}

bool RawType::deserialize(fastdds::SerializedPayload_t* payload, void* data)
{
    auto& sample = *static_cast<RawSample*>(data);
    sample.size = payload->length;
    if (keepsBytes_) {
        sample.payload.assign(payload->data, payload->data + payload->length);
    }
    return true;
}

std::function<std::uint32_t()> RawType::getSerializedSizeProvider(void* data)
{
    return [data] {
        return static_cast<std::uint32_t>(sampleOf(data).payload.size());
    };
}

std::function<std::uint32_t()>
RawType::getSerializedSizeProvider(void* data, fastdds::DataRepresentationId /*representation*/)
{
    return getSerializedSizeProvider(data);
}

void* RawType::createData()
{
    return new RawSample();
}

void RawType::deleteData(void* data)
{
    delete static_cast<RawSample*>(data);
}

bool RawType::getKey(void* data, fastdds::InstanceHandle_t* handle, bool /*forceMd5*/)
{
    if (!m_isGetKeyDefined) {
        return false;
    }
    std::ranges::copy(sampleOf(data).key.value_or(theOneInstance), &handle->value[0]);
    return true;
}

bool RawType::is_bounded() const
{
    return false;
}

bool RawType::is_plain() const
{
    return false;
}

} // namespace ovra::plex::tool
