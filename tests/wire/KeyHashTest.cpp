// SPDX-License-Identifier: Apache-2.0
#include "Payloads.hpp"

#include <plex/module/PubSubType.hpp>

#include <gtest/gtest.h>

#include <numeric>

namespace plex::test
{

namespace
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::EncodingAlgorithmFlag;

/// Wire values that consist of a key only.
struct ShortKey {
    std::uint32_t number;
};

struct LongKey {
    std::array<std::uint8_t, 24> octets;
};

void deserialize(Cdr& /*cdr*/, ShortKey& /*data*/, EncodingAlgorithmFlag /*encoding*/) {}

void deserialize(Cdr& /*cdr*/, LongKey& /*data*/, EncodingAlgorithmFlag /*encoding*/) {}

void serialize_key(Cdr& cdr, const ShortKey& data)
{
    cdr << data.number;
}

void serialize_key(Cdr& cdr, const LongKey& data)
{
    cdr << data.octets;
}

} // namespace

} // namespace plex::test

namespace eprosima::fastcdr
{

using plex::test::LongKey;
using plex::test::ShortKey;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& /*calculator*/, const ShortKey& /*data*/,
                                      std::size_t& /*currentAlignment*/)
{
    return 0;
}

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& /*calculator*/, const LongKey& /*data*/,
                                      std::size_t& /*currentAlignment*/)
{
    return 0;
}

template <>
void serialize(Cdr& /*cdr*/, const ShortKey& /*data*/)
{
}

template <>
void serialize(Cdr& /*cdr*/, const LongKey& /*data*/)
{
}

} // namespace eprosima::fastcdr

namespace plex::test
{

namespace
{

using ovra::plex::fastdds::InstanceHandle_t;
using ovra::plex::ps::PubSubType;

constexpr const char* md5OfShortKey = "08d6c05a21512a79a1dfeb9d2a8f262f";
constexpr const char* md5OfLongKey = "147e88065f0c9f17a7ae174877e6c233";

LongKey longKey()
{
    LongKey value{};
    std::iota(value.octets.begin(), value.octets.end(), std::uint8_t{1});
    return value;
}

/// The key hash of a value; empty where there is none.
template <class Wire>
Bytes keyHash(PubSubType<Wire>& type, Wire value, bool forceMd5 = false)
{
    InstanceHandle_t handle;
    if (!type.getKey(&value, &handle, forceMd5)) {
        return {};
    }
    EXPECT_TRUE(handle.isDefined());
    Bytes hash(16);
    for (std::size_t i = 0; i < hash.size(); ++i) {
        hash[i] = handle.value[i];
    }
    return hash;
}

} // namespace

TEST(KeyHash, IsAShortKeyInBigEndianOrder)
{
    PubSubType<ShortKey> type({"short", 8, true, 4});
    EXPECT_EQ(keyHash(type, {0x01020304}), bytes("01020304 000000000000000000000000"));
}

TEST(KeyHash, IsTheMd5OfAShortKeyWhereThatIsAskedFor)
{
    PubSubType<ShortKey> type({"short", 8, true, 4});
    EXPECT_EQ(keyHash(type, {0x01020304}, true), bytes(md5OfShortKey));
}

TEST(KeyHash, IsTheMd5OfAKeyThatMayBeLong)
{
    PubSubType<LongKey> type({"long", 28, true, 24});
    EXPECT_EQ(keyHash(type, longKey()), bytes(md5OfLongKey));
    EXPECT_EQ(keyHash(type, longKey(), true), bytes(md5OfLongKey));
}

TEST(KeyHash, DoesNotDependOnTheKeysHashedBefore)
{
    PubSubType<ShortKey> type({"short", 8, true, 4});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(keyHash(type, {0xFFFFFFFF}), bytes("FFFFFFFF 000000000000000000000000"));
        EXPECT_EQ(keyHash(type, {0x01020304}, true), bytes(md5OfShortKey));
        EXPECT_EQ(keyHash(type, {0x01020304}), bytes("01020304 000000000000000000000000"));
    }
}

TEST(KeyHash, IsNotMadeForATypeWithoutAKey)
{
    PubSubType<ShortKey> type({"short", 8, false, 4});
    EXPECT_EQ(keyHash(type, {0x01020304}, true), Bytes{});
}

} // namespace plex::test
