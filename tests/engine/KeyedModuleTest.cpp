// SPDX-License-Identifier: Apache-2.0
#include "ForeignSensor.hpp"
#include "KeyedTest.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <keyed/dds/ChannelAdapter.hpp>
#include <plex/module/TopicAdapter.hpp>

#include <array>

namespace plex::test
{

using ovra::plex::fastdds::InstanceHandle_t;
using ovra::plex::fastdds::SerializedPayload_t;
namespace wire = generated::dds_::keyed;
namespace impl = generated::ddsimpl::keyed;

static_assert(ovra::plex::ps::TopicAdapter<impl::Sensor, keyed::Sensor>);
static_assert(ovra::plex::ps::TopicAdapter<impl::Channel, keyed::Channel>);

namespace
{

constexpr std::size_t longestName = 64; ///< in characters

using Hash = std::array<unsigned, 16>;

template <class Type>
Hash keyHash(typename Type::type& value, bool forceMd5 = false)
{
    InstanceHandle_t handle;
    EXPECT_TRUE(Type().getKey(&value, &handle, forceMd5));
    Hash hash{};
    for (std::size_t i = 0; i < hash.size(); ++i) {
        hash[i] = static_cast<const InstanceHandle_t&>(handle).value[i];
    }
    return hash;
}

wire::Sensor wireSensor(const std::string& name, double value = 0)
{
    wire::Sensor result;
    result.name(name);
    result.value(value);
    return result;
}

} // namespace

TEST(KeyedModuleTest, KeyOfASerializedValueIsThatOfTheValue)
{
    wire::ChannelPubSubType type;
    wire::Channel channel;
    channel.number(0x01020304);
    SerializedPayload_t payload(64);
    ASSERT_TRUE(type.serialize(&channel, &payload));
    InstanceHandle_t fromValue;
    ASSERT_TRUE(type.getKey(&channel, &fromValue));
    InstanceHandle_t fromPayload;
    ASSERT_TRUE(type.compute_key(payload, fromPayload));
    EXPECT_EQ(fromPayload, fromValue);
    payload.length = 5;
    EXPECT_FALSE(type.compute_key(payload, fromPayload)) << "a truncated value";
}

TEST(KeyedModuleTest, TypeWithoutAKeyGivesNoKeyOfASerializedValue)
{
    generated::dds_::vexstubif::AltAzPubSubType type;
    SerializedPayload_t payload(64);
    InstanceHandle_t handle;
    EXPECT_FALSE(type.compute_key(payload, handle));
    EXPECT_FALSE(handle.isDefined());
}

TEST(KeyedModuleTest, LongKeyIsHashedFromItsBigEndianEncoding)
{
    auto probe = wireSensor("probe", 7);
    EXPECT_EQ(keyHash<wire::SensorPubSubType>(probe), (Hash{0x21, 0x2e, 0x44, 0x06, 0x0d, 0x92, 0x71, 0x6d,
                                                            0x18, 0x8d, 0x75, 0x8a, 0x2b, 0xad, 0xc7, 0x87}));
}

TEST(KeyedModuleTest, ShortKeyIsItsOwnHashUnlessAskedOtherwise)
{
    wire::Channel channel;
    channel.number(0x01020304);
    channel.level(7);
    EXPECT_EQ(keyHash<wire::ChannelPubSubType>(channel), (Hash{1, 2, 3, 4}));
    EXPECT_EQ(keyHash<wire::ChannelPubSubType>(channel, true),
              (Hash{0x08, 0xd6, 0xc0, 0x5a, 0x21, 0x51, 0x2a, 0x79, 0xa1, 0xdf, 0xeb, 0x9d, 0x2a, 0x8f, 0x26,
                    0x2f}));
}

TEST(KeyedModuleTest, OverlongKeyHasNoHash)
{
    auto longest = wireSensor(std::string(longestName, 'x'));
    keyHash<wire::SensorPubSubType>(longest);
    auto overlong = wireSensor(std::string(longestName + 1, 'x'));
    InstanceHandle_t handle;
    EXPECT_FALSE(wire::SensorPubSubType().getKey(&overlong, &handle));
    EXPECT_FALSE(handle.isDefined());
}

TEST(KeyedModuleTest, PayloadOfEitherRepresentationIsDecoded)
{
    wire::SensorPubSubType type;
    for (const auto representation : {eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION,
                                      eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION}) {
        auto sent = wireSensor(std::string(longestName, 'x'), 7.5);
        SerializedPayload_t payload(type.m_typeSize);
        ASSERT_TRUE(type.serialize(&sent, &payload, representation));
        EXPECT_EQ(payload.length, type.getSerializedSizeProvider(&sent, representation)());
        wire::Sensor received;
        ASSERT_TRUE(type.deserialize(&payload, &received));
        EXPECT_EQ(received, sent);
    }
}

TEST(KeyedModuleTest, KeysAreEqualWhateverTheOtherFields)
{
    const impl::Sensor a(wireSensor("a", 1));
    EXPECT_TRUE(a.hasKey());
    EXPECT_TRUE(a.keyEquals(impl::Sensor(wireSensor("a", 2))));
    EXPECT_FALSE(a.keyEquals(impl::Sensor(wireSensor("b", 1))));
    EXPECT_THROW(a.keyEquals(ForeignSensor("a")), IllegalStateException);
}

TEST(KeyedModuleTest, ClonedKeyCarriesTheKeyOnly)
{
    const impl::Sensor a(wireSensor("a", 1));
    EXPECT_EQ(a.cloneKey()->getName(), "a");
    EXPECT_EQ(a.cloneKey()->getValue(), 0);
    EXPECT_EQ(a.clone()->getValue(), 1);
}

class LoadedModuleTest : public KeyedTest
{
};

TEST_F(LoadedModuleTest, MiddlewareFindsTheModuleByItsPath)
{
    const auto middleware = ovra::plex::Plex::create({{"dds.module.path", KEYED_MODULE_DIRECTORY}});
    const auto publisher = middleware->createPublisher<Sensor>(uri);
    const auto subscriber = middleware->createSubscriber<Sensor>(uri);
    const auto mrvSubscriber = middleware->createMrvSubscriber<Sensor>(uri);
    const auto value = publisher->createDataEntity();
    value->setName("a");
    value->setValue(7);
    publisher->publish(*value, 0ms);
    EXPECT_THAT(readings(subscriber->read(0)), testing::ElementsAre(Reading{"a", 7}));
    EXPECT_THAT(readings(mrvSubscriber->readMostRecent(0ms)), testing::ElementsAre(Reading{"a", 7}));
}

TEST_F(LoadedModuleTest, CallbackMayCloseASubscriberOfAnotherModule)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    const std::unique_ptr<SensorReader> other(
        generated_dds_Subscriber_keyed_Sensor(plex, testUri("sensors"), {}, {}));
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] { other->close(); });
    publishPositions(*publisher, 1);
    EXPECT_THROW(other->read(0), IllegalStateException);
}

TEST_F(LoadedModuleTest, ValueWithAnOverlongKeyIsNotPublished)
{
    const auto publisher = sensorPublisher();
    const auto subscriber = sensorSubscriber();
    impl::Sensor overlong;
    overlong.wire().name(std::string(longestName + 1, 'x')); // past the setter, which refuses it
    EXPECT_THROW(publisher->publish(overlong, 0ms), PlexException);
    EXPECT_THROW(publisher->createInstancePublisher(overlong), PlexException);
    EXPECT_THAT(subscriber->read(0), testing::IsEmpty());
}

} // namespace plex::test
