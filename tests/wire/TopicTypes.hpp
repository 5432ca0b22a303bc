// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Payloads.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <generated/vexstubif/DomeTemperaturePubSubType.hpp>
#include <plex/fastdds/Generation.hpp>

#include <fastcdr/Cdr.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace plex::test
{

using generated::dds_::vexstubif::AltAz;
using generated::dds_::vexstubif::AltAzPubSubType;
using generated::dds_::vexstubif::DomeTemperature;
using generated::dds_::vexstubif::DomeTemperaturePubSubType;
using ovra::plex::fastdds::DataRepresentationId;
using ovra::plex::fastdds::SerializedPayload_t;
using ovra::plex::fastdds::TopicDataType;

inline AltAz wireValue(double alt, double az)
{
    AltAz value;
    value.alt(alt);
    value.az(az);
    return value;
}

inline DomeTemperature wireValue(double temp)
{
    DomeTemperature value;
    value.temp(temp);
    return value;
}

inline Bits bitsOf(const AltAz& value)
{
    return {std::bit_cast<std::uint64_t>(value.alt()), std::bit_cast<std::uint64_t>(value.az())};
}

inline Bits bitsOf(const DomeTemperature& value)
{
    return {std::bit_cast<std::uint64_t>(value.temp())};
}

inline void setBits(AltAz& value, const Bits& bits)
{
    value.alt(std::bit_cast<double>(bits.at(0)));
    value.az(std::bit_cast<double>(bits.at(1)));
}

inline void setBits(DomeTemperature& value, const Bits& bits)
{
    value.temp(std::bit_cast<double>(bits.at(0)));
}

/// One topic type as Fast DDS sees it: through its topic data type, samples being untyped.
struct TopicType {
    const char* name;
    std::size_t members;
    std::shared_ptr<TopicDataType> data;
    void (*set)(void* sample, const Bits& bits);
    Bits (*get)(const void* sample);
    void (*write)(eprosima::fastcdr::Cdr& cdr, const void* sample);
};

template <class PubSubType>
TopicType topicType(const char* name)
{
    using Wire = typename PubSubType::type;
    return {name,
            bitsOf(Wire{}).size(),
            std::make_shared<PubSubType>(),
            [](void* sample, const Bits& bits) { setBits(*static_cast<Wire*>(sample), bits); },
            [](const void* sample) { return bitsOf(*static_cast<const Wire*>(sample)); },
            [](eprosima::fastcdr::Cdr& cdr, const void* sample) {
                cdr << *static_cast<const Wire*>(sample);
            }};
}

inline TopicType altAz()
{
    return topicType<AltAzPubSubType>("AltAz");
}

inline TopicType domeTemperature()
{
    return topicType<DomeTemperaturePubSubType>("DomeTemperature");
}

inline void PrintTo(const TopicType& type, std::ostream* out)
{
    *out << type.name;
}

/// As many of these members as the type has.
inline Bits firstMembers(const TopicType& type, const Bits& bits)
{
    return {bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(type.members)};
}

/// A sample made and deleted by its topic data type.
class Sample
{
public:
    explicit Sample(const TopicType& type)
        : type_(type)
        , data_(type.data->createData(), [owner = type.data](void* data) { owner->deleteData(data); })
    {
    }

    Sample(const TopicType& type, const Bits& bits) : Sample(type) { type_.set(get(), bits); }

    void* get() const { return data_.get(); }

    Bits bits() const { return type_.get(get()); }

private:
    TopicType type_;
    std::shared_ptr<void> data_;
};

/// Lets a topic data type read a payload, which fills its memory exactly, into a sample.
inline bool deserialize(const TopicType& type, const Bytes& bytes, const Sample& sample)
{
    SerializedPayload_t payload(static_cast<std::uint32_t>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), payload.data);
    payload.length = static_cast<std::uint32_t>(bytes.size());
    return type.data->deserialize(&payload, sample.get());
}

/// What a payload is read as; nothing where it is refused. The sample held other values before.
inline std::optional<Bits> decoded(const TopicType& type, const Bytes& bytes)
{
    const Sample sample(type, Bits(type.members, 0x4045000000000000));
    return deserialize(type, bytes, sample) ? std::optional(sample.bits()) : std::nullopt;
}

/// What a topic data type writes into a payload with room for more than it needs.
inline Bytes encoded(const TopicType& type, const Bits& bits, DataRepresentationId representation)
{
    const Sample sample(type, bits);
    SerializedPayload_t payload(100);
    EXPECT_TRUE(type.data->serialize(sample.get(), &payload, representation));
    return {payload.data, payload.data + payload.length};
}

inline constexpr auto XCDR = eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
inline constexpr auto XCDR2 = eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;

/// Tests that hold for every topic type.
class EveryTopicType : public testing::TestWithParam<TopicType>
{
protected:
    const TopicType& type() const { return GetParam(); }
};

inline auto everyTopicType()
{
    return testing::Values(altAz(), domeTemperature());
}

inline std::string nameOf(const testing::TestParamInfo<TopicType>& info)
{
    return info.param.name;
}

} // namespace plex::test
