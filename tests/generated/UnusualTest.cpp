// SPDX-License-Identifier: Apache-2.0
// Rare combinations of what a definition may say: the generated functions and the codec, which was written
// apart from them, make the same of values that have something in each of their parts.
#include "Payloads.hpp"

#include <plex/PlexException.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <dds/FramesPubSubType.hpp>
#include <dds/GrowingAdapter.hpp>
#include <dds/GrowingPubSubType.hpp>
#include <dds/LoosestPubSubType.hpp>
#include <dds/within/BasePubSubType.hpp>
#include <idl/AllocatedBytes.hpp>
#include <span>

namespace plex::test
{

namespace
{

namespace idl = ovra::plex::idl;
namespace wire = generated::dds_::unusual;

using eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;
using eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
using idl::Datum;
using idl::XcdrVersion;

/// Makes values in which each part differs from its default, and cases of unions take turns.
class Filler
{
public:
    explicit Filler(std::size_t start) : count_(start) {}

    Datum make(const idl::Type& declared)
    {
        const idl::Type& type = resolved(declared);
        if (const auto* const structure = idl::as<idl::StructType>(type)) {
            return makeStruct(*structure);
        }
        if (const auto* const choice = idl::as<idl::UnionType>(type)) {
            return makeUnion(*choice);
        }
        if (const auto* const sequence = idl::as<idl::SequenceType>(type)) {
            return {makeElements(*sequence->element, 2)};
        }
        if (const auto* const array = idl::as<idl::ArrayType>(type)) {
            const idl::ArrayShape shape(*array);
            return {makeElements(*shape.element, shape.count)};
        }
        return makeSmall(type);
    }

private:
    Datum::Elements makeElements(const idl::Type& element, std::uint64_t count)
    {
        Datum::Elements elements;
        for (std::uint64_t i = 0; i < count; ++i) {
            elements.push_back(make(element));
        }
        return elements;
    }

    Datum makeStruct(const idl::StructType& type)
    {
        idl::StructDatum value;
        for (const idl::Member* const member : allMembers(type)) {
            if (!member->optional || ++count_ % 3 != 0) {
                value.members.push_back({member, make(*member->type)});
            }
        }
        return {value};
    }

    Datum makeUnion(const idl::UnionType& type)
    {
        idl::UnionDatum value;
        const idl::UnionCase& chosen = type.cases[++count_ % type.cases.size()];
        value.discriminator = chosen.labels.empty() ? type.unusedLabel.value().bits
                                                    : chosen.labels[count_ % chosen.labels.size()].bits;
        value.member.push_back(make(*chosen.type));
        return {value};
    }

    Datum makeSmall(const idl::Type& type)
    {
        const std::size_t number = ++count_ % 100;
        if (const auto* const enumeration = idl::as<idl::EnumType>(type)) {
            const auto& enumerators = enumeration->enumerators;
            return {std::int64_t{enumerators[number % enumerators.size()].value}};
        }
        if (const auto* const bitmask = idl::as<idl::BitmaskType>(type)) {
            return {std::uint64_t{1} << bitmask->flags[number % bitmask->flags.size()].position};
        }
        switch (type.kind) {
        case idl::TypeKind::Boolean:
            return {number % 2 == 1};
        case idl::TypeKind::Char:
            return {static_cast<char>('!' + number % 90)};
        case idl::TypeKind::Float:
            return {static_cast<float>(number)};
        case idl::TypeKind::Double:
            return {static_cast<double>(number)};
        case idl::TypeKind::String:
            return {std::string(1 + number % 5, static_cast<char>('a' + number % 26))};
        case idl::TypeKind::Octet:
        case idl::TypeKind::Uint8:
        case idl::TypeKind::Uint16:
        case idl::TypeKind::Uint32:
        case idl::TypeKind::Uint64:
            return {std::uint64_t{number}};
        default:
            return {-static_cast<std::int64_t>(number)};
        }
    }

    std::size_t count_;
};

const idl::Model& model()
{
    static const idl::Model result = modelOfFile("unusual.idl");
    return result;
}

struct Growing {
    using DdsType = wire::Growing;
    using PubSubType = wire::GrowingPubSubType;
    static constexpr const char* name = "unusual::Growing";
};

struct Loosest {
    using DdsType = wire::Loosest;
    using PubSubType = wire::LoosestPubSubType;
    static constexpr const char* name = "unusual::Loosest";
};

struct Base {
    using DdsType = wire::within::Base;
    using PubSubType = wire::within::BasePubSubType;
    static constexpr const char* name = "unusual::within::Base";
};

template <class Topic>
class Unusual : public testing::Test
{
protected:
    using Value = typename Topic::DdsType;

    static constexpr std::array<XcdrVersion, 2> versions{XcdrVersion::Xcdr1, XcdrVersion::Xcdr2};
    static constexpr std::array<std::endian, 2> orders{std::endian::little, std::endian::big};

    static const idl::Type& type() { return *model().findType(Topic::name); }

    static Bytes byCodec(const Datum& datum, XcdrVersion version, std::endian order = std::endian::native)
    {
        return idl::encode(type(), datum, {version, order, false});
    }

    static Bytes byGenerated(const Value& value, XcdrVersion version)
    {
        return encoded<Topic>(value, version == XcdrVersion::Xcdr1 ? XCDR_DATA_REPRESENTATION
                                                                   : XCDR2_DATA_REPRESENTATION);
    }

    bool read(const Bytes& bytes, Value& value) { return decoder_.decode(bytes, value); }

