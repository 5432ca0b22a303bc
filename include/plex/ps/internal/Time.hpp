// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/subscriber/SampleInfo.hpp>

#include <chrono>
#include <cstdint>

/// Between the times of applications, of the clock and of DDS.
namespace ovra::plex::ps::internal
{

/// A source timestamp in seconds as a DDS time: whole seconds, and what remains in nanoseconds, truncated.
/// @throws PlexException unless it is from 0 to less than 2'147'483'647 s, which DDS takes for infinite. Fast
///         DDS refuses other seconds, and loops for ever over 1'000'000'000 nanoseconds and more.
PLEX_EXPORT fastdds::Time_t toSourceTime(double timestamp);

/// A source timestamp in seconds.
inline double toSeconds(const fastdds::SampleTime& time)
{
    return time.seconds() + time.nanosec() / 1e9;
}

/// Milliseconds as a DDS duration, fraction of a second included; longer than its 32-bit seconds is as long
/// as these go, 68 years.
PLEX_EXPORT fastdds::Duration_t toDuration(std::int64_t milliseconds);

/// A deadline in milliseconds, above 0, as the DDS deadline period. The milliseconds beyond whole seconds go
/// into the nanoseconds as they are.
PLEX_EXPORT fastdds::Duration_t deadlinePeriod(std::int32_t deadlineMs);

using WallClock = std::chrono::system_clock;

/// The point in time when a timeout from now has run out; later than a century is a century.
PLEX_EXPORT WallClock::time_point timeoutEnd(std::chrono::milliseconds timeout);

/// The shortest time to wait for, 100 nanoseconds.
inline fastdds::Duration_t shortestWait()
{
    return {0, 100};
}

/// How long to wait when so much of a timeout is left. The milliseconds beyond whole seconds go into the
/// nanoseconds as they are, and less than 100 ms is the shortest wait.
PLEX_EXPORT fastdds::Duration_t waitDuration(std::chrono::nanoseconds remaining);

/// Wall-clock time as DDS tells it.
struct WallTime {
    std::int32_t seconds;
    std::uint32_t nanoseconds; ///< below 1'000'000'000

    PLEX_EXPORT static WallTime now();

    /// Milliseconds since the epoch modulo 2^32.
    std::uint32_t milliseconds() const
    {
        return static_cast<std::uint32_t>(seconds) * 1000U + nanoseconds / 1'000'000U;
    }
};

/// Whether a sample is strictly older than a latency above 0. The age is the difference of two counts
/// modulo 2^32, so one that straddles a wrap is negative and never too old.
PLEX_EXPORT bool isOlderThan(const WallTime& sample, std::int32_t latencyMs, const WallTime& now);

/// Whether a sample is at or past a deadline above 0.
PLEX_EXPORT bool isPastDeadline(const WallTime& sample, std::int32_t deadlineMs, const WallTime& now);

/// How old a received sample may be.
struct PLEX_EXPORT AgeLimits {
    std::int32_t latencyMs;  ///< 0 or less: none
    std::int32_t deadlineMs; ///< 0 or less: none

    /// Whether a sample is strictly older than the latency, or at or past its deadline, by its source
    /// timestamp and the wall clock.
    bool areExceededBy(const eprosima::fastdds::dds::SampleInfo& info) const
    {
        return (latencyMs > 0 || deadlineMs > 0) && isTooOld(info);
    }

private:
    bool isTooOld(const eprosima::fastdds::dds::SampleInfo& info) const;
};

} // namespace ovra::plex::ps::internal
