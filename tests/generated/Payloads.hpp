// SPDX-License-Identifier: Apache-2.0
// Payloads of generated types, and the model that a codec written apart from the generator reads them by.
#pragma once

#include <plex/fastdds/Generation.hpp>
#include <plex/idl/Codec.hpp>
#include <plex/idl/Parse.hpp>
#include <plex/module/PubSubType.hpp>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace plex::test
{

using Bytes = std::vector<std::uint8_t>;

/// A payload with a value of an adapter; empty where it is refused.
template <class Adapter>
Bytes encoded(const typename Adapter::DdsType& value,
              ovra::plex::fastdds::DataRepresentationId representation)
{
    typename Adapter::PubSubType type;
    ovra::plex::fastdds::SerializedPayload_t payload(65536);
    std::fill_n(payload.data, payload.max_size, static_cast<unsigned char>(0));
    auto copy = value;
    if (!type.ovra::plex::ps::template PubSubType<typename Adapter::DdsType>::serialize(&copy, &payload,
                                                                                        representation)) {
        return {};
    }
    return {payload.data, payload.data + payload.length};
}

/// Reads payloads of one type, again and again.
template <class Adapter>
class Decoder
{
public:
    bool decode(const Bytes& bytes, typename Adapter::DdsType& value)
    {
        payload_.reserve(static_cast<std::uint32_t>(bytes.size()));
        std::ranges::copy(bytes, payload_.data);
        payload_.length = static_cast<std::uint32_t>(bytes.size());
        return type_.ovra::plex::ps::template PubSubType<typename Adapter::DdsType>::deserialize(&payload_,
                                                                                                 &value);
    }

private:
    typename Adapter::PubSubType type_;
    ovra::plex::fastdds::SerializedPayload_t payload_;
};

/// The model of a definition beside the tests.
inline ovra::plex::idl::Model modelOfFile(const std::string& name)
{
    auto result = ovra::plex::idl::parseFile(std::string(DEFINITIONS) + "/" + name);
    if (!result.model) {
        throw std::runtime_error(name + " makes no model");
    }
    return std::move(*result.model);
}

} // namespace plex::test
