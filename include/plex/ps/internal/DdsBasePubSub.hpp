// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>
#include <plex/ps/TopicAdapter.hpp>
#include <plex/ps/internal/DataRepresentation.hpp>
#include <plex/ps/internal/Entities.hpp>

#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace ovra::plex::ps::internal
{

/// Life cycle of an entity; it only ever goes forward.
enum class EntityState : std::uint32_t { Uninitialized = 0, Initialized = 1, Closed = 2 };

/// What every publisher and subscriber over DDS is made of, whatever its topic type: its address, settings,
/// participant and state, and the steps that make its DDS entities.
///
/// Threads: checkState() and isQosExceeded() may be called from any; the rest belongs to the thread that
/// sets the entity up. Ownership: shares the participant; what the create functions return belongs to the
/// caller, who wraps it with the functions of Entities.hpp.
class DdsEntityBase
{
public:
    /// @param typeSupport owns a new topic data type.
    /// @throws PlexException when the URI is no DDS publish/subscribe URI, property
    ///         "dds.data_representation" has no meaning or the type cannot be registered.
    DdsEntityBase(Uri uri, qos::QoSList qos, Plex::Properties properties, ParticipantPointer participant,
                  dds::TypeSupport typeSupport);
    DdsEntityBase(const DdsEntityBase&) = delete;
    DdsEntityBase& operator=(const DdsEntityBase&) = delete;
    virtual ~DdsEntityBase() = default;

    /// @throws IllegalStateException unless the entity is set up and not closed.
    virtual void checkState() const;

    /// Finds the topic or makes it. Both count as one use, which holdTopic() ends.
    /// @returns the topic and whether this call made it.
    /// @throws PlexException when it cannot be made, or exists with another type or as something else than a
    ///         plain topic.
    /// @throws std::system_error when the process's topic mutex cannot be locked.
    std::pair<dds::Topic*, bool> createTopic();

    /// A new DDS publisher, never null. @throws PlexException when it cannot be made.
    dds::Publisher* createPublisher();

    /// A new data writer, never null: from the writer profile where profiles are used, else with a KEEP_ALL
    /// history of at most 40000 samples and the deadline of the QoS list.
    /// @param logger the caller's, for failures.
    /// @param historyDepth the depth in the writer's QoS (without effect on a KEEP_ALL history); the
    ///        default of Fast DDS where absent.
    /// @throws PlexException when it cannot be made.
    dds::DataWriter* createWriter(dds::Publisher& publisher, dds::Topic& topic,
                                  const log4cplus::Logger& logger,
                                  std::optional<std::int32_t> historyDepth) const;

    /// A new data reader from the reader profile; null when there is none of that name or DDS refuses it.
    dds::DataReader* createReaderWithProfile(dds::Subscriber& subscriber, dds::Topic& topic,
                                             const std::string& profile) const;

    /// A new DDS subscriber, deleted by its pointer. @throws PlexException when it cannot be made.
    std::shared_ptr<dds::Subscriber> createSubscriber();

    /// The property "dds.qos.profile.library", or null where it is absent. Its presence decides everywhere
    /// whether QoS profiles are used.
    const char* getQosLibraryName() const;

    /// Whether a received sample is strictly older than the latency, or at or past its deadline.
    ///
    /// Ages against the latency are differences of 32-bit millisecond counts: an age that straddles a wrap
    /// of these counts never counts as late.
    bool isQosExceeded(const dds::SampleInfo& info) const;

    /// Latency (first) and deadline (second) in milliseconds of a QoS list; 0 where there is none.
    static std::pair<std::int32_t, std::int32_t> getDeadlineAndLatencyDuration(const qos::QoSList& qos);

protected:
    /// The DDS deadline period for a writer or reader. The milliseconds beyond whole seconds go into the
    /// nanoseconds as they are.
    Duration_t deadlinePeriod() const;

    /// @throws IllegalStateException as for a closed entity, logged.
    [[noreturn]] void failClosed() const;

    std::atomic<EntityState> state_ = EntityState::Uninitialized;
    const Uri uri_;
    const qos::QoSList qos_;
    std::int32_t deadlineMs_ = 0; ///< 0 or less: none
    std::int32_t latencyMs_ = 0;  ///< 0 or less: none
    const Plex::Properties properties_;
    const std::optional<DataRepresentationId> representation_; ///< the one asked for by property
    const ParticipantPointer participant_;
    dds::TypeSupport typeSupport_;
    std::string topicName_;

private:
    // What seldom happens is apart, so that the checks before and after each operation are inlined.
    [[noreturn]] void failNotOpen(EntityState state) const;
    bool isTooOld(const dds::SampleInfo& info) const;

    dds::Topic* findTopic() const;
    dds::Topic* makeTopic() const;
    dds::DataWriter* createWriterWithProfile(dds::Publisher& publisher, dds::Topic& topic,
                                             const std::string& profile) const;

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsBasePubSub");
};

/// The base of an entity for the interface type T over the adapter ST.
template <class T, class ST>
class DdsBasePubSub : public DdsEntityBase
{
    static_assert(checkTopicAdapter<T, ST>());

public:
    /// @throws as DdsEntityBase.
    DdsBasePubSub(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                  const ParticipantPointer& participant)
        : DdsEntityBase(uri, qos, properties, participant, dds::TypeSupport(new typename ST::PubSubType()))
    {
    }
};

} // namespace ovra::plex::ps::internal

#include <plex/ps/internal/detail/DdsBasePubSub.inl>
