// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/QoS.hpp>

#include <limits>
#include <string>

namespace ovra::plex::ps::qos
{

namespace
{

std::int32_t checkedMilliseconds(std::chrono::milliseconds duration)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (duration.count() < Limits::min() || duration.count() > Limits::max()) {
        throw PlexException("Duration of a QoS does not fit 32 bits of milliseconds: " +
                            std::to_string(duration.count()));
    }
    return static_cast<std::int32_t>(duration.count());
}

} // namespace

QoS::~QoS() = default;

DurationBasedQoS::DurationBasedQoS(std::chrono::milliseconds duration)
    : durationMs_(checkedMilliseconds(duration))
{
}

DurationBasedQoS::~DurationBasedQoS() = default;

Deadline::Deadline(std::chrono::milliseconds duration) : DurationBasedQoS(duration) {}

Deadline::~Deadline() = default;

Latency::Latency(std::chrono::milliseconds duration) : DurationBasedQoS(duration) {}

Latency::~Latency() = default;

} // namespace ovra::plex::ps::qos
