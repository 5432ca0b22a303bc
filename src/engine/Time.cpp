// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/ps/internal/Time.hpp>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace ovra::plex::ps::internal
{

namespace
{

constexpr std::int32_t longestSeconds = std::numeric_limits<std::int32_t>::max();

} // namespace

fastdds::Time_t toSourceTime(double timestamp)
{
    const bool fits = timestamp >= 0.0 && timestamp < longestSeconds; // no NaN does
    if (!fits) {
        throw PlexException("Source timestamp does not fit 32 bits of seconds: " + std::to_string(timestamp));
    }
    const auto seconds = static_cast<std::int32_t>(timestamp);
    return {seconds, static_cast<std::uint32_t>((timestamp - seconds) * 1'000'000'000.0)};
}

fastdds::Duration_t toDuration(std::int64_t milliseconds)
{
    constexpr std::int64_t longest = std::int64_t{longestSeconds} * 1000;
    return {static_cast<long double>(std::min(milliseconds, longest)) / 1000.0L};
}

fastdds::Duration_t deadlinePeriod(std::int32_t deadlineMs)
{
    return {deadlineMs / 1000, static_cast<std::uint32_t>(deadlineMs % 1000)};
}

WallClock::time_point timeoutEnd(std::chrono::milliseconds timeout)
{
    constexpr std::chrono::hours century{24 * 36525};
    return WallClock::now() + std::min<std::chrono::milliseconds>(timeout, century);
}

fastdds::Duration_t waitDuration(std::chrono::nanoseconds remaining)
{
    using namespace std::chrono_literals;
    if (remaining < 100ms) {
        return shortestWait();
    }
    const auto milliseconds = static_cast<std::int32_t>(std::min<std::int64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(remaining).count(), longestSeconds));
    return {milliseconds / 1000, static_cast<std::uint32_t>(milliseconds % 1000)};
}

WallTime WallTime::now()
{
    const std::chrono::nanoseconds sinceEpoch = WallClock::now().time_since_epoch();
    const auto wholeSeconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    return {static_cast<std::int32_t>(wholeSeconds.count()),
            static_cast<std::uint32_t>((sinceEpoch - wholeSeconds).count())};
}

bool isOlderThan(const WallTime& sample, std::int32_t latencyMs, const WallTime& now)
{
    return latencyMs < std::int64_t{now.milliseconds()} - std::int64_t{sample.milliseconds()};
}

bool isPastDeadline(const WallTime& sample, std::int32_t deadlineMs, const WallTime& now)
{
    constexpr std::int64_t second = 1'000'000'000;
    const std::int64_t nanoseconds = sample.nanoseconds + std::int64_t{deadlineMs % 1000} * 1'000'000;
    const std::int64_t seconds = std::int64_t{sample.seconds} + deadlineMs / 1000 + nanoseconds / second;
    return std::pair<std::int64_t, std::int64_t>(now.seconds, now.nanoseconds) >=
           std::pair(seconds, nanoseconds % second);
}

bool AgeLimits::isTooOld(const eprosima::fastdds::dds::SampleInfo& info) const
{
    const WallTime now = WallTime::now();
    const WallTime sample{info.source_timestamp.seconds(), info.source_timestamp.nanosec()};
    return (latencyMs > 0 && isOlderThan(sample, latencyMs, now)) ||
           (deadlineMs > 0 && isPastDeadline(sample, deadlineMs, now));
}

} // namespace ovra::plex::ps::internal
