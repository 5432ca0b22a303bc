// SPDX-License-Identifier: Apache-2.0
#include "../../tools/plex/BoundedPool.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace plex::test
{

using ovra::plex::fastdds::SerializedPayload_t;
using ovra::plex::tool::BoundedPool;

TEST(BoundedPool, RefusesWhatIsTooMuch)
{
    BoundedPool pool(100);
    std::array<SerializedPayload_t, 3> payloads;
    EXPECT_TRUE(pool.reserve(60, payloads[0]));
    EXPECT_TRUE(pool.reserve(40, payloads[1]));
    EXPECT_FALSE(pool.reserve(1, payloads[2]));
    EXPECT_EQ(payloads[2].data, nullptr);
    pool.release(payloads[1]);
    EXPECT_EQ(payloads[1].data, nullptr);
    EXPECT_TRUE(pool.reserve(30, payloads[2])) << "what was refused still counts, or what was released";
    pool.release(payloads[0]);
    pool.release(payloads[2]);
}

TEST(BoundedPool, HasOnePayloadOfAnySize)
{
    BoundedPool pool(100);
    SerializedPayload_t payload;
    SerializedPayload_t another;
    EXPECT_TRUE(pool.reserve(1000, payload));
    EXPECT_GE(payload.max_size, 1000U);
    std::fill_n(payload.data, 1000, std::uint8_t{1});
    EXPECT_FALSE(pool.reserve(1, another));
    pool.release(payload);
    EXPECT_TRUE(pool.reserve(1, another));
    pool.release(another);
}

TEST(BoundedPool, FreesWhatIsSharedWithTheLastOwner)
{
    BoundedPool pool(100);
    SerializedPayload_t payload;
    SerializedPayload_t another;
    SerializedPayload_t third;
    ASSERT_TRUE(pool.reserve(100, payload));
    payload.length = 1;
    payload.data[0] = 7;
    pool.share(payload, another);
    pool.release(payload);
    EXPECT_EQ(another.length, 1U);
    EXPECT_EQ(another.max_size, 100U);
    EXPECT_EQ(another.data[0], 7);
    EXPECT_FALSE(pool.reserve(1, third));
    pool.release(another);
    EXPECT_TRUE(pool.reserve(100, third));
    pool.release(third);
}

TEST(BoundedPool, HasPayloadsWithoutBytes)
{
    BoundedPool pool(100);
    SerializedPayload_t payload;
    EXPECT_TRUE(pool.reserve(0, payload));
    EXPECT_NE(payload.data, nullptr);
    pool.release(payload);
}

} // namespace plex::test
