// SPDX-License-Identifier: Apache-2.0
// Types with all that a definition may say, as plex-idl generates them.
#include "Payloads.hpp"

#include <plex/PlexException.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <dds/DefaultsAdapter.hpp>
#include <dds/FixedAdapter.hpp>
#include <dds/GrowingAdapter.hpp>
#include <dds/KeyedAdapter.hpp>
#include <dds/KeyedByTextAdapter.hpp>
#include <dds/LooseAdapter.hpp>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

namespace wire = generated::dds_::everything;
namespace impl = generated::ddsimpl::everything;

using eprosima::fastdds::dds::DataRepresentationId;
using eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;
using eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
using everything::Door;

constexpr std::array representations{XCDR_DATA_REPRESENTATION, XCDR2_DATA_REPRESENTATION};

template <class Adapter>
bool decode(const Bytes& bytes, typename Adapter::DdsType& value)
{
    return Decoder<Adapter>().decode(bytes, value);
}

template <class Adapter>
std::uint32_t sizeOf(const typename Adapter::DdsType& value, DataRepresentationId representation)
{
    typename Adapter::PubSubType type;
    auto copy = value;
    return type.ovra::plex::ps::template PubSubType<typename Adapter::DdsType>::getSerializedSizeProvider(
        &copy, representation)();
}

/// Gives each member a value of its own, through the abstract class.
template <class T>
void fill(T& value)
{
    value.setName("the dome");
    value.setFlag(true);
    value.setLetter('x');
    value.setNumber(-5);
    value.setDoor(Door::OPEN);
    value.setAlarms(everything::Alarms::WIND | everything::Alarms::POWER);
    value.editMatrix()[1][2] = 1.5;
    value.setPoints({{{1, 2.5}, {3, 4.5}}});
    value.setSamples(std::vector<double>{1, 2, 3});
    value.setWords(std::vector<std::string>{"a", "", "bc"});
    value.resizeFlags(2)[1] = true;
    value.setIntervals(std::vector<everything::Interval>{{1, 2}, {3, 4}});
    value.setDoors(std::vector<Door>{Door::OPEN, Door::CLOSED});
    value.editInterval().low = 9;
    value.setNote({"note", 3});
    value.editCommand().width(2.5);
    value.editChoice().point({7, 8.5});
    value.editSwitches().letter.b(1.25);
    value.editSwitches().wanted.minus("wanted");
    value.editSwitches().yes.yes(0.25);
    value.setStamp({10, 20});
    value.setMaybe(0.5);
    value.setText("four");
    value.makePoint().value = 6.5;
    value.makeList() = {1, 2, 3};
}

template <class Adapter>
class EachExtensibility : public testing::Test
{
};

using Adapters = testing::Types<impl::Fixed, impl::Growing, impl::Loose>;

class AdapterName
{
public:
    template <class T>
    static std::string GetName(int index)
    {
        return std::vector<std::string>{"Final", "Appendable", "Mutable"}.at(static_cast<std::size_t>(index));
    }
};

TYPED_TEST_SUITE(EachExtensibility, Adapters, AdapterName);

TYPED_TEST(EachExtensibility, IsReadAsItWasWritten)
{
    TypeParam full;
    fill(full);
    for (const auto representation : representations) {
        TypeParam read;
        const Bytes bytes = encoded<TypeParam>(full.wire(), representation);
        EXPECT_EQ(bytes.size(), sizeOf<TypeParam>(full.wire(), representation));
        ASSERT_TRUE(decode<TypeParam>(bytes, read.wire()));
        EXPECT_EQ(read.wire(), full.wire());
        ASSERT_TRUE(decode<TypeParam>(encoded<TypeParam>(TypeParam().wire(), representation), read.wire()));
        EXPECT_EQ(read.wire(), TypeParam().wire());
    }
}

TYPED_TEST(EachExtensibility, IsRefusedWhereItIsCutOff)
{
    TypeParam full;
    fill(full);
    for (const auto representation : representations) {
        const Bytes whole = encoded<TypeParam>(full.wire(), representation);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            TypeParam read;
            EXPECT_FALSE(decode<TypeParam>(
                Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), read.wire()))
                << size;
        }
    }
}

