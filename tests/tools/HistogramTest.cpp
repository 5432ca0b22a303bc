// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <tools/plex/Histogram.hpp>

namespace ovra::plex::tool
{

namespace
{

TEST(HistogramTest, IsZeroWithoutNumbers)
{
    const Histogram empty;
    EXPECT_EQ(empty.count(), 0U);
    EXPECT_EQ(empty.mean(), 0.0);
    EXPECT_EQ(empty.deviation(), 0.0);
    EXPECT_EQ(empty.quantile(0.5), 0.0);
    EXPECT_THAT(drawn(empty), testing::IsEmpty());
}

TEST(HistogramTest, KeepsWhatIsExact)
{
    Histogram numbers;
    for (const std::int64_t number : {-3, 5, 1'000'000'007, 2'000'000'003}) {
        numbers.add(number);
    }
    EXPECT_EQ(numbers.minimum(), -3.0);
    EXPECT_EQ(numbers.maximum(), 2'000'000'003.0);
    EXPECT_EQ(numbers.mean(), 750'000'003.0);
    EXPECT_EQ(numbers.count(), 4U);
}

TEST(HistogramTest, HasTheDeviationOfAWholePopulation)
{
    Histogram numbers;
    for (const std::int64_t number : {2, 4, 4, 4, 5, 5, 7, 9}) {
        numbers.add(number);
    }
    EXPECT_DOUBLE_EQ(numbers.deviation(), 2.0);
}

TEST(HistogramTest, HasQuantilesThatAreALittleTooLargeAtMost)
{
    Histogram numbers;
    constexpr std::int64_t count = 100'000;
    for (std::int64_t i = 1; i <= count; ++i) {
        numbers.add(i * 1000);
    }
    for (const double share : {0.001, 0.5, 0.9, 0.99, 0.999}) {
        const double exact = share * count * 1000;
        EXPECT_GE(numbers.quantile(share), exact);
        EXPECT_LE(numbers.quantile(share), exact * 1.032);
    }
    EXPECT_EQ(numbers.quantile(1.0), count * 1000.0);
}

TEST(HistogramTest, TakesTheLargestNumber)
{
    Histogram numbers;
    numbers.add(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(numbers.quantile(0.5), static_cast<double>(std::numeric_limits<std::int64_t>::max()));
}

TEST(HistogramTest, CountsBetweenBounds)
{
    Histogram numbers;
    for (std::int64_t i = 0; i < 60; ++i) {
        numbers.add(i);
    }
    EXPECT_THAT(numbers.countsUpTo({9, 19, 49}), testing::ElementsAre(10, 10, 30));
}

TEST(HistogramTest, DrawsBarsInProportion)
{
    Histogram intervals;
    for (int i = 0; i < 20; ++i) {
        intervals.add(9'000'000);
    }
    for (int i = 0; i < 10; ++i) {
        intervals.add(15'000'000);
    }
    EXPECT_THAT(drawn(intervals), testing::ElementsAre("up to 10 ms  20  " + std::string(40, '#'),
                                                       "up to 20 ms  10  " + std::string(20, '#')));
}

} // namespace

} // namespace ovra::plex::tool
