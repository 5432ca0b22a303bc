// SPDX-License-Identifier: Apache-2.0
#include "Histogram.hpp"

#include "Words.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ovra::plex::tool
{

namespace
{

constexpr unsigned significantDigits = 5; // binary ones of a number that are told apart
constexpr std::uint64_t bucketsPerPower = 1U << significantDigits;

/// Numbers below 2 * bucketsPerPower have a bucket each; above, there are `bucketsPerPower` buckets for each
/// power of 2.
std::size_t bucketOf(std::uint64_t number)
{
    const auto width = static_cast<unsigned>(std::bit_width(number));
    const unsigned dropped = width > significantDigits + 1 ? width - significantDigits - 1 : 0;
    return (dropped * bucketsPerPower) + static_cast<std::size_t>(number >> dropped);
}

/// The largest number of a bucket.
std::uint64_t endOf(std::size_t bucket)
{
    if (bucket < 2 * bucketsPerPower) {
        return bucket;
    }
    const auto dropped = static_cast<unsigned>((bucket / bucketsPerPower) - 1);
    const std::uint64_t leading = bucket - (dropped * bucketsPerPower);
    return ((leading + 1) << dropped) - 1;
}

} // namespace

void Histogram::add(std::int64_t number)
{
    const std::size_t bucket = bucketOf(static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0)));
    if (bucket >= counts_.size()) {
        counts_.resize(bucket + 1);
    }
    ++counts_[bucket];
    minimum_ = count_ == 0 ? number : std::min(minimum_, number);
    maximum_ = count_ == 0 ? number : std::max(maximum_, number);
    ++count_;
    const auto real = static_cast<double>(number);
    sum_ += real;
    sumOfSquares_ += real * real;
}

double Histogram::mean() const
{
    return count_ == 0 ? 0.0 : sum_ / static_cast<double>(count_);
}

double Histogram::deviation() const
{
    const double variance =
        count_ == 0 ? 0.0 : (sumOfSquares_ / static_cast<double>(count_)) - (mean() * mean());
    return std::sqrt(std::max(variance, 0.0));
}

double Histogram::quantile(double share) const
{
    const auto wanted = std::max(1.0, std::ceil(share * static_cast<double>(count_)));
    std::uint64_t seen = 0;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        seen += counts_[i];
        if (static_cast<double>(seen) >= wanted) {
            return std::min(static_cast<double>(endOf(i)), maximum());
        }
    }
    return maximum();
}

std::vector<std::uint64_t> Histogram::countsUpTo(const std::vector<double>& bounds) const
{
    std::vector<std::uint64_t> result(bounds.size());
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        const auto bound = std::ranges::lower_bound(bounds, static_cast<double>(endOf(i)));
        if (bound != bounds.end()) {
            result[static_cast<std::size_t>(bound - bounds.begin())] += counts_[i];
        }
    }
    return result;
}

std::vector<std::string> drawn(const Histogram& nanoseconds)
{
    constexpr double longestBar = 40.0;
    std::vector<double> bounds;
    for (int exponent = 3; exponent < 12; ++exponent) { // from microseconds to minutes
        const double power = std::pow(10.0, exponent);
        bounds.insert(bounds.end(), {power, 2 * power, 5 * power});
    }
    const auto counts = nanoseconds.countsUpTo(bounds);
    const auto most = std::ranges::max(counts);
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        const bool isWithin =
            bounds[i] >= nanoseconds.minimum() && (i == 0 || bounds[i - 1] < nanoseconds.maximum());
        if (most == 0 || !isWithin) {
            continue;
        }
        const auto length =
            std::ceil(longestBar * static_cast<double>(counts[i]) / static_cast<double>(most));
        rows.push_back({"up to " + inSeconds(bounds[i] * 1e-9), std::to_string(counts[i]),
                        std::string(static_cast<std::size_t>(length), '#')});
    }
    auto lines = aligned(rows);
    for (auto& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

} // namespace ovra::plex::tool
