// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/PlexException.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// What the DDS transport tells of its publishers and subscribers: who is matched, who is not and why, and
/// what became of the values.
///
/// The functions take what an application holds: a `Publisher<T>`, `InstancePublisher<T>`, `Subscriber<T>` or
/// `MrvSubscriber<T>`. Nothing else of DDS is needed to use them, and nothing has to be linked.
namespace ovra::plex::ps
{

/// One reason why a publisher and a subscriber of one topic do not match (DDS 1.4, 2.2.3; XTypes 1.3, 7.6.3).
struct Refusal {
    std::string policy;  ///< "reliability", "durability", …, or "type name" or "key"
    std::string offered; ///< by the publisher
    std::string asked;   ///< by the subscriber
};

/// A policy of an endpoint, in words.
struct Policy {
    std::string name;
    std::string value;
};

/// How far away a peer is, as far as its announcements tell.
enum class Distance { SameProcess, SameHost, OtherHost, Unknown };

/// An endpoint of the same topic on the other side: a subscriber's publisher, or a publisher's subscriber.
/// Texts are empty where the peer does not announce them; peers of this library always do.
struct Peer {
    std::string guid;        ///< RTPS 2.5, 9.3.1, as "01.0f.…|0.0.1.3"
    std::string vendor;      ///< of the peer's DDS, by name or as "1.22"
    std::string participant; ///< the name of its participant
    std::string host;
    std::string process; ///< the number of its process
    Distance distance = Distance::Unknown;
    std::string type; ///< the type's name
    std::vector<Policy> policies;

    /// Why the two do not match. A matched peer has refusals where its own DDS may go by more policies than
    /// ours: Fast DDS leaves latency budget, destination order and presentation out.
    std::vector<Refusal> refusals;
};

/// What became of the values of a publisher or subscriber since it was made.
struct Counters {
    std::uint64_t published = 0;   ///< accepted by DDS
    std::uint64_t received = 0;    ///< taken from DDS's history: by a read, a poll or for a callback
    std::uint64_t delivered = 0;   ///< of these, given to the application
    std::uint64_t tooOld = 0;      ///< of these, dropped for the latency or deadline
    std::uint64_t undecodable = 0; ///< samples whose bytes are no value of the type
    std::uint64_t lost = 0;        ///< DDS knows of them, but they never arrived
    std::uint64_t rejected = 0;    ///< refused for want of room in the history
    std::string rejectedBy;        ///< the limit that refused the last one, or empty
    std::uint64_t deadlinesMissed = 0;
    std::uint64_t callbacksThrew = 0;
    std::vector<std::uint8_t> undecodableBytes; ///< the first bytes of the last one, 32 at most
};

/// What DDS keeps of a publisher's or subscriber's values. Limits are 0 where only memory is one.
struct History {
    std::uint64_t unread = 0;         ///< samples that a subscriber holds and nothing has read yet
    std::uint64_t most = 0;           ///< how many are kept altogether
    std::uint64_t mostOfInstance = 0; ///< and of each instance; without a key the same
};

/// A publisher or subscriber and its peers at one moment.
struct EntityStatus {
    std::string topic;
    std::string type;
    std::string guid;
    bool isPublisher = false;
    std::vector<Peer> matched;
    std::vector<Peer> refused;           ///< endpoints of the same topic that can not match, with the reasons
    std::vector<Peer> former;            ///< matched once and gone since, the latest last, 32 at most
    std::uint64_t matchedAltogether = 0; ///< matches ever made
    Counters counters;
    History history; ///< of what status() returns; empty in what a status callback gets
};

/// What became of the wait for acknowledgments.
struct Acknowledgment {
    enum class Outcome { Acknowledged, NobodyToAcknowledge, TimedOut };

    Outcome outcome = Outcome::Acknowledged;
    /// Where it timed out: the reliable subscribers that are matched. DDS does not tell which of several is
    /// late.
    std::vector<Peer> waitedFor;
};

/// Ends the calls of a status callback when it goes. From another thread it waits for one that is under way.
class StatusWatch
{
public:
    StatusWatch() = default;
    StatusWatch(const StatusWatch&) = delete;
    StatusWatch& operator=(const StatusWatch&) = delete;
    virtual ~StatusWatch() = default;
};

/// What the DDS transport's publishers and subscribers are besides what their contract says. Applications use
/// the functions below.
///
/// Threads: any.
class PLEX_EXPORT ObservableEntity
{
public:
    using StatusCallback = std::function<void(const EntityStatus&)>;

    virtual EntityStatus status() const = 0;
    virtual bool waitForMatched(std::size_t count, std::chrono::milliseconds timeout) const = 0;
    virtual Acknowledgment waitForAcknowledgments(std::chrono::milliseconds timeout) = 0;
    virtual std::unique_ptr<StatusWatch> watchStatus(StatusCallback callback) = 0;

protected:
    ObservableEntity() = default;
    ObservableEntity(const ObservableEntity&) = default;
    ObservableEntity& operator=(const ObservableEntity&) = default;
    ~ObservableEntity() = default;
};

namespace detail
{

template <class Entity>
auto& observable(Entity& entity)
{
    using Observable = std::conditional_t<std::is_const_v<Entity>, const ObservableEntity, ObservableEntity>;
    auto* const found = dynamic_cast<Observable*>(&entity);
    if (found == nullptr) {
        throw PlexException("The entity is not one of the DDS transport, which alone tells a status");
    }
    return *found;
}

} // namespace detail

/// A publisher's or subscriber's status, all of one moment.
/// @throws PlexException when the entity is another transport's; IllegalStateException when it is closed.
template <class Entity>
EntityStatus status(const Entity& entity)
{
    return detail::observable(entity).status();
}

/// Waits until a publisher or subscriber has so many matched peers.
///
/// The first value that is published after a publisher's wait arrives at each of these peers whose
/// reliability is "reliable", even if the peer learns of the match a little later than the publisher. Best
/// effort promises nothing.
/// @param timeout not negative.
/// @returns whether it has; false at once when the entity is closed meanwhile.
/// @throws as status(), and PlexException when the timeout is negative.
template <class Entity>
bool waitForMatched(const Entity& entity, std::size_t count, std::chrono::milliseconds timeout)
{
    return detail::observable(entity).waitForMatched(count, timeout);
}

/// Waits until all reliable subscribers that are matched have acknowledged what a publisher has sent so far.
/// @param timeout not negative.
/// @throws as waitForMatched(); IllegalStateException also for a subscriber.
template <class Entity>
Acknowledgment waitForAcknowledgments(Entity& publisher, std::chrono::milliseconds timeout)
{
    return detail::observable(publisher).waitForAcknowledgments(timeout);
}

/// Has a callback called whenever peers come, go, or are refused, as losses and rejections double, and once
/// at the beginning.
///
/// It is called on a thread of the process, named "plex-status", with no lock held: anything may be done in
/// it, closing the entity and ending the watch included. One call at a time is made in the process. Changes
/// in quick succession are one call. Exceptions that leave it are logged.
/// @returns what ends the calls; it may outlive the entity.
/// @throws as status().
template <class Entity>
[[nodiscard]] std::unique_ptr<StatusWatch> watchStatus(Entity& entity,
                                                       ObservableEntity::StatusCallback callback)
{
    return detail::observable(entity).watchStatus(std::move(callback));
}

/// A refusal in words: "reliability: reliable asked for, best-effort offered".
inline std::string toString(const Refusal& refusal)
{
    return refusal.policy + ": " + refusal.asked + " asked for, " + refusal.offered + " offered";
}

} // namespace ovra::plex::ps
