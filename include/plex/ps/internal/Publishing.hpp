// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>
#include <plex/common/Properties.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <cstdint>
#include <limits>
#include <string>

/// What publishers of every kind share.
namespace ovra::plex::ps::internal
{

/// How long closing waits for acknowledgments, in milliseconds; 0 or less: not at all.
/// @throws PlexException when the property is no number.
inline std::int64_t waitForAckTimeoutMs(const Plex::Properties& properties)
{
    return util::getLongProperty(properties, "dds.wait_for_ack.timeout_ms", 5000);
}

[[noreturn]] inline void refuseSourceTime(double timestamp)
{
    throw PlexException("Source timestamp does not fit 32 bits of seconds: " + std::to_string(timestamp));
}

/// A source timestamp in seconds as a DDS time: whole seconds truncated towards zero, and what remains in
/// nanoseconds, truncated and converted as it is (so a negative remainder is no valid time, and DDS refuses
/// it).
/// @throws PlexException when the seconds do not fit 32 bits, or the timestamp is no number.
inline Time_t toSourceTime(double timestamp)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const bool fits = timestamp > Limits::min() - 1.0 && timestamp < Limits::max() + 1.0; // no NaN does
    if (!fits) {
        refuseSourceTime(timestamp);
    }
    const auto seconds = static_cast<std::int32_t>(timestamp);
    const auto nanoseconds = static_cast<std::int64_t>((timestamp - seconds) * 1'000'000'000.0);
    return {seconds, static_cast<std::uint32_t>(nanoseconds)};
}

} // namespace ovra::plex::ps::internal
