// SPDX-License-Identifier: Apache-2.0
#include "WatchedParticipants.hpp"

#include "StatusThread.hpp"

#include <plex/fastdds/DiscoveryRelay.hpp>

#include <map>
#include <mutex>

namespace ovra::plex::ps::internal
{

namespace
{

class WatchedParticipant;

/// A participant of the process that was watched at least once. What it has discovered is kept for as long as
/// it lives: nothing is announced twice.
struct Record {
    std::weak_ptr<dds::DomainParticipant> participant;
    std::shared_ptr<Discovery> discovery;
    std::weak_ptr<WatchedParticipant> watched;
    bool isKept = false; ///< whether the participant keeps its discovery alive, which then stays its listener
};

struct Records {
    std::mutex
        mutex; ///< guards the others; held while a listener is attached, which waits for none that takes it
    std::map<const dds::DomainParticipant*, Record> byParticipant;
};

Records& records()
{
    static Records& ofProcess = *new Records; // never destroyed, as entities may outlast main()
    return ofProcess;
}

/// Keeps a participant, and its discovery watched.
class WatchedParticipant
{
public:
    WatchedParticipant(ParticipantPointer participant, std::shared_ptr<Discovery> discovery)
        : discovery_(std::move(discovery))
        , participant_(std::move(participant))
    {
    }

    WatchedParticipant(const WatchedParticipant&) = delete;
    WatchedParticipant& operator=(const WatchedParticipant&) = delete;

    ~WatchedParticipant()
    {
        const std::lock_guard lock(records().mutex);
        const auto entry = records().byParticipant.find(participant_.get());
        const bool isListener = participant_->get_listener() == discovery_.get();
        if (entry != records().byParticipant.end() && entry->second.watched.expired() && isListener &&
            !entry->second.isKept) {
            participant_->set_listener(nullptr, dds::StatusMask::none());
        }
    }

    dds::DomainParticipant* get() const { return participant_.get(); }

private:
    const std::shared_ptr<Discovery> discovery_; ///< outlives the participant, whose listener it is
    const ParticipantPointer participant_;
};

/// Has a participant report what it discovers, from its creation on if it was made for that; the listener of
/// somebody else stays.
void attach(dds::DomainParticipant& participant, Record& record)
{
    auto* const relay = fastdds::DiscoveryRelay::of(participant);
    if (relay != nullptr) {
        relay->handOver(record.discovery);
        record.isKept = true;
    }
    if (relay != nullptr || participant.get_listener() == nullptr) {
        participant.set_listener(record.discovery.get(), Discovery::reportedStatuses());
    }
}

} // namespace

ParticipantPointer watched(ParticipantPointer participant)
{
    const std::lock_guard lock(records().mutex);
    std::erase_if(records().byParticipant,
                  [](const auto& entry) { return entry.second.participant.expired(); });
    auto& record = records().byParticipant[participant.get()];
    auto known = record.watched.lock();
    if (!known) {
        if (!record.discovery) {
            statusThread(); // made now, so that it ends before what Fast DDS keeps for the process
            record.participant = participant;
            record.discovery = std::make_shared<Discovery>(participant->guid());
        }
        attach(*participant, record);
        auto* const raw = participant.get();
        known = std::make_shared<WatchedParticipant>(std::move(participant), record.discovery);
        record.watched = known;
        return {std::move(known), raw};
    }
    auto* const raw = known->get();
    return {std::move(known), raw};
}

std::shared_ptr<Discovery> discoveryOf(const dds::DomainParticipant& participant)
{
    const std::lock_guard lock(records().mutex);
    const auto entry = records().byParticipant.find(&participant);
    return entry == records().byParticipant.end() ? nullptr : entry->second.discovery;
}

std::shared_ptr<dds::DataReaderListener> statusListenerOf(const dds::DataReader& reader)
{
    return discoveryOf(*reader.get_subscriber()->get_participant());
}

} // namespace ovra::plex::ps::internal
