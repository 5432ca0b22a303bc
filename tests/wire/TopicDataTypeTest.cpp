// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

namespace plex::test
{

namespace
{

struct Settings {
    const char* type;
    const char* registeredName;
    std::uint32_t largestPayload;
};

constexpr std::array<Settings, 2> settings{
    {{"AltAz", "generated::dds_::vexstubif::AltAz", 28},
     {"DomeTemperature", "generated::dds_::vexstubif::DomeTemperature", 20}}};

} // namespace

class TopicDataTypeOf : public EveryTopicType
{
protected:
    const Settings& wanted() const
    {
        return *std::find_if(settings.begin(), settings.end(), [this](const Settings& candidate) {
            return std::string_view(candidate.type) == type().name;
        });
    }

    TopicDataType& data() const { return *type().data; }
};

INSTANTIATE_TEST_SUITE_P(, TopicDataTypeOf, everyTopicType(), nameOf);

TEST_P(TopicDataTypeOf, IsRegisteredUnderTheWireTypesFullName)
{
    EXPECT_STREQ(data().getName(), wanted().registeredName);
}

TEST_P(TopicDataTypeOf, SaysHowLargeAPayloadMayBe)
{
    EXPECT_EQ(data().m_typeSize, wanted().largestPayload);
}

TEST_P(TopicDataTypeOf, IsBoundedButNeverPlainNorBuiltInPlace)
{
    EXPECT_TRUE(data().is_bounded());
    EXPECT_FALSE(data().is_plain());
    for (const int representation : {0, 1, 2, 99}) {
        EXPECT_FALSE(data().is_plain(static_cast<DataRepresentationId>(representation)));
    }
    const Sample sample(type());
    EXPECT_FALSE(data().construct_sample(sample.get()));
}

TEST_P(TopicDataTypeOf, HasNoKeyAndLeavesTheHandleAlone)
{
    EXPECT_FALSE(data().m_isGetKeyDefined);
    ovra::plex::fastdds::InstanceHandle_t handle;
    for (int i = 0; i < 16; ++i) {
        handle.value[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i + 1);
    }
    const auto before = handle;
    const Sample sample(type());
    for (const bool forceMd5 : {false, true}) {
        EXPECT_FALSE(data().getKey(sample.get(), &handle, forceMd5));
        EXPECT_EQ(handle, before);
    }
}

TEST_P(TopicDataTypeOf, LeavesAnUndefinedHandleUndefined)
{
    ovra::plex::fastdds::InstanceHandle_t handle;
    const Sample sample(type());
    EXPECT_FALSE(data().getKey(sample.get(), &handle, true));
    EXPECT_FALSE(handle.isDefined());
}

TEST_P(TopicDataTypeOf, MakesDefaultSamples)
{
    EXPECT_EQ(Sample(type()).bits(), Bits(type().members));
}

TEST_P(TopicDataTypeOf, MakesEachSampleAnew)
{
    const Sample first(type());
    const Sample second(type());
    EXPECT_NE(first.get(), second.get());
}

TEST_P(TopicDataTypeOf, IgnoresTheDeletionOfNull)
{
    EXPECT_NO_THROW(data().deleteData(nullptr));
}

TEST(TopicDataType, GivesASizeProviderThatOutlivesIt)
{
    auto data = topicType<AltAzPubSubType>("").data;
    const Sample sample(altAz());
    const auto size = data->getSerializedSizeProvider(sample.get(), XCDR2);
    data.reset();
    EXPECT_EQ(size(), 24U);
}

template <class Type>
class NamesOfFastDds3 : public testing::Test
{
protected:
    Type type_;
};

using Types = testing::Types<AltAzPubSubType, DomeTemperaturePubSubType>;
TYPED_TEST_SUITE(NamesOfFastDds3, Types, );

TYPED_TEST(NamesOfFastDds3, DoTheSameInEveryGeneration)
{
    TypeParam& type = this->type_;
    void* const sample = type.create_data();
    void* const copy = type.create_data();
    for (const auto representation : {XCDR, XCDR2}) {
        const auto size = type.calculate_serialized_size(sample, representation);
        EXPECT_EQ(size, type.getSerializedSizeProvider(sample, representation)());
        SerializedPayload_t payload(size);
        const void* const constSample = sample;
        EXPECT_TRUE(type.serialize(constSample, payload, representation));
        EXPECT_EQ(payload.length, size);
        EXPECT_TRUE(type.deserialize(payload, copy));
        ovra::plex::fastdds::InstanceHandle_t handle;
        EXPECT_FALSE(type.compute_key(payload, handle));
        EXPECT_FALSE(type.compute_key(constSample, handle));
    }
    type.delete_data(copy);
    type.delete_data(sample);
}

} // namespace plex::test
