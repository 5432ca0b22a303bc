// SPDX-License-Identifier: Apache-2.0
#include "Discovery.hpp"
#include "StatusThread.hpp"
#include "WatchedParticipants.hpp"

#include <plex/ps/internal/Failure.hpp>

#include <log4cplus/loggingmacros.h>

#include <cstdlib>
#include <utility>

namespace ovra::plex::ps::internal
{

/// Made as the first participant is watched, so after what log4cplus and Fast DDS keep for the process. What
/// entities with static storage would have recorded when they end is left out: log4cplus has gone by then.
BackgroundThread& statusThread()
{
    static BackgroundThread& thread = []() -> BackgroundThread& {
        static auto& made = *new BackgroundThread("plex-status");
        std::atexit([] { made.stop(); });
        return made;
    }();
    return thread;
}

/// A status callback with what ends it.
class Endpoint::Watcher
{
public:
    explicit Watcher(ObservableEntity::StatusCallback callback) : callback_(std::move(callback)) {}

    void call(const EntityStatus& status)
    {
        const std::lock_guard lock(running_);
        if (hasEnded_) {
            return;
        }
        try {
            callback_(status);
        } catch (...) {
            recordCallbackFailure(log4cplus::Logger::getInstance("plexDdsDiscovery"), status.topic);
        }
    }

    void end()
    {
        hasEnded_ = true;
        if (!statusThread().isHere()) {
            const std::lock_guard untilReturned(running_);
        }
    }

private:
    const ObservableEntity::StatusCallback callback_;
    std::mutex running_; ///< held while the callback runs
    std::atomic<bool> hasEnded_ = false;
};

class Endpoint::Watch final : public StatusWatch
{
public:
    explicit Watch(std::shared_ptr<Watcher> watcher) : watcher_(std::move(watcher)) {}

    ~Watch() override { watcher_->end(); }

private:
    const std::shared_ptr<Watcher> watcher_;
};

Endpoint::Endpoint(std::weak_ptr<Discovery> discovery, fastdds::Guid guid)
    : discovery_(std::move(discovery))
    , guid_(std::move(guid))
{
}

Endpoint::~Endpoint() = default;

std::shared_ptr<Endpoint> Endpoint::of(const dds::DataWriter& writer)
{
    return discoveryOf(*writer.get_publisher()->get_participant())->endpoint(writer.guid());
}

std::shared_ptr<Endpoint> Endpoint::of(const dds::DataReader& reader)
{
    return discoveryOf(*reader.get_subscriber()->get_participant())->endpoint(reader.guid());
}

namespace
{

std::string inWords(dds::SampleRejectedStatusKind reason)
{
    switch (reason) {
    case dds::REJECTED_BY_INSTANCES_LIMIT:
        return "max_instances";
    case dds::REJECTED_BY_SAMPLES_LIMIT:
        return "max_samples";
    case dds::REJECTED_BY_SAMPLES_PER_INSTANCE_LIMIT:
        return "max_samples_per_instance";
    default:
        return "";
    }
}

} // namespace

EntityStatus Endpoint::status() const
{
    const auto discovery = discovery_.lock();
    return discovery ? discovery->statusOf(*this) : EntityStatus();
}

Counters Endpoint::countersNow() const
{
    const auto now = [](const std::atomic<std::uint64_t>& counter) {
        return counter.load(std::memory_order_acquire);
    };
    Counters all;
    all.published = now(counters.published);
    all.delivered = now(counters.delivered); // before those that it is part of
    all.tooOld = now(counters.tooOld);
    all.received = now(counters.received);
    all.callbacksThrew = now(counters.callbacksThrew);
    if (const auto& events = state_.events) {
        all.undecodable = events->undecodable;
        all.undecodableBytes = events->undecodableBytes;
        all.lost = events->lost;
        all.rejected = events->rejected;
        all.rejectedBy = inWords(events->rejectedBy);
        all.deadlinesMissed = events->deadlinesMissed;
    }
    return all;
}

bool Endpoint::waitForMatched(std::size_t count, std::chrono::milliseconds timeout) const
{
    if (timeout.count() < 0) {
        throw PlexException("Negative timeout given to waitForMatched");
    }
    const auto discovery = discovery_.lock();
    return discovery && discovery->waitForMatched(*this, count, timeout);
}

std::vector<Peer> Endpoint::acknowledgingPeers() const
{
    const auto discovery = discovery_.lock();
    return discovery ? discovery->acknowledgingPeersOf(*this) : std::vector<Peer>();
}

std::unique_ptr<StatusWatch> Endpoint::watch(ObservableEntity::StatusCallback callback)
{
    auto watcher = std::make_shared<Watcher>(std::move(callback));
    if (const auto discovery = discovery_.lock()) {
        discovery->tell(*this, watcher);
    }
    return std::make_unique<Watch>(std::move(watcher));
}

void Endpoint::tell(const EntityStatus& status, const Watchers& watchers)
{
    record(status);
    for (const auto& watching : watchers) {
        if (const auto watcher = watching.lock()) {
            watcher->call(status);
        }
    }
}

void noteUndecodable(const dds::DataReader& reader, std::size_t count, std::span<const std::uint8_t> bytes)
{
    if (const auto discovery = discoveryOf(*reader.get_subscriber()->get_participant())) {
        discovery->undecodable(reader.guid(), count, bytes);
    }
}

} // namespace ovra::plex::ps::internal
