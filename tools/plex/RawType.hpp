// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

using KeyHash = std::array<std::uint8_t, 16>;

/// A value as it is on the wire.
struct RawSample {
    std::vector<std::uint8_t> payload; ///< with the 4 bytes of its header; empty where bytes are not kept
    std::uint32_t size = 0;            ///< of the payload in bytes
    std::optional<KeyHash> key;        ///< to be written: of the value's instance
};

/// A topic data type that goes by the name of any other one and leaves its payloads as they are.
///
/// What it is of: readers put all values into one instance, so that they need not be decoded. Disposals have
/// the key hash that their writer has sent.
class RawType final : public fastdds::TopicDataType
{
public:
    using fastdds::TopicDataType::deserialize;
    using fastdds::TopicDataType::is_plain;
    using fastdds::TopicDataType::serialize;

    /// @param keepsBytes as keepBytes() has it.
    RawType(const std::string& name, bool keyed, bool keepsBytes);

    /// @param keepsBytes whether readers get the payloads, or their sizes only. To be called by the thread
    /// that takes.
    void keepBytes(bool keepsBytes) { keepsBytes_ = keepsBytes; }

    bool serialize(void* data, fastdds::SerializedPayload_t* payload) override;
    bool serialize(void* data, fastdds::SerializedPayload_t* payload,
                   fastdds::DataRepresentationId representation) override;
    bool deserialize(fastdds::SerializedPayload_t* payload, void* data) override;
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data) override;
    std::function<std::uint32_t()>
    getSerializedSizeProvider(void* data, fastdds::DataRepresentationId representation) override;
    void* createData() override;
    void deleteData(void* data) override;
    bool getKey(void* data, fastdds::InstanceHandle_t* handle, bool forceMd5 = false) override;
    bool is_bounded() const override;
    bool is_plain() const override;

private:
    bool keepsBytes_;
};

} // namespace ovra::plex::tool