TYPED_TEST(EachExtensibility, IsCopiedWithAllItsMembers)
{
    TypeParam full;
    fill(full);
    TypeParam other;
    TypeParam::copy(full, other);
    EXPECT_EQ(other.wire(), full.wire());
    TypeParam::copy(TypeParam(), other);
    EXPECT_EQ(other.wire(), TypeParam().wire());
    other.assign(full.wire());
    EXPECT_EQ(other.wire(), full.wire());
    const auto clone = full.clone();
    EXPECT_EQ(dynamic_cast<TypeParam&>(*clone).wire(), full.wire());
}

TYPED_TEST(EachExtensibility, HandsOverWhatItHoldsWithoutCopying)
{
    TypeParam full;
    fill(full);
    EXPECT_EQ(full.getName().data(), full.wire().name().data());
    EXPECT_EQ(full.getSamples().data(), full.wire().samples().data());
    EXPECT_EQ(full.getFlags().data(), full.wire().flags().data());
    EXPECT_EQ(&full.getNote(), &full.wire().note());
    EXPECT_EQ(full.getPoint(), &*full.wire().point());
    EXPECT_EQ(full.getText()->data(), full.wire().text()->data());
    EXPECT_EQ(full.getMaybe(), 0.5);
    full.resetPoint();
    full.setText(std::nullopt);
    EXPECT_EQ(full.getPoint(), nullptr);
    EXPECT_EQ(full.getText(), std::nullopt);
}

template <class Action>
std::string refusalOf(Action action)
{
    try {
        action();
    } catch (const ovra::plex::PlexException& exception) {
        return exception.what();
    }
    return "nothing";
}

TYPED_TEST(EachExtensibility, RefusesValuesBeyondBoundsAtOnce)
{
    TypeParam value;
    EXPECT_EQ(refusalOf([&] { value.setName("123456789"); }),
              "The value for name has a length of 9, its bound is 8");
    EXPECT_EQ(refusalOf([&] { value.setName(std::string_view("a\0b", 3)); }),
              "The value for name holds a NUL, at which readers would end it");
    EXPECT_EQ(refusalOf([&] { value.setText("12345"); }),
              "The value for text has a length of 5, its bound is 4");
    EXPECT_EQ(refusalOf([&] { value.resizeSamples(5); }),
              "The value for samples has a length of 5, its bound is 4");
    EXPECT_EQ(refusalOf([&] { value.setSamples(std::vector<double>(5)); }),
              "The value for samples has a length of 5, its bound is 4");
    EXPECT_EQ(value.wire(), TypeParam().wire());
    EXPECT_EQ(refusalOf([&] { value.setSamples(std::vector<double>(4)); }), "nothing");
}

TYPED_TEST(EachExtensibility, IsNotWrittenWithValuesThatItDoesNotHave)
{
    TypeParam value;
    value.setDoor(static_cast<Door>(2));
    for (const auto representation : representations) {
        EXPECT_TRUE(encoded<TypeParam>(value.wire(), representation).empty());
    }
}

TYPED_TEST(EachExtensibility, TakesAPartOfItsOwnElements)
{
    TypeParam value;
    value.setSamples(std::vector<double>{1, 2, 3});
    value.setSamples({value.getSamples().data() + 1, 2});
    EXPECT_THAT(std::vector<double>(value.getSamples().begin(), value.getSamples().end()),
                testing::ElementsAre(2, 3));
}

TEST(GeneratedDefaults, AreThoseOfTheDefinition)
{
    const impl::Growing value;
    EXPECT_EQ(value.getDoor(), Door::UNKNOWN);
    EXPECT_EQ(value.getInterval().high, 7);
    EXPECT_EQ(value.getCommand().discriminator(), Door::UNKNOWN);
    EXPECT_FALSE(value.getCommand().isWidth());
    EXPECT_TRUE(value.getChoice().isText());
    EXPECT_EQ(everything::LONGEST_NAME, 8U);
    EXPECT_EQ(everything::GREETING, "hello");
    EXPECT_EQ(toString(Door::OPEN), "OPEN");
}

TEST(GeneratedDefaults, AreThoseOfMembersThatAnEarlierVersionLacks)
{
    impl::Defaults value;
    value.setThree(1);
    value.setAngle(1);
    value.setYes(false);
    const Bytes onlyThree{0, 9, 0, 0, 4, 0, 0, 0, 2, 0, 0, 0};
    ASSERT_TRUE(decode<impl::Defaults>(onlyThree, value.wire()));
    EXPECT_EQ(value.getThree(), 2);
    EXPECT_EQ(value.getAngle(), 45.0);
    EXPECT_TRUE(value.getYes());
}

