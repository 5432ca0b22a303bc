// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Compatibility.hpp"

#include <plex/ps/internal/Endpoint.hpp>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::ps::internal
{

/// What a participant has discovered, and what became of its own endpoints: who is matched, who is refused.
///
/// Threads: DDS reports on its own, with locks held; all that is done there is to note it under one mutex,
/// which is never held around anything else. Whoever wants to hear of changes does so on the thread
/// "plex-status".
class Discovery final : public fastdds::DiscoveryListener, public std::enable_shared_from_this<Discovery>
{
public:
    explicit Discovery(fastdds::Guid participant);
    ~Discovery() override;

    /// What is known of an endpoint of the participant, from its announcement on to its end.
    std::shared_ptr<Endpoint> endpoint(const fastdds::Guid& guid);

    EntityStatus statusOf(const Endpoint& endpoint) const;
    std::vector<Peer> acknowledgingPeersOf(const Endpoint& endpoint) const;

    /// Waits until an endpoint has so many matched peers. @returns whether it has.
    bool waitForMatched(const Endpoint& endpoint, std::size_t count, std::chrono::milliseconds timeout) const;

    /// Has a watcher told of an endpoint's status, soon and whenever it changes.
    void tell(const Endpoint& endpoint, const std::shared_ptr<Endpoint::Watcher>& watcher);

    void matched(const fastdds::Guid& own, const fastdds::Guid& peer, std::int32_t change);
    void lost(const fastdds::Guid& own, std::uint64_t altogether);
    void rejected(const fastdds::Guid& own, const dds::SampleRejectedStatus& status);
    void deadlineMissed(const fastdds::Guid& own, std::uint64_t altogether);
    void undecodable(const fastdds::Guid& own, std::size_t count, std::span<const std::uint8_t> bytes);

    static dds::StatusMask reportedStatuses();

private:
    using Lock = std::lock_guard<std::mutex>;
    using Endpoints = std::map<fastdds::Guid, std::shared_ptr<Endpoint>>;

    void announced(const fastdds::AnnouncedParticipant& participant) override;
    void gone(const fastdds::GuidPrefix& participant) override;
    void announced(const fastdds::AnnouncedEndpoint& endpoint) override;
    void gone(const fastdds::Guid& endpoint) override;

    void on_publication_matched(dds::DataWriter* writer,
                                const dds::PublicationMatchedStatus& status) override;
    void on_offered_deadline_missed(dds::DataWriter* writer,
                                    const dds::OfferedDeadlineMissedStatus& status) override;
    void on_subscription_matched(dds::DataReader* reader,
                                 const dds::SubscriptionMatchedStatus& status) override;
    void on_sample_lost(dds::DataReader* reader, const dds::SampleLostStatus& status) override;
    void on_sample_rejected(dds::DataReader* reader, const dds::SampleRejectedStatus& status) override;
    void on_requested_deadline_missed(dds::DataReader* reader,
                                      const dds::RequestedDeadlineMissedStatus& status) override;

    // All of what follows is called with the mutex held.

    static Endpoint::Events& eventsOf(Endpoint& endpoint);
    std::shared_ptr<Endpoint> find(const fastdds::Guid& own) const;
    Peer peer(const fastdds::AnnouncedEndpoint& endpoint, const fastdds::AnnouncedEndpoint& own) const;
    Peer unannouncedPeer(const fastdds::Guid& guid) const;
    Peer peer(const fastdds::Guid& guid, const fastdds::AnnouncedEndpoint& own) const;
    void describeParticipant(Peer& described, const fastdds::Guid& guid) const;
    const fastdds::AnnouncedEndpoint* announcementOf(const fastdds::Guid& guid) const;
    EntityStatus statusOfLocked(const Endpoint& endpoint) const;
    void part(Endpoint& endpoint, const fastdds::Guid& peer);
    void forget(const fastdds::AnnouncedEndpoint& endpoint);
    void changed(Endpoint& endpoint);

    /// Has a number that grows told as it doubles: DDS may report every sample.
    void changedAsItDoubles(Endpoint& endpoint, std::uint64_t number, std::uint64_t& toTell);
    void changedOppositeOf(const fastdds::AnnouncedEndpoint& endpoint);

    /// On the thread for it: tells of what has changed.
    void tell();

    const fastdds::Guid self_;
    mutable std::mutex mutex_; ///< guards what follows, and the states of endpoints
    mutable std::condition_variable matchesChanged_;
    std::map<fastdds::GuidPrefix, fastdds::AnnouncedParticipant> participants_;
    std::map<fastdds::Guid, fastdds::AnnouncedEndpoint> announcements_;
    Endpoints own_;
    bool isTold_ = true; ///< whether nothing has changed since tell() has begun
};

/// What few endpoints have: losses, peers that have gone, and who wants to hear of changes.
struct Endpoint::Events {
    std::uint64_t lost = 0;
    std::uint64_t lostToTell = 1; ///< so many are told of next
    std::uint64_t rejected = 0;
    std::uint64_t rejectedToTell = 1;
    dds::SampleRejectedStatusKind rejectedBy = dds::NOT_REJECTED;
    std::uint64_t deadlinesMissed = 0;
    std::uint64_t undecodable = 0;
    std::vector<std::uint8_t> undecodableBytes;
    std::vector<Peer> former;
    Watchers watchers;
};

} // namespace ovra::plex::ps::internal
