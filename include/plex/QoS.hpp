// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace ovra::plex::ps::qos
{

/// Root of the quality-of-service objects that are handed to publishers and subscribers.
///
/// They are immutable, so one object may be shared by any number of entities and threads.
class PLEX_EXPORT QoS
{
public:
    QoS() = default;
    QoS(const QoS&) = delete;
    QoS& operator=(const QoS&) = delete;
    virtual ~QoS();
};

/// A quality of service that is one duration in whole milliseconds.
class PLEX_EXPORT DurationBasedQoS : public virtual QoS
{
public:
    /// @throws PlexException when the duration does not fit a signed 32-bit count of milliseconds
    ///         (about ±24.8 days).
    explicit DurationBasedQoS(std::chrono::milliseconds duration);
    ~DurationBasedQoS() override;

    /// The duration in milliseconds; 0 or less switches the quality of service off.
    std::int32_t getDurationMs() const noexcept { return durationMs_; }

private:
    std::int32_t durationMs_;
};

/// How long after its source time a sample may still be delivered; a subscriber drops it from then on.
/// For an entity made without a QoS profile it is also the DDS deadline period of its writer or reader.
class PLEX_EXPORT Deadline : public virtual DurationBasedQoS
{
public:
    /// @throws PlexException see DurationBasedQoS.
    explicit Deadline(std::chrono::milliseconds duration);
    ~Deadline() override;
};

/// The age beyond which a subscriber drops a sample.
class PLEX_EXPORT Latency : public virtual DurationBasedQoS
{
public:
    /// @throws PlexException see DurationBasedQoS.
    explicit Latency(std::chrono::milliseconds duration);
    ~Latency() override;
};

/// Where two entries are of one kind the later one counts; null entries are skipped.
using QoSList = std::vector<std::shared_ptr<QoS>>;

} // namespace ovra::plex::ps::qos
