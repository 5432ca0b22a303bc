// SPDX-License-Identifier: Apache-2.0
// A DDS domain as it is seen from outside.
#pragma once

#include <plex/fastdds/DiscoveryListener.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

namespace dds = eprosima::fastdds::dds;

/// What is on the air at one moment, without the own participant.
struct Scene {
    std::map<fastdds::GuidPrefix, fastdds::AnnouncedParticipant> participants;
    std::vector<fastdds::AnnouncedEndpoint> endpoints; ///< by topic; writers before readers

    std::vector<std::string> topics() const; ///< names, sorted, each once
    std::vector<fastdds::AnnouncedEndpoint> writersOf(const std::string& topic) const;
    std::vector<fastdds::AnnouncedEndpoint> readersOf(const std::string& topic) const;

    /// The participant of an endpoint. @returns null: not announced yet.
    const fastdds::AnnouncedParticipant* participantOf(const fastdds::Guid& endpoint) const;
};

/// A participant of its own that notes what others announce. It has no endpoints but those that are made with
/// participant().
///
/// Fast DDS announces a participant before it listens, so that some of the answers are lost, and those who
/// gave them are not heard of for seconds. So there is a second participant until all are known: the first
/// one listens when others answer that, and what either hears counts. Where others answer the new one alone,
/// both answers may be lost, and only waiting for the next announcement of all others helps.
///
/// Threads: one owner; DDS reports on its own.
class Domain final : public fastdds::DiscoveryListener
{
public:
    /// @param name of the participant: "plex list".
    /// @throws Failure when DDS refuses.
    Domain(std::uint32_t number, const std::string& name);
    Domain(const Domain&) = delete;
    Domain& operator=(const Domain&) = delete;
    ~Domain() override;

    dds::DomainParticipant& participant() { return *participant_; }

    Scene scene() const;

    /// Grows with everything that is announced or goes.
    std::uint64_t changes() const;

    /// What one of its own endpoints announces. @returns nothing: not yet.
    std::optional<fastdds::AnnouncedEndpoint> ownEndpoint(const fastdds::Guid& guid) const;

    /// Waits until announcements have stopped, for 3 s at most (4.5 s where answers may not
    /// reach all), or until the command is interrupted.
    void settle();

    /// As settle(), but ends as soon as a condition holds. @returns whether it holds.
    bool settleUnless(const std::function<bool(const Scene&)>& condition);

    /// Waits until a condition holds, or until all others have had time to announce themselves again.
    /// @returns whether it holds.
    bool waitForRepetition(const std::function<bool(const Scene&)>& condition) const;

private:
    using Clock = std::chrono::steady_clock;

    void announced(const fastdds::AnnouncedParticipant& participant) override;
    void gone(const fastdds::GuidPrefix& participant) override;
    void announced(const fastdds::AnnouncedEndpoint& endpoint) override;
    void gone(const fastdds::Guid& endpoint) override;

    /// @returns null when DDS refuses.
    dds::DomainParticipant* create(std::uint32_t number, const std::string& name);
    void remove(dds::DomainParticipant* participant);
    bool waitUnless(const std::function<bool()>& isOver,
                    const std::function<bool(const Scene&)>& condition) const;
    bool isSettled() const;
    bool isOwn(const fastdds::GuidPrefix& participant) const;
    Scene sceneLocked() const;
    void changed();

    const std::shared_ptr<dds::DomainParticipantFactory> factory_ =
        dds::DomainParticipantFactory::get_shared_instance();
    const Clock::time_point begin_ = Clock::now();
    mutable std::mutex mutex_; ///< guards what follows, but for the participant
    mutable std::condition_variable change_;
    Clock::time_point lastChange_ = begin_;
    std::uint64_t changes_ = 0;
    std::map<fastdds::GuidPrefix, fastdds::AnnouncedParticipant> participants_;
    std::map<fastdds::Guid, fastdds::AnnouncedEndpoint> endpoints_;
    std::vector<fastdds::GuidPrefix> own_;     ///< participants of this object
    dds::DomainParticipant* participant_;      ///< deleted by the destructor
    dds::DomainParticipant* second_ = nullptr; ///< until the domain has settled
};

/// Waits until something is known of a topic.
/// @throws Failure when the domain has settled without it; it names the topic that is called most like it.
void waitForTopic(Domain& domain, const std::string& topic);

/// Whether an endpoint belongs to a type with a key, by its entity kind (RTPS 2.5, 9.3.1.2).
bool hasKey(const fastdds::Guid& endpoint);

} // namespace ovra::plex::tool
