// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace plex::bench
{

using Clock = std::chrono::steady_clock;

/// Nanoseconds from one time to another.
inline double nanoseconds(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::nano>(to - from).count();
}

/// The middle one of some figures, of which there must be at least one.
inline double median(std::vector<double> figures)
{
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    return *middle;
}

/// The mean of the middle half of some figures, of which there must be at least one: as little moved by what
/// disturbs now and then as the middle one, and finer than the steps of a clock.
inline double middleMean(std::vector<double> figures)
{
    std::ranges::sort(figures);
    const auto quarter = static_cast<std::ptrdiff_t>(figures.size() / 4);
    const auto begin = figures.begin() + quarter;
    const auto end = figures.end() - quarter;
    return std::accumulate(begin, end, 0.0) / static_cast<double>(end - begin);
}

/// A short piece of work that times itself. @returns nanoseconds per operation.
using Slice = std::function<double()>;

/// Makes one side of a comparison afresh, in a known state.
using MakeSide = std::function<Slice()>;

/// What is measured against what.
struct Comparison {
    std::string name;
    MakeSide binding;
    MakeSide bare;
    MakeSide common = nullptr; ///< what both sides' time contains and is to be left out; empty: nothing
    int pairs = 60;            ///< slices of each side between two makings
};

/// The middle figures of a comparison: of times in nanoseconds, and of the ratios of neighbours in time.
struct Outcome {
    double bindingNs;
    double bareNs;
    double ratio;
};

/// Measures in short slices of both sides, one after the other and each first in turn, so that what slows
/// the machine slows both. Both sides are made anew in every round, since where their memory comes to lie
/// matters.
class PairedRun
{
public:
    PairedRun(const Comparison& comparison, int rounds)
    {
        for (int round = 0; round < rounds; ++round) {
            measureRound(comparison, round % 2 == 0);
        }
    }

    Outcome outcome() const { return {median(binding_), median(bare_), median(ratios_)}; }

private:
    static constexpr int warmUp = 3; ///< pairs that do not count

    void measureRound(const Comparison& comparison, bool bindingFirst)
    {
        const Slice first = (bindingFirst ? comparison.binding : comparison.bare)();
        const Slice second = (bindingFirst ? comparison.bare : comparison.binding)();
        const Slice& binding = bindingFirst ? first : second;
        const Slice& bare = bindingFirst ? second : first;
        const Slice common = comparison.common ? comparison.common() : [] {
            return 0.0;
        };
        for (int pair = -warmUp; pair < comparison.pairs; ++pair) {
            const auto [bindingNs, bareNs] = measurePair(binding, bare, pair % 2 == 0);
            const double commonNs = common();
            if (pair >= 0) {
                add(bindingNs - commonNs, bareNs - commonNs);
            }
        }
    }

    static std::pair<double, double> measurePair(const Slice& binding, const Slice& bare, bool bindingFirst)
    {
        if (bindingFirst) {
            const double bindingNs = binding();
            return {bindingNs, bare()};
        }
        const double bareNs = bare();
        return {binding(), bareNs};
    }

    void add(double bindingNs, double bareNs)
    {
        binding_.push_back(bindingNs);
        bare_.push_back(bareNs);
        ratios_.push_back(bindingNs / bareNs);
    }

    std::vector<double> binding_;
    std::vector<double> bare_;
    std::vector<double> ratios_;
};

} // namespace plex::bench
