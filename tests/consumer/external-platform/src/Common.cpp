// SPDX-License-Identifier: Apache-2.0
#include <plex/common/Properties.hpp>
#include <plex/common/UUID.hpp>

#include <atomic>

namespace ovra::plex
{

PlexException::PlexException(const std::string& message) : std::runtime_error(message) {}

PlexException::~PlexException() = default;

IllegalStateException::IllegalStateException(const std::string& message) : PlexException(message) {}

IllegalStateException::~IllegalStateException() = default;

ps::DataEntityBase::~DataEntityBase() = default;

ps::Subscription::~Subscription() = default;

namespace ps::qos
{

QoS::~QoS() = default;

DurationBasedQoS::DurationBasedQoS(std::chrono::milliseconds duration)
    : durationMs_(static_cast<std::int32_t>(duration.count()))
{
}

DurationBasedQoS::~DurationBasedQoS() = default;

Deadline::Deadline(std::chrono::milliseconds duration) : DurationBasedQoS(duration) {}

Deadline::~Deadline() = default;

Latency::Latency(std::chrono::milliseconds duration) : DurationBasedQoS(duration) {}

Latency::~Latency() = default;

} // namespace ps::qos

std::int64_t util::getLongProperty(const Plex::Properties& properties, const std::string& key,
                                   std::int64_t defaultValue)
{
    const auto found = properties.find(key);
    try {
        return found == properties.end() ? defaultValue : std::stoll(found->second);
    } catch (const std::logic_error&) {
        throw PlexException("Not a number: " + key + "=" + found->second);
    }
}

/// Unique in the process, which is as far as it is looked at.
std::string ps::detail::newUUID()
{
    static std::atomic<unsigned> count;
    return std::to_string(++count);
}

} // namespace ovra::plex