TEST(GeneratedUnion, HoldsTheMemberThatItsDiscriminatorSelects)
{
    everything::Number number;
    number.small(3);
    EXPECT_EQ(number.discriminator(), 1);
    EXPECT_TRUE(number.select(2));
    EXPECT_EQ(number.small(), 0);
    number.small(5);
    EXPECT_EQ(number.discriminator(), 2);
    EXPECT_THROW(number.text(), std::bad_variant_access);
    EXPECT_TRUE(number.select(77));
    EXPECT_TRUE(number.isText());
    number.text("abc");
    EXPECT_EQ(number.discriminator(), 77);
    everything::Command command;
    EXPECT_FALSE(command.select(static_cast<Door>(3)));
    EXPECT_TRUE(command.select(Door::CLOSED));
    EXPECT_TRUE(command.isReason());
}

TEST(GeneratedKey, IsWhatTheDefinitionSays)
{
    impl::Keyed value;
    value.setSite(1);
    value.setHeight(2);
    value.setPlace({3, 4});
    value.setDoors({{Door::OPEN, Door::CLOSED}});
    value.setComment("comment");
    EXPECT_TRUE(value.hasKey());
    const auto key = value.cloneKey();
    EXPECT_TRUE(value.keyEquals(*key));
    EXPECT_EQ(key->getHeight(), 0);
    EXPECT_EQ(key->getPlace().floor, 3);
    EXPECT_EQ(key->getPlace().desk, 0); // it is no part of the key
    EXPECT_EQ(key->getComment(), "");
    key->editPlace().desk = 99;
    EXPECT_TRUE(value.keyEquals(*key));
    key->editPlace().floor = 99;
    EXPECT_FALSE(value.keyEquals(*key));
}

template <class Adapter>
std::vector<int> hashOf(Adapter& value, bool forceMd5 = false)
{
    typename Adapter::PubSubType type;
    ovra::plex::fastdds::InstanceHandle_t handle;
    EXPECT_TRUE(type.getKey(&value.wire(), &handle, forceMd5));
    std::vector<int> bytes;
    for (int i = 0; i < 16; ++i) {
        bytes.push_back(handle.value[i]);
    }
    return bytes;
}

TEST(GeneratedKey, IsItsOwnHashWhereItIsShortEnough)
{
    impl::Keyed value;
    value.setSite(0x0102);
    value.setPlace({0x03040506, 7});
    value.setDoors({{Door::OPEN, Door::CLOSED}});
    EXPECT_EQ(hashOf(value), (std::vector<int>{1, 2, 0, 0, 3, 4, 5, 6, 0, 0, 0, 5, 0, 0, 0, 0}));
}

TEST(GeneratedKey, WithoutABoundHasAHashOfItsOwn)
{
    impl::KeyedByText first;
    first.setSecond(std::string(1000, 'x'));
    impl::KeyedByText second;
    second.setSecond(std::string(1000, 'x'));
    EXPECT_EQ(hashOf(first), hashOf(second));
    second.setFirst(1);
    EXPECT_NE(hashOf(first), hashOf(second));
}

TEST(GeneratedKey, IsHashedByAscendingIds)
{
    impl::KeyedByText value;
    value.setFirst(1);
    value.setSecond("a");
    // MD5 of 01 00 00 00, 00 00 00 02, 61 00.
    EXPECT_EQ(hashOf(value), hashOf(value, true));
    EXPECT_EQ(hashOf(value), (std::vector<int>{0xe6, 0xa4, 0xcc, 0xba, 0x8b, 0x36, 0xe8, 0xe3, 0x74, 0xbc,
                                               0x71, 0x21, 0x70, 0xa0, 0xff, 0xfa}));
}

TEST(GeneratedTopicDataType, SaysWhetherItIsBounded)
{
    EXPECT_TRUE(wire::DefaultsPubSubType().is_bounded());
    EXPECT_FALSE(wire::GrowingPubSubType().is_bounded());
    EXPECT_FALSE(wire::KeyedByTextPubSubType().is_bounded());
}

} // namespace

} // namespace plex::test
