// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"

#include <plex/common/Properties.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace plex::test
{

namespace
{

using ovra::plex::Plex;
using ovra::plex::util::findProperty;
using ovra::plex::util::getLongProperty;
using Limits = std::numeric_limits<std::int64_t>;

} // namespace

TEST(LongProperty, IsTheDefaultWhereItIsAbsent)
{
    EXPECT_EQ(getLongProperty({}, "key", 5000), 5000);
    EXPECT_EQ(getLongProperty({{"other.key", "1"}}, "key", -1), -1);
}

TEST(LongProperty, IsAWholeDecimalNumber)
{
    const std::vector<std::pair<std::string, std::int64_t>> numbers{{"0", 0},
                                                                    {"-0", 0},
                                                                    {"1", 1},
                                                                    {"-1", -1},
                                                                    {"5000", 5000},
                                                                    {"007", 7},
                                                                    {"2147483648", 2147483648},
                                                                    {"9223372036854775807", Limits::max()},
                                                                    {"-9223372036854775808", Limits::min()}};
    for (const auto& [text, number] : numbers) {
        EXPECT_EQ(getLongProperty({{"key", text}}, "key", 42), number) << text;
    }
}

TEST(LongProperty, OfAnotherFormIsRefusedWithKeyAndValue)
{
    for (const std::string text : {"", " 1", "1 ", "+1", "1.0", "1e3", "0x10", "-", "--1", "- 1", "1,000",
                                   "ten", "1\n", "9223372036854775808x"}) {
        EXPECT_EQ(refusalOf([&] { getLongProperty({{"a.key", text}}, "a.key", 42); }),
                  "Property a.key is not a whole number: \"" + text + "\"");
    }
}

TEST(LongProperty, EndsWhereItsTextEndsAndNotAtANul)
{
    EXPECT_THROW(getLongProperty({{"key", std::string("1\0002", 3)}}, "key", 42), ovra::plex::PlexException);
}

TEST(LongProperty, BeyondItsRangeIsRefusedWithKeyAndValue)
{
    for (const std::string text :
         {"9223372036854775808", "-9223372036854775809", "100000000000000000000000000000000000000"}) {
        EXPECT_EQ(refusalOf([&] { getLongProperty({{"a.key", text}}, "a.key", 42); }),
                  "Property a.key is out of range: \"" + text + "\"");
    }
}

TEST(Property, IsFoundByItsWholeKey)
{
    const Plex::Properties properties{{"a.key", "value"}, {"empty", ""}};
    EXPECT_EQ(findProperty(properties, "a.key"), "value");
    EXPECT_EQ(findProperty(properties, "empty"), "");
    for (const char* const absent : {"a", "a.key.b", "A.KEY", ""}) {
        EXPECT_EQ(findProperty(properties, absent), std::nullopt);
    }
}

} // namespace plex::test
