// SPDX-License-Identifier: Apache-2.0
#include "CppTypes.hpp"
#include "Emitters.hpp"
#include "Headers.hpp"
#include "Sizes.hpp"
#include "Template.hpp"

namespace ovra::plex::idl
{

namespace
{

/// What is said of a type only where it is not bounded, or its key is not, or is hashed as version 2 has it.
std::string boundedText(const TopicPlan& topic)
{
    const auto word = [](bool holds) {
        return std::string(holds ? ", true" : ", false");
    };
    const bool isBounded = largestPayload(topic).isBounded;
    const bool isKeyBounded = largestKey(topic).isBounded;
    if (topic.rules.keyVersion == XcdrVersion::Xcdr2) {
        return word(isBounded) + word(isKeyBounded) + ", eprosima::fastcdr::CdrVersion::XCDRv2";
    }
    if (!isKeyBounded) { // nor is what holds it
        return word(false) + word(false);
    }
    return isBounded ? "" : word(false);
}

} // namespace

std::string topicDataTypeHeader(const TopicPlan& topic)
{
    const LargestSize largest = largestPayload(topic);
    const Headers headers{"\"" + topic.name + ".hpp\"",
                          "\"" + topic.name + "Cdr.hpp\"",
                          "<plex/Export.hpp>",
                          "<plex/module/PubSubType.hpp>",
                          "<cstdint>",
                          "<functional>"};
    const std::string key = topic.keys().empty() ? "without a key" : "with a key";
    return filledBlock(
        R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
namespace generated::dds_::@scope@
{

@documentation@class PLEX_EXPORT @Type@PubSubType : public ovra::plex::ps::PubSubType<@Type@>
{
public:
    using type = @Type@;
    using SerializedPayload = ovra::plex::fastdds::SerializedPayload_t;
    using InstanceHandle = ovra::plex::fastdds::InstanceHandle_t;
    using DataRepresentationId = ovra::plex::fastdds::DataRepresentationId;

    @Type@PubSubType();
    ~@Type@PubSubType() override;

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

} // namespace generated::dds_::@scope@
)",
        {{"includes", headers.text()},
         {"scope", topic.scope},
         {"Type", topic.name},
         {"documentation",
          comment("How Fast DDS handles samples of " + topic.name +
                  (largest.isBounded ? ": bounded, not plain, " : ": not bounded, not plain, ") + key +
                  ". Each operation is what the base says of it; they stand here so that the library "
                  "exports them.")}});
}

std::string topicDataTypeSource(const TopicPlan& topic)
{
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include "@Type@PubSubType.hpp"

namespace generated::dds_::@scope@
{

@Type@PubSubType::@Type@PubSubType() : PubSubType({@ddsName@, @payload@, @keyed@, @key@@bounded@}) {}

@Type@PubSubType::~@Type@PubSubType() = default;

bool @Type@PubSubType::serialize(void* data, SerializedPayload* payload)
{
    return PubSubType::serialize(data, payload);
}

bool @Type@PubSubType::serialize(void* data, SerializedPayload* payload, DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool @Type@PubSubType::deserialize(SerializedPayload* payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::function<std::uint32_t()> @Type@PubSubType::getSerializedSizeProvider(void* data)
{
    return PubSubType::getSerializedSizeProvider(data);
}

std::function<std::uint32_t()> @Type@PubSubType::getSerializedSizeProvider(void* data,
                                                                          DataRepresentationId representation)
{
    return PubSubType::getSerializedSizeProvider(data, representation);
}

void* @Type@PubSubType::createData()
{
    return PubSubType::createData();
}

void @Type@PubSubType::deleteData(void* data)
{
    PubSubType::deleteData(data);
}

bool @Type@PubSubType::getKey(void* data, InstanceHandle* handle, bool forceMd5)
{
    return PubSubType::getKey(data, handle, forceMd5);
}

bool @Type@PubSubType::is_bounded() const
{
    return PubSubType::is_bounded();
}

bool @Type@PubSubType::is_plain() const
{
    return PubSubType::is_plain();
}

bool @Type@PubSubType::is_plain(DataRepresentationId representation) const
{
    return PubSubType::is_plain(representation);
}

bool @Type@PubSubType::construct_sample(void* memory) const
{
    return PubSubType::construct_sample(memory);
}

bool @Type@PubSubType::serialize(const void* data, SerializedPayload& payload,
                                DataRepresentationId representation)
{
    return PubSubType::serialize(data, payload, representation);
}

bool @Type@PubSubType::deserialize(SerializedPayload& payload, void* data)
{
    return PubSubType::deserialize(payload, data);
}

std::uint32_t @Type@PubSubType::calculate_serialized_size(const void* data,
                                                         DataRepresentationId representation)
{
    return PubSubType::calculate_serialized_size(data, representation);
}

void* @Type@PubSubType::create_data()
{
    return PubSubType::create_data();
}

void @Type@PubSubType::delete_data(void* data)
{
    PubSubType::delete_data(data);
}

bool @Type@PubSubType::compute_key(SerializedPayload& payload, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(payload, handle, forceMd5);
}

bool @Type@PubSubType::compute_key(const void* data, InstanceHandle& handle, bool forceMd5)
{
    return PubSubType::compute_key(data, handle, forceMd5);
}

} // namespace generated::dds_::@scope@
)",
                       {{"scope", topic.scope},
                        {"Type", topic.name},
                        {"ddsName", quoted(topic.ddsName)},
                        {"payload", std::to_string(largestPayload(topic).bytes)},
                        {"keyed", topic.keys().empty() ? "false" : "true"},
                        {"bounded", boundedText(topic)},
                        {"key", std::to_string(largestKey(topic).bytes)}});
}

} // namespace ovra::plex::idl