    static bool codecReads(const Bytes& bytes)
    {
        try {
            idl::decode(type(), bytes);
            return true;
        } catch (const idl::CodecError&) {
            return false;
        }
    }

private:
    Decoder<Topic> decoder_;
};

struct Frames {
    using DdsType = wire::Frames;
    using PubSubType = wire::FramesPubSubType;
    static constexpr const char* name = "unusual::Frames";
};

using Topics = testing::Types<Growing, Loosest, Base>;

class TopicName
{
public:
    template <class Topic>
    static std::string GetName(int /*index*/)
    {
        return std::string(Topic::name).substr(std::string(Topic::name).rfind(':') + 1);
    }
};

TYPED_TEST_SUITE(Unusual, Topics, TopicName);

TYPED_TEST(Unusual, NewValuesAreThoseOfTheCodec)
{
    for (const XcdrVersion version : this->versions) {
        EXPECT_EQ(this->byGenerated({}, version), this->byCodec({idl::StructDatum()}, version));
    }
}

TYPED_TEST(Unusual, ValuesAreReadAndWrittenAsByTheCodec)
{
    for (std::size_t start = 0; start < 24; ++start) {
        const Datum datum = Filler(start).make(this->type());
        for (const XcdrVersion version : this->versions) {
            for (const std::endian order : this->orders) {
                typename TypeParam::DdsType value;
                ASSERT_TRUE(this->read(this->byCodec(datum, version, order), value)) << start;
                for (const XcdrVersion written : this->versions) {
                    EXPECT_EQ(this->byGenerated(value, written), this->byCodec(datum, written)) << start;
                }
            }
        }
    }
}

TYPED_TEST(Unusual, KeysAreThoseOfTheCodec)
{
    for (std::size_t start = 0; start < 24; ++start) {
        const Datum datum = Filler(start).make(this->type());
        typename TypeParam::DdsType value;
        ASSERT_TRUE(this->read(this->byCodec(datum, XcdrVersion::Xcdr2), value));
        ovra::plex::fastdds::InstanceHandle_t handle;
        typename TypeParam::PubSubType topicType;
        ASSERT_TRUE(topicType.getKey(&value, &handle));
        const std::span hash(&handle.value[0], 16);
        EXPECT_TRUE(std::ranges::equal(idl::keyHash(this->type(), datum).value(), hash)) << start;
    }
}

TYPED_TEST(Unusual, ValuesThatAreCutOffOrChangedAreReadIfTheCodecReadsThem)
{
    const Datum datum = Filler(5).make(this->type());
    for (const XcdrVersion version : this->versions) {
        const Bytes whole = this->byCodec(datum, version);
        for (std::size_t at = 4; at < whole.size(); ++at) {
            typename TypeParam::DdsType value;
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at));
            EXPECT_EQ(this->read(part, value), this->codecReads(part)) << at;
            Bytes changed = whole;
            changed[at] ^= 0x55U;
            EXPECT_EQ(this->read(changed, value), this->codecReads(changed)) << at;
        }
    }
}

// What the elements of a sequence are when it grows.

using GrowingAdapter = generated::ddsimpl::unusual::Growing;
using unusual::Level;

TEST(ResizedSequences, HaveElementsThatMayBePublished)
{
    GrowingAdapter value;
    value.resizeLevels(2)[0] = Level::HIGH;
    EXPECT_EQ(value.resizeLevels(3)[0], Level::HIGH);
    EXPECT_EQ(value.getLevels()[1], Level::MIDDLE);
    EXPECT_EQ(value.getLevels()[2], Level::MIDDLE);
    EXPECT_EQ(value.resizeRowsList(1)[0].back().back(), Level::MIDDLE);
    EXPECT_EQ(value.resizeMasksList(1)[0], unusual::Mask{});
    EXPECT_FALSE(encoded<Growing>(value.wire(), XCDR_DATA_REPRESENTATION).empty());
    EXPECT_EQ(value.resizeLevels(1).size(), 1U);
}

// Elements that take no bytes: nothing but a bound keeps a payload from announcing any number of them.

constexpr std::size_t mostOfNothing = 1000;

TEST(SequencesOfNothing, HaveABound)
{
    GrowingAdapter value;
    EXPECT_EQ(value.resizeEmptyList(mostOfNothing).size(), mostOfNothing);
    EXPECT_THROW(value.resizeEmptyList(mostOfNothing + 1), ovra::plex::PlexException);
    EXPECT_THROW(value.resizeNothings(mostOfNothing + 1), ovra::plex::PlexException);
    value.wire().nothings().resize(mostOfNothing + 1);
    EXPECT_TRUE(encoded<Growing>(value.wire(), XCDR_DATA_REPRESENTATION).empty());
}

TEST(SequencesOfNothing, AreReadAsTheyWereWritten)
{
    GrowingAdapter value;
    value.resizeEmptyList(mostOfNothing);
    value.resizeNothings(3);
    for (const auto representation : {XCDR_DATA_REPRESENTATION, XCDR2_DATA_REPRESENTATION}) {
        wire::Growing read;
        ASSERT_TRUE(Decoder<Growing>().decode(encoded<Growing>(value.wire(), representation), read));
        EXPECT_EQ(read, value.wire());
    }
}

// Elements of 800 000 bytes each.

TEST(SequencesOfLargeElements, AreNotMadeForAPayloadThatCanNotHoldThem)
{
    for (std::uint8_t count = 1; count < 20; ++count) {
        for (const std::uint8_t identifier : Bytes{1, 7}) {
            Bytes bytes{0, identifier, 0, 0, count, 0, 0, 0};
            bytes.resize(20);
            wire::Frames value;
            const AllocatedBytes allocated;
            EXPECT_FALSE(Decoder<Frames>().decode(bytes, value));
            EXPECT_LT(allocated.count(), 100000U) << unsigned{count};
        }
    }
}

} // namespace

} // namespace plex::test
