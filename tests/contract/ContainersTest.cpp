// SPDX-License-Identifier: Apache-2.0
// What value types of the contract hand elements over with.
#include <plex/Booleans.hpp>
#include <plex/Span.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <new>
#include <type_traits>
#include <vector>

namespace plex::test
{

namespace
{

using ovra::plex::Booleans;
using ovra::plex::Span;

TEST(Span, ViewsWhatAContainerHolds)
{
    std::vector<int> numbers{1, 2, 3};
    const Span<int> span(numbers);
    span[1] = 5;
    EXPECT_EQ(numbers, (std::vector<int>{1, 5, 3}));
    EXPECT_EQ(span.data(), numbers.data());
    EXPECT_EQ(span.size(), 3U);
    EXPECT_EQ(std::vector<int>(span.begin(), span.end()), numbers);
    EXPECT_FALSE(span.empty());
    EXPECT_TRUE(Span<int>().empty());
}

TEST(Span, OfConstantsViewsWhatIsConstant)
{
    const std::array<int, 2> numbers{1, 2};
    const Span<const int> span = numbers;
    EXPECT_EQ(span[1], 2);
    EXPECT_FALSE((std::is_constructible_v<Span<int>, const std::vector<int>&>));
    EXPECT_FALSE((std::is_constructible_v<Span<int>, std::vector<double>&>));
}

TEST(Span, OfElementsIsOneOfConstantsToo)
{
    std::vector<int> numbers{1, 2};
    const Span<int> span(numbers);
    const Span<const int> constant = span;
    EXPECT_EQ(constant.data(), numbers.data());
}

TEST(Span, BecomesTheStandardOne)
{
    std::vector<int> numbers{1, 2};
    const std::span<int> standard = Span<int>(numbers);
    EXPECT_EQ(standard.data(), numbers.data());
    EXPECT_EQ(standard.size(), 2U);
}

TEST(Booleans, AreFalseWhereTheyAreNew)
{
    Booleans flags{true, false};
    flags.resize(3);
    EXPECT_EQ(flags, (Booleans{true, false, false}));
    flags.resize(1);
    flags.resize(2);
    EXPECT_EQ(flags, (Booleans{true, false}));
    flags.clear();
    EXPECT_TRUE(flags.empty());
    EXPECT_EQ(Booleans(2), (Booleans{false, false}));
}

TEST(Booleans, AreNotMoreThanMemoryHolds)
{
    Booleans flags{true, false};
    EXPECT_THROW(flags.resize(SIZE_MAX), std::bad_alloc);
    EXPECT_EQ(flags, (Booleans{true, false}));
}

TEST(Booleans, AreValues)
{
    const Booleans flags{true, false, true};
    Booleans copy = flags;
    copy[0] = false;
    EXPECT_NE(copy, flags);
    EXPECT_TRUE(flags[0]);
    copy = flags;
    EXPECT_EQ(copy, flags);
    const Booleans moved = std::move(copy);
    EXPECT_EQ(moved, flags);
    const Booleans& itself = moved;
    copy = itself;
    EXPECT_EQ(copy, flags);
    copy = Booleans{true};
    EXPECT_EQ(copy.size(), 1U);
}

TEST(Booleans, LieSideBySide)
{
    Booleans flags{true, false};
    const Span<bool> span(flags);
    span[1] = true;
    EXPECT_TRUE(flags[1]);
    EXPECT_EQ(flags.end() - flags.begin(), 2);
}

} // namespace

} // namespace plex::test
