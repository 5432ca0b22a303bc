// SPDX-License-Identifier: Apache-2.0
#include "Discovery.hpp"

#include "StatusThread.hpp"

#include <algorithm>
#include <array>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace ovra::plex::ps::internal
{

namespace
{

constexpr std::size_t mostFormer = 32;

std::string inWords(const fastdds::Guid& guid)
{
    std::ostringstream text;
    text << guid;
    return text.str();
}

fastdds::Guid guidOf(const fastdds::InstanceHandle_t& handle)
{
    fastdds::Guid guid;
    fastdds::rtps::iHandle2GUID(guid, handle);
    return guid;
}

std::string thisHost()
{
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// How far away a peer is by what it tells.
Distance distanceOf(const Peer& peer)
{
    if (peer.host.empty()) {
        return Distance::Unknown;
    }
    if (peer.host != thisHost()) {
        return Distance::OtherHost;
    }
    return peer.process == std::to_string(getpid()) ? Distance::SameProcess : Distance::SameHost;
}

/// How far away two of Fast DDS's endpoints are by their addresses.
Distance distanceBetween(const fastdds::Guid& one, const fastdds::Guid& other)
{
    if (one.is_on_same_process_as(other)) {
        return Distance::SameProcess;
    }
    return one.is_on_same_host_as(other) ? Distance::SameHost : Distance::OtherHost;
}

std::vector<Refusal> refusalsOf(const fastdds::AnnouncedEndpoint& own, const fastdds::AnnouncedEndpoint& peer)
{
    return isWriter(own.guid) ? refusalsBetween(own, peer) : refusalsBetween(peer, own);
}

/// Whether the two are opposites of one topic that Fast DDS never matches, not only has not matched yet.
bool isRefused(const fastdds::AnnouncedEndpoint& own, const fastdds::AnnouncedEndpoint& peer)
{
    return peer.topic == own.topic && isWriter(peer.guid) != isWriter(own.guid) &&
           (isWriter(own.guid) ? areKeptApart(own, peer) : areKeptApart(peer, own));
}

} // namespace

Discovery::Discovery(fastdds::Guid participant) : self_(std::move(participant)) {}

Discovery::~Discovery() = default;

dds::StatusMask Discovery::reportedStatuses()
{
    dds::StatusMask mask = dds::StatusMask::none();
    return mask << dds::StatusMask::publication_matched() << dds::StatusMask::offered_deadline_missed()
                << dds::StatusMask::subscription_matched() << dds::StatusMask::sample_lost()
                << dds::StatusMask::sample_rejected() << dds::StatusMask::requested_deadline_missed();
}

// --- What DDS reports
// -----------------------------------------------------------------------------------------

void Discovery::announced(const fastdds::AnnouncedParticipant& participant)
{
    const Lock lock(mutex_);
    participants_[participant.prefix] = participant;
}

void Discovery::gone(const fastdds::GuidPrefix& participant)
{
    const Lock lock(mutex_);
    const fastdds::Guid first(participant, fastdds::rtps::EntityId_t());
    auto entry = announcements_.lower_bound(first);
    while (entry != announcements_.end() && entry->first.guidPrefix == participant) {
        const auto endpoint = std::move(entry->second);
        entry = announcements_.erase(entry);
        forget(endpoint);
    }
    participants_.erase(participant);
}

void Discovery::announced(const fastdds::AnnouncedEndpoint& endpoint)
{
    const Lock lock(mutex_);
    announcements_[endpoint.guid] = endpoint;
    if (const auto own = find(endpoint.guid)) {
        changed(*own);
    }
    changedOppositeOf(endpoint);
}

void Discovery::gone(const fastdds::Guid& endpoint)
{
    const Lock lock(mutex_);
    const auto entry = announcements_.find(endpoint);
    if (entry == announcements_.end()) {
        return;
    }
    for (const auto& [guid, own] : own_) {
        part(*own, endpoint);
    }
    const auto removed = std::move(entry->second);
    announcements_.erase(entry);
    forget(removed);
}

void Discovery::matched(const fastdds::Guid& own, const fastdds::Guid& peer, std::int32_t change)
{
    const auto endpoint = change > 0 ? this->endpoint(own) : nullptr;
    const Lock lock(mutex_);
    if (endpoint) {
        auto& known = endpoint->state_.matched;
        if (std::ranges::find(known, peer) == known.end()) {
            known.push_back(peer);
            ++endpoint->state_.matchedAltogether;
        }
        changed(*endpoint);
    } else if (const auto known = find(own)) {
        part(*known, peer);
    }
    matchesChanged_.notify_all();
}

void Discovery::lost(const fastdds::Guid& own, std::uint64_t altogether)
{
    const Lock lock(mutex_);
    if (const auto endpoint = find(own)) {
        auto& events = eventsOf(*endpoint);
        events.lost = altogether;
        changedAsItDoubles(*endpoint, altogether, events.lostToTell);
    }
}

void Discovery::rejected(const fastdds::Guid& own, const dds::SampleRejectedStatus& status)
{
    const Lock lock(mutex_);
    if (const auto endpoint = find(own)) {
        auto& events = eventsOf(*endpoint);
        events.rejected = status.total_count;
        events.rejectedBy = status.last_reason;
        changedAsItDoubles(*endpoint, status.total_count, events.rejectedToTell);
    }
}

void Discovery::deadlineMissed(const fastdds::Guid& own, std::uint64_t altogether)
{
    const Lock lock(mutex_);
    if (const auto endpoint = find(own)) {
        eventsOf(*endpoint).deadlinesMissed = altogether;
    }
}

void Discovery::undecodable(const fastdds::Guid& own, std::size_t count, std::span<const std::uint8_t> bytes)
{
    const Lock lock(mutex_);
    if (const auto endpoint = find(own)) {
        auto& events = eventsOf(*endpoint);
        events.undecodable += count;
        events.undecodableBytes.assign(bytes.begin(), bytes.end());
    }
}

void Discovery::on_publication_matched(dds::DataWriter* writer, const dds::PublicationMatchedStatus& status)
{
    matched(writer->guid(), guidOf(status.last_subscription_handle), status.current_count_change);
}

void Discovery::on_offered_deadline_missed(dds::DataWriter* writer,
                                           const dds::OfferedDeadlineMissedStatus& status)
{
    deadlineMissed(writer->guid(), status.total_count);
}

void Discovery::on_subscription_matched(dds::DataReader* reader, const dds::SubscriptionMatchedStatus& status)
{
    matched(reader->guid(), guidOf(status.last_publication_handle), status.current_count_change);
}

void Discovery::on_sample_lost(dds::DataReader* reader, const dds::SampleLostStatus& status)
{
    lost(reader->guid(), static_cast<std::uint64_t>(status.total_count));
}

void Discovery::on_sample_rejected(dds::DataReader* reader, const dds::SampleRejectedStatus& status)
{
    rejected(reader->guid(), status);
}

void Discovery::on_requested_deadline_missed(dds::DataReader* reader,
                                             const dds::RequestedDeadlineMissedStatus& status)
{
    deadlineMissed(reader->guid(), status.total_count);
}

// --- What is asked
// --------------------------------------------------------------------------------------------

std::shared_ptr<Endpoint> Discovery::endpoint(const fastdds::Guid& guid)
{
    const Lock lock(mutex_);
    auto& known = own_[guid];
    if (!known) {
        known = std::make_shared<Endpoint>(weak_from_this(), guid);
    }
    return known;
}

EntityStatus Discovery::statusOf(const Endpoint& endpoint) const
{
    const Lock lock(mutex_);
    return statusOfLocked(endpoint);
}

std::vector<Peer> Discovery::acknowledgingPeersOf(const Endpoint& endpoint) const
{
    const Lock lock(mutex_);
    std::vector<Peer> peers;
    const auto* const own = announcementOf(endpoint.guid_);
    for (const auto& guid : endpoint.state_.matched) {
        const auto* const announcement = announcementOf(guid);
        if (own != nullptr && announcement != nullptr &&
            announcement->reliability == dds::RELIABLE_RELIABILITY_QOS) {
            peers.push_back(peer(*announcement, *own));
        }
    }
    return peers;
}

bool Discovery::waitForMatched(const Endpoint& endpoint, std::size_t count,
                               std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(mutex_);
    const auto isEnough = [&] {
        return endpoint.state_.isGone || endpoint.state_.matched.size() >= count;
    };
    matchesChanged_.wait_for(lock, timeout, isEnough);
    return endpoint.state_.matched.size() >= count;
}

EntityStatus Discovery::statusOfLocked(const Endpoint& endpoint) const
{
    const auto& state = endpoint.state_;
    EntityStatus status;
    status.guid = inWords(endpoint.guid_);
    status.isPublisher = isWriter(endpoint.guid_);
    if (state.events) {
        status.former = state.events->former;
    }
    status.matchedAltogether = state.matchedAltogether;
    status.counters = endpoint.countersNow();
    const auto* const own = announcementOf(endpoint.guid_);
    if (own == nullptr) {
        return status; // it is coming or going
    }
    status.topic = own->topic;
    status.type = own->type;
    for (const auto& guid : state.matched) {
        status.matched.push_back(peer(guid, *own));
    }
    for (const auto& [guid, announcement] : announcements_) {
        if (isRefused(*own, announcement) && std::ranges::find(state.matched, guid) == state.matched.end()) {
            status.refused.push_back(peer(announcement, *own));
        }
    }
    return status;
}

std::shared_ptr<Endpoint> Discovery::find(const fastdds::Guid& own) const
{
    const auto entry = own_.find(own);
    return entry == own_.end() ? nullptr : entry->second;
}

const fastdds::AnnouncedEndpoint* Discovery::announcementOf(const fastdds::Guid& guid) const
{
    const auto entry = announcements_.find(guid);
    return entry == announcements_.end() ? nullptr : &entry->second;
}

Peer Discovery::peer(const fastdds::AnnouncedEndpoint& endpoint, const fastdds::AnnouncedEndpoint& own) const
{
    Peer described = unannouncedPeer(endpoint.guid);
    described.type = endpoint.type;
    described.policies = policiesOf(endpoint);
    described.refusals = refusalsOf(own, endpoint);
    return described;
}

Peer Discovery::peer(const fastdds::Guid& guid, const fastdds::AnnouncedEndpoint& own) const
{
    const auto* const announcement = announcementOf(guid);
    return announcement == nullptr ? unannouncedPeer(guid) : peer(*announcement, own);
}

Peer Discovery::unannouncedPeer(const fastdds::Guid& guid) const
{
    Peer described;
    described.guid = inWords(guid);
    describeParticipant(described, guid);
    return described;
}

void Discovery::describeParticipant(Peer& described, const fastdds::Guid& guid) const
{
    if (guid.guidPrefix == self_.guidPrefix) {
        described.vendor = "Fast DDS";
        described.host = thisHost();
        described.process = std::to_string(getpid());
        described.distance = Distance::SameProcess;
        return;
    }
    const auto entry = participants_.find(guid.guidPrefix);
    if (entry == participants_.end()) {
        return;
    }
    const auto& participant = entry->second;
    described.vendor = vendorOf(participant);
    described.participant = participant.name;
    described.host = hostOf(participant);
    described.process = processOf(participant);
    described.host.resize(std::min(described.host.find(':'), described.host.size())); // an address follows it
    described.distance =
        described.vendor == "Fast DDS" ? distanceBetween(self_, guid) : distanceOf(described);
}

Endpoint::Events& Discovery::eventsOf(Endpoint& endpoint)
{
    auto& events = endpoint.state_.events;
    if (!events) {
        events = std::make_unique<Endpoint::Events>();
    }
    return *events;
}

void Discovery::part(Endpoint& endpoint, const fastdds::Guid& peer)
{
    auto& state = endpoint.state_;
    if (std::erase(state.matched, peer) == 0) {
        return;
    }
    const auto* const own = announcementOf(endpoint.guid_);
    auto& former = eventsOf(endpoint).former;
    former.push_back(own == nullptr ? unannouncedPeer(peer) : this->peer(peer, *own));
    if (former.size() > mostFormer) {
        former.erase(former.begin());
    }
    changed(endpoint);
}

void Discovery::forget(const fastdds::AnnouncedEndpoint& endpoint)
{
    const auto own = own_.find(endpoint.guid);
    if (own != own_.end()) {
        own->second->state_.isGone = true;
        own_.erase(own);
        matchesChanged_.notify_all();
    }
    changedOppositeOf(endpoint);
}

void Discovery::changedOppositeOf(const fastdds::AnnouncedEndpoint& endpoint)
{
    for (const auto& [guid, own] : own_) {
        const auto* const announcement = announcementOf(guid);
        if (announcement != nullptr && announcement->topic == endpoint.topic &&
            isWriter(guid) != isWriter(endpoint.guid)) {
            changed(*own);
        }
    }
}

// --- Telling
// --------------------------------------------------------------------------------------------------

void Discovery::changed(Endpoint& endpoint)
{
    endpoint.state_.hasChanged = true;
    if (std::exchange(isTold_, false)) {
        statusThread().run([self = shared_from_this()] { self->tell(); });
    }
}

void Discovery::changedAsItDoubles(Endpoint& endpoint, std::uint64_t number, std::uint64_t& toTell)
{
    if (number >= toTell) {
        toTell = 2 * number;
        changed(endpoint);
    }
}

void Discovery::tell(const Endpoint& endpoint, const std::shared_ptr<Endpoint::Watcher>& watcher)
{
    const Lock lock(mutex_);
    if (const auto own = find(endpoint.guid_)) {
        auto& watchers = eventsOf(*own).watchers;
        std::erase_if(watchers, [](const auto& known) { return known.expired(); });
        watchers.push_back(watcher);
        changed(*own);
    }
}

void Discovery::tell()
{
    struct News {
        std::shared_ptr<Endpoint> endpoint;
        EntityStatus status;
        Endpoint::Watchers watchers;
    };

    std::vector<News> news;
    {
        const Lock lock(mutex_);
        isTold_ = true;
        for (const auto& [guid, own] : own_) {
            if (std::exchange(own->state_.hasChanged, false)) {
                const auto& events = own->state_.events;
                news.push_back({own, statusOfLocked(*own), events ? events->watchers : Endpoint::Watchers()});
            }
        }
    }
    for (const auto& [endpoint, status, watchers] : news) {
        endpoint->tell(status, watchers);
    }
}

} // namespace ovra::plex::ps::internal
