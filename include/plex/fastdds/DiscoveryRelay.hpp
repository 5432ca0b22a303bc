// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/DiscoveryListener.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace ovra::plex::fastdds
{

/// The listener that a participant is made with, until another one takes its place: Fast DDS announces
/// nothing twice, so a listener that is attached to a participant at work would have missed what came before.
///
/// Threads: any. The successor is told with the mutex held: it must neither call DDS nor wait.
class DiscoveryRelay final : public DiscoveryListener
{
public:
    /// The relay of a participant, or nullptr when it has another listener, or none.
    static DiscoveryRelay* of(const eprosima::fastdds::dds::DomainParticipant& participant)
    {
        const auto* const relay = dynamic_cast<const DiscoveryRelay*>(participant.get_listener());
        return const_cast<DiscoveryRelay*>(relay); // NOLINT(*-const-cast): it was given to DDS as what it is
    }

    /// Tells its successor what is known and what still comes here, and keeps it alive from then on.
    void handOver(std::shared_ptr<DiscoveryListener> successor)
    {
        const Lock lock(mutex_);
        successor_ = std::move(successor);
        for (const auto& [prefix, participant] : std::exchange(participants_, {})) {
            successor_->announced(participant);
        }
        for (const auto& [guid, endpoint] : std::exchange(endpoints_, {})) {
            successor_->announced(endpoint);
        }
    }

    void announced(const AnnouncedParticipant& participant) override
    {
        const Lock lock(mutex_);
        if (successor_) {
            successor_->announced(participant);
        } else {
            participants_[participant.prefix] = participant;
        }
    }

    void gone(const GuidPrefix& participant) override
    {
        const Lock lock(mutex_);
        if (successor_) {
            successor_->gone(participant);
        } else {
            participants_.erase(participant);
            std::erase_if(endpoints_,
                          [&](const auto& entry) { return entry.first.guidPrefix == participant; });
        }
    }

    void announced(const AnnouncedEndpoint& endpoint) override
    {
        const Lock lock(mutex_);
        if (successor_) {
            successor_->announced(endpoint);
        } else {
            endpoints_[endpoint.guid] = endpoint;
        }
    }

    void gone(const Guid& endpoint) override
    {
        const Lock lock(mutex_);
        if (successor_) {
            successor_->gone(endpoint);
        } else {
            endpoints_.erase(endpoint);
        }
    }

private:
    using Lock = std::lock_guard<std::mutex>;

    std::mutex mutex_; ///< guards the others
    std::shared_ptr<DiscoveryListener> successor_;
    std::map<GuidPrefix, AnnouncedParticipant>
        participants_; ///< until there is a successor, as the endpoints
    std::map<Guid, AnnouncedEndpoint> endpoints_;
};

} // namespace ovra::plex::fastdds
