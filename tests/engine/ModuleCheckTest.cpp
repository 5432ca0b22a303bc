// SPDX-License-Identifier: Apache-2.0
// Modules that contradict themselves are refused when their first entity is made, in a sentence.
#include "KeyedTest.hpp"

#include <plex/ps/internal/DdsBasePubSub.hpp>

namespace plex::test
{

namespace
{

namespace wire = generated::dds_::keyed;

/// An adapter whose topic data type, or one of its answers, is another.
template <class Type, bool keyed = true>
class Adapter : public generated::ddsimpl::keyed::Sensor
{
public:
    using PubSubType = Type;

    using generated::ddsimpl::keyed::Sensor::Sensor;

    bool hasKey() const override { return keyed; }
};

class SmallPayload : public wire::SensorPubSubType
{
public:
    SmallPayload() { m_typeSize = 8; }
};

class WithoutKey : public wire::SensorPubSubType
{
public:
    WithoutKey() { m_isGetKeyDefined = false; }
};

class SmallKey : public ovra::plex::ps::PubSubType<wire::Sensor>
{
public:
    SmallKey() : PubSubType({"generated::dds_::keyed::Sensor", 88, true, 2}) {}
};

class ModuleCheckTest : public KeyedTest
{
protected:
    template <class ST>
    void makeEntity()
    {
        const ovra::plex::ps::internal::DdsBasePubSub<Sensor, ST> entity(uri, {}, {}, participant());
    }
};

} // namespace

TEST_F(ModuleCheckTest, SoundOneIsAccepted)
{
    EXPECT_NO_THROW(makeEntity<Adapter<wire::SensorPubSubType>>());
}

TEST_F(ModuleCheckTest, ValuesThatDenyTheKeyOfTheirTypeAreNamed)
{
    const LogCapture log;
    const auto text =
        thrownText<PlexException>([&] { makeEntity<Adapter<wire::SensorPubSubType, false>>(); });
    EXPECT_EQ(text,
              "The module of type generated::dds_::keyed::Sensor contradicts itself: by hasKey() of its "
              "values the type has no key, by its topic data type the opposite");
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, text), 1);
}

TEST_F(ModuleCheckTest, ValuesThatClaimAKeyThatTheirTypeLacksAreNamed)
{
    EXPECT_EQ(
        thrownText<PlexException>([&] { makeEntity<Adapter<WithoutKey>>(); }),
        "The module of type generated::dds_::keyed::Sensor contradicts itself: by hasKey() of its values "
        "the type has a key, by its topic data type the opposite");
}

TEST_F(ModuleCheckTest, LargestPayloadThatIsTooSmallIsNamed)
{
    EXPECT_EQ(thrownText<PlexException>([&] { makeEntity<Adapter<SmallPayload>>(); }),
              "The module of type generated::dds_::keyed::Sensor states a largest payload of 8 bytes, but a "
              "default value takes 20");
}

TEST_F(ModuleCheckTest, LargestKeyThatIsTooSmallIsNamed)
{
    const LogCapture log;
    EXPECT_EQ(
        thrownText<PlexException>([&] { makeEntity<Adapter<SmallKey>>(); }),
        "The module of type generated::dds_::keyed::Sensor can not compute the key of a default value; is "
        "the largest key that it states too small?");
    EXPECT_EQ(
        log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL,
                  "The key of a value of generated::dds_::keyed::Sensor takes more than the 2 bytes that "
                  "its module states"),
        1);
}

TEST(ModuleSizeTest, ValueThatIsLargerThanItsTypeSaysIsNamed)
{
    SmallPayload type;
    wire::Sensor value;
    ovra::plex::fastdds::SerializedPayload_t payload(type.m_typeSize);
    const LogCapture log;
    EXPECT_FALSE(type.serialize(&value, &payload));
    EXPECT_EQ(
        log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL,
                  "The payload of a value of generated::dds_::keyed::Sensor takes more than the 8 bytes "
                  "that its module states"),
        1);
}

} // namespace plex::test
