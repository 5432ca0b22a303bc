// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/dds/Status.hpp>
#include <plex/fastdds/DiscoveryListener.hpp>
#include <plex/ps/internal/Entities.hpp>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// What the transport tells of its publishers and subscribers, see plex/dds/Status.hpp.
namespace ovra::plex::ps::internal
{

class Discovery;

/// The counters that the engine's own operations keep, by threads of any number.
struct EndpointCounters {
    std::atomic<std::uint64_t> published = 0;
    std::atomic<std::uint64_t> received = 0;
    std::atomic<std::uint64_t> delivered = 0;
    std::atomic<std::uint64_t> tooOld = 0;
    std::atomic<std::uint64_t> callbacksThrew = 0;
};

/// Adds to a counter. Whoever sees that sees what was counted before, so that no part is more than its whole.
inline void count(std::atomic<std::uint64_t>& counter, std::uint64_t more = 1)
{
    counter.fetch_add(more, std::memory_order_release);
}

/// Counts what one operation takes, and adds it to the counters at its end.
class Tally
{
public:
    explicit Tally(EndpointCounters& counters) : counters_(counters) {}

    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

    ~Tally()
    {
        add(counters_.received, received);
        add(counters_.tooOld, tooOld);
        add(counters_.delivered, delivered);
    }

    std::uint64_t received = 0;
    std::uint64_t tooOld = 0;
    std::uint64_t delivered = 0;

private:
    static void add(std::atomic<std::uint64_t>& counter, std::uint64_t more)
    {
        if (more > 0) {
            count(counter, more);
        }
    }

    EndpointCounters& counters_;
};

/// What is known of one reader or writer of this process: its counters, its peers, and who wants to hear of
/// changes.
///
/// Threads: any. Ownership: shared by the entity and what its participant has discovered.
class PLEX_EXPORT Endpoint : public std::enable_shared_from_this<Endpoint>
{
public:
    /// That of a writer or reader, made by this library in a participant from watched().
    static std::shared_ptr<Endpoint> of(const dds::DataWriter& writer);
    static std::shared_ptr<Endpoint> of(const dds::DataReader& reader);

    Endpoint(std::weak_ptr<Discovery> discovery, fastdds::Guid guid);
    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;
    ~Endpoint();

    EntityStatus status() const;

    /// @throws PlexException when the timeout is negative.
    bool waitForMatched(std::size_t count, std::chrono::milliseconds timeout) const;

    /// The reliable peers that are matched.
    std::vector<Peer> acknowledgingPeers() const;

    std::unique_ptr<StatusWatch> watch(ObservableEntity::StatusCallback callback);

    EndpointCounters counters;

private:
    friend class Discovery;

    class Watcher;
    class Watch;
    struct Events;

    using Watchers = std::vector<std::weak_ptr<Watcher>>;

    /// What only Discovery looks at and changes, with its mutex held.
    struct State {
        std::vector<fastdds::Guid> matched;
        std::uint64_t matchedAltogether = 0;
        std::unique_ptr<Events> events; ///< made with the first one
        bool isGone = false;
        bool hasChanged = true;
    };

    /// What has been recorded of peers and losses.
    struct Recorded {
        std::map<std::string, std::string> matched; ///< GUID and name
        std::map<std::string, std::string> refused; ///< GUID and reasons
        std::uint64_t lost = 0;
        std::uint64_t rejected = 0;
    };

    /// The engine's counters, and those that Discovery keeps.
    Counters countersNow() const;

    /// On the thread for it: records what is new and calls those that watch.
    void tell(const EntityStatus& status, const Watchers& watchers);
    void record(const EntityStatus& status);
    void recordMatches(const EntityStatus& status);
    void recordRefusals(const EntityStatus& status);
    void recordLosses(const EntityStatus& status);

    const std::weak_ptr<Discovery> discovery_;
    const fastdds::Guid guid_;
    State state_;
    std::unique_ptr<Recorded> recorded_; ///< belongs to the thread that tells; made when there is something
};

/// The participant with what it discovers being watched for as long as somebody holds what this returns.
PLEX_EXPORT ParticipantPointer watched(ParticipantPointer participant);

/// What is to hear what DDS reports of a reader that has a listener of its own; null where nothing does.
PLEX_EXPORT std::shared_ptr<dds::DataReaderListener> statusListenerOf(const dds::DataReader& reader);

/// Samples of a reader that could not be decoded. @param bytes the the last one's.
PLEX_EXPORT void noteUndecodable(const dds::DataReader& reader, std::size_t count,
                                 std::span<const std::uint8_t> bytes);

} // namespace ovra::plex::ps::internal
