// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <utility>

/// How the age of a sample is judged.
namespace ovra::plex::ps::internal
{

/// Wall-clock time as DDS tells it.
struct WallTime {
    std::int32_t seconds;
    std::uint32_t nanoseconds; ///< below 1'000'000'000

    static WallTime now()
    {
        const std::chrono::nanoseconds sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
        const auto wholeSeconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
        return {static_cast<std::int32_t>(wholeSeconds.count()),
                static_cast<std::uint32_t>((sinceEpoch - wholeSeconds).count())};
    }

    /// Milliseconds since the epoch modulo 2^32.
    std::uint32_t milliseconds() const
    {
        return static_cast<std::uint32_t>(seconds) * 1000U + nanoseconds / 1'000'000U;
    }
};

/// Whether a sample is strictly older than a latency above 0. The age is the difference of two counts
/// modulo 2^32, so one that straddles a wrap is negative and never too old.
inline bool isOlderThan(const WallTime& sample, std::int32_t latencyMs, const WallTime& now)
{
    return latencyMs < std::int64_t{now.milliseconds()} - std::int64_t{sample.milliseconds()};
}

/// Whether a sample is at or past a deadline above 0.
inline bool isPastDeadline(const WallTime& sample, std::int32_t deadlineMs, const WallTime& now)
{
    constexpr std::int64_t second = 1'000'000'000;
    const std::int64_t nanoseconds = sample.nanoseconds + std::int64_t{deadlineMs % 1000} * 1'000'000;
    const std::int64_t seconds = std::int64_t{sample.seconds} + deadlineMs / 1000 + nanoseconds / second;
    return std::pair<std::int64_t, std::int64_t>(now.seconds, now.nanoseconds) >=
           std::pair(seconds, nanoseconds % second);
}

} // namespace ovra::plex::ps::internal
