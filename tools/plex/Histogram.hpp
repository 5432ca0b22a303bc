// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// How whole numbers are distributed, in bounded memory: minimum, maximum and mean are exact, quantiles are
/// at most 3 % too large. Negative numbers count as 0 but for minimum, maximum and mean.
class Histogram
{
public:
    void add(std::int64_t number);

    std::uint64_t count() const { return count_; }

    /// Of no numbers all of these are 0.
    double minimum() const { return static_cast<double>(minimum_); }

    double maximum() const { return static_cast<double>(maximum_); }

    double mean() const;
    double deviation() const; ///< the standard deviation

    /// The number that so many of all, at least, do not exceed. @param share 0 to 1.
    double quantile(double share) const;

    /// How many are at most `bounds[i]` and more than the bound before; what is beyond the last bound is left
    /// out.
    std::vector<std::uint64_t> countsUpTo(const std::vector<double>& bounds) const;

private:
    std::vector<std::uint64_t> counts_; ///< by bucket
    std::uint64_t count_ = 0;
    std::int64_t minimum_ = 0;
    std::int64_t maximum_ = 0;
    double sum_ = 0;
    double sumOfSquares_ = 0;
};

/// Lines with bars for a distribution of nanoseconds, in steps of 1, 2 and 5.
std::vector<std::string> drawn(const Histogram& nanoseconds);

} // namespace ovra::plex::tool
