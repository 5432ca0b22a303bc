// SPDX-License-Identifier: Apache-2.0
// Generated code with delimiters before lists of enums, and with keys hashed as XCDR version 2 has them; the
// codec, which was written apart from it, agrees.
#include "Codec.hpp"

#include <array>
#include <dds/AlignedPubSubType.hpp>
#include <dds/KeyedByListsPubSubType.hpp>
#include <dds/KeyedPubSubType.hpp>
#include <dds/ListsPubSubType.hpp>
#include <dds/LoosePubSubType.hpp>

namespace plex::test
{

namespace
{

namespace wire = generated::dds_::choices;

using choices::Alarms;
using choices::Door;
using eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;
using eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
using ovra::plex::fastdds::DataRepresentationId;

constexpr CodecOptions delimiting{.delimitsEnumerations = true};

const Type& typeOf(const char* name)
{
    static const ParseResult result = parseFile(PLEX_TEST_IDL_DIR "/choices.idl");
    return *result.model->findType(std::string("choices::") + name);
}

template <class TopicType>
Payload encoded(typename TopicType::type value,
                DataRepresentationId representation = XCDR2_DATA_REPRESENTATION)
{
    TopicType type;
    ovra::plex::fastdds::SerializedPayload_t payload(
        type.getSerializedSizeProvider(&value, representation)());
    EXPECT_TRUE(type.serialize(&value, &payload, representation));
    EXPECT_EQ(payload.length, payload.max_size);
    return {payload.data, payload.data + payload.length};
}

template <class TopicType>
typename TopicType::type decoded(Payload bytes)
{
    TopicType type;
    typename TopicType::type value;
    ovra::plex::fastdds::SerializedPayload_t payload(static_cast<std::uint32_t>(bytes.size()));
    std::ranges::copy(bytes, payload.data);
    payload.length = static_cast<std::uint32_t>(bytes.size());
    EXPECT_TRUE(type.deserialize(&payload, &value));
    return value;
}

template <class TopicType>
std::string hashOf(typename TopicType::type value)
{
    TopicType type;
    ovra::plex::fastdds::InstanceHandle_t handle;
    EXPECT_TRUE(type.getKey(&value, &handle));
    return hexOf({&handle.value[0], &handle.value[0] + 16});
}

/// Both ways, and as the codec does it.
template <class TopicType>
void expectBytes(const typename TopicType::type& value, const char* name, const Payload& expected)
{
    EXPECT_EQ(hexOf(encoded<TopicType>(value)), hexOf(expected));
    EXPECT_EQ(decoded<TopicType>(expected), value);
    const Type& type = typeOf(name);
    const Datum datum = decode(type, expected, delimiting);
    EXPECT_EQ(hexOf(encode(type, datum, {XcdrVersion::Xcdr2, std::endian::little, false}, delimiting)),
              hexOf(expected));
}

TEST(Choices, DelimitListsOfEnumsAndBitmasks)
{
    wire::Lists lists;
    lists.doors({Door::OPEN});
    lists.row({Door::CLOSED, Door::OPEN});
    lists.alarms({Alarms::POWER});
    lists.rows({{{Door::OPEN, Door::CLOSED}, {Door::CLOSED, Door::OPEN}}});
    lists.table({{Door::OPEN, Door::OPEN}});
    lists.texts({{"a", ""}});
    lists.more(std::vector<Door>{});
    const std::string doors = "00000008 00000001 00000001 ";
    const std::string row = "00000008 00000000 00000001 ";
    const std::string alarms = "00000005 00000001 02 00 00 00 ";
    const std::string rows = "00000010 00000001 00000000 00000000 00000001 ";
    const std::string table = "00000010 00000001 00000008 00000001 00000001 ";
    const std::string texts = "00000015 00000001 0000000d 00000002 61 00 00 00 00000001 00 ";
    const std::string more = "01 00 00 00000004 00000000";
    expectBytes<wire::ListsPubSubType>(
        lists, "Lists",
        payloadOf(8, "00000070 " + doors + row + alarms + rows + table + texts + more, std::endian::little));
}

/// A header of a member takes its length from the delimiter.
TEST(Choices, DelimitListsThatHaveHeaders)
{
    wire::Loose loose;
    loose.doors({Door::OPEN});
    loose.alarms({Alarms::WIND, Alarms::POWER, Alarms::WIND});
    expectBytes<wire::LoosePubSubType>(
        loose, "Loose",
        payloadOf(10, "0000001b 50000001 00000008 00000001 00000001 50000002 00000003 01 02 01",
                  std::endian::little));
}

/// In version 1 alignment counts from the last member with a header on, as in Fast CDR; one that is absent
/// has a header, too.
TEST(Choices, AlignBehindHeadersAsFastCdrDoes)
{
    const std::string note = "00140009 00000005 6e6f7465 00 00 00 00 000a0002 0003 0000 3f020000 ";
    const std::string angle = "3ff8000000000000 ";
    const std::string other = "4004000000000000";
    for (const std::string tag : {"00020000 ", "00020001 07 00 00 00 00 00 00 00 "}) {
        const Payload payload = payloadOf(0, note + angle + tag + other);
        const auto value = decoded<wire::AlignedPubSubType>(payload);
        EXPECT_EQ(value.note().text, "note");
        EXPECT_EQ(value.angle(), 1.5);
        EXPECT_EQ(value.tag().has_value(), tag.size() > 10);
        EXPECT_EQ(value.other(), 2.5);
        const Type& type = typeOf("Aligned");
        const Datum datum = decode(type, payload);
        EXPECT_EQ(hexOf(encode(type, datum, {XcdrVersion::Xcdr1, std::endian::big, false})), hexOf(payload));
        EXPECT_EQ(hexOf(encoded<wire::AlignedPubSubType>(value, XCDR_DATA_REPRESENTATION)),
                  hexOf(encode(type, datum, {XcdrVersion::Xcdr1, std::endian::native, false})));
    }
}

TEST(Choices, HashKeysOfVersion2)
{
    wire::Keyed keyed;
    keyed.number(1);
    keyed.angle(1.0);
    const std::string expected = "00000001 3ff00000 00000000 00000000";
    EXPECT_EQ(hashOf<wire::KeyedPubSubType>(keyed), expected);
    const Type& type = typeOf("Keyed");
    const auto hash = keyHash(type, fromJson(type, R"({"number":1,"angle":1.0})"), XcdrVersion::Xcdr2);
    EXPECT_EQ(hexOf({hash->begin(), hash->end()}), expected);
}

TEST(Choices, HashKeysWithDelimiters)
{
    wire::KeyedByLists keyed;
    keyed.names({"a", "bc"});
    keyed.doors({Door::OPEN, Door::CLOSED});
    keyed.number(7);
    const Type& type = typeOf("KeyedByLists");
    const Datum datum = fromJson(type, R"({"names":["a","bc"],"doors":["OPEN","CLOSED"],"number":7})");
    const auto hash = keyHash(type, datum, XcdrVersion::Xcdr2, delimiting);
    EXPECT_EQ(hashOf<wire::KeyedByListsPubSubType>(keyed), hexOf({hash->begin(), hash->end()}));
    const auto other = keyHash(type, datum, XcdrVersion::Xcdr2);
    EXPECT_NE(hashOf<wire::KeyedByListsPubSubType>(keyed), hexOf({other->begin(), other->end()}));
}

} // namespace

} // namespace plex::test
