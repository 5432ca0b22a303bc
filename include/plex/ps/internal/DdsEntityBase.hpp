// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>
#include <plex/dds/QosInEffect.hpp>
#include <plex/ps/internal/Entities.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovra::plex::ps::internal
{

struct QosWishes;

/// Life cycle of an entity; it only ever goes forward.
enum class EntityState : std::uint32_t { Uninitialized = 0, Initialized = 1, Closed = 2 };

/// What every publisher and subscriber over DDS is made of, whatever its topic type: its address, settings,
/// participant and state, and the steps that make its DDS entities.
///
/// Threads: checkState() and isQosExceeded() may be called from any; the rest belongs to the thread that
/// sets the entity up. Ownership: shares the participant; what the create functions return belongs to the
/// caller, who wraps it with the functions of Entities.hpp.
class PLEX_EXPORT DdsEntityBase
{
public:
    /// @param typeSupport owns a new topic data type, a fastdds::TopicDataType.
    /// @param hasKey what the module's values say; the type must say the same.
    /// @throws PlexException when the URI is no DDS publish/subscribe URI, property
    ///         "dds.data_representation" has no meaning, the module contradicts itself or the type cannot be
    ///         registered.
    DdsEntityBase(Uri uri, qos::QoSList qos, Plex::Properties properties, ParticipantPointer participant,
                  dds::TypeSupport typeSupport, bool hasKey);
    DdsEntityBase(const DdsEntityBase&) = delete;
    DdsEntityBase& operator=(const DdsEntityBase&) = delete;
    virtual ~DdsEntityBase();

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

    /// A new DDS subscriber, deleted by its pointer. @throws PlexException when it cannot be made.
    std::shared_ptr<dds::Subscriber> createSubscriber();

    /// A new data writer, never null: from the writer profile where profiles are used, else with a KEEP_ALL
    /// history of at most 40000 samples and the deadline of the QoS list.
    /// @param logger the caller's, for failures.
    /// @param historyDepth the depth in the writer's QoS (without effect on a KEEP_ALL history); the
    ///        default of Fast DDS where absent.
    /// @throws PlexException when it cannot be made.
    dds::DataWriter* createWriter(dds::Publisher& publisher, dds::Topic& topic,
                                  const log4cplus::Logger& logger,
                                  std::optional<std::int32_t> historyDepth) const;

    /// A new DDS subscriber for a reader from createReader(), never null. @throws as createWriter().
    dds::Subscriber* createReadersSubscriber(const log4cplus::Logger& logger) const;

    /// A new data reader, never null: from the reader profile where profiles are used, else as a writer.
    /// @throws as createWriter().
    dds::DataReader* createReader(dds::Subscriber& subscriber, dds::Topic& topic,
                                  const log4cplus::Logger& logger) const;

    /// A new data reader for most recent values, whatever the profiles: best effort, volatile, the last
    /// sample of each instance, of which there may be any number. Null when DDS refuses it.
    dds::DataReader* createMostRecentReader(dds::Subscriber& subscriber, dds::Topic& topic) const;

    /// The settings of a writer from createWriter(). @param historyDepth as it was given there.
    std::vector<QosSetting> settingsOf(const dds::DataWriter& writer,
                                       std::optional<std::int32_t> historyDepth) const;

    /// The settings of a reader from createReader().
    std::vector<QosSetting> settingsOf(const dds::DataReader& reader) const;

    /// The settings of a reader from createMostRecentReader().
    std::vector<QosSetting> mostRecentSettingsOf(const dds::DataReader& reader) const;

    /// The property "dds.qos.profile.library", or null where it is absent. Its presence decides everywhere
    /// whether QoS profiles are used.
    const char* getQosLibraryName() const;

    /// Whether a received sample is strictly older than the latency, or at or past its deadline.
    ///
    /// Ages against the latency are differences of 32-bit millisecond counts: an age that straddles a wrap
    /// of these counts never counts as late.
    bool isQosExceeded(const dds::SampleInfo& info) const { return ageLimits().areExceededBy(info); }

    /// Latency (first) and deadline (second) in milliseconds of a QoS list; 0 where there is none.
    static std::pair<std::int32_t, std::int32_t> getDeadlineAndLatencyDuration(const qos::QoSList& qos);

protected:
    /// What isQosExceeded() goes by.
    AgeLimits ageLimits() const { return {latencyMs_, deadlineMs_}; }

    /// @throws IllegalStateException as for a closed entity, logged.
    [[noreturn]] void failClosed() const;

private:
    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsBasePubSub");

protected:
    std::atomic<EntityState> state_ = EntityState::Uninitialized;
    const Uri uri_;
    const qos::QoSList qos_;
    std::int32_t deadlineMs_ = 0; ///< 0 or less: none
    std::int32_t latencyMs_ = 0;  ///< 0 or less: none
    const Plex::Properties properties_;
    const ParticipantPointer participant_;
    std::optional<fastdds::DataRepresentationId> representation_; ///< the one asked for by property
    std::string topicName_;
    dds::TypeSupport typeSupport_;

private:
    void checkModule(bool hasKey) const;
    fastdds::TopicDataType& topicDataType() const;
    [[noreturn]] void failNotOpen(EntityState state) const;

    dds::Topic* findTopic() const;
    dds::Topic* makeTopic() const;
    dds::DataWriter* createWriterWithProfile(dds::Publisher& publisher, dds::Topic& topic,
                                             const std::string& profile) const;
    dds::DataReader* createReaderWithProfile(dds::Subscriber& subscriber, dds::Topic& topic,
                                             const std::string& profile) const;
    QosWishes wishes() const;
    std::vector<QosSetting> commonSettings() const;
    std::vector<QosSetting> readersSettings(const dds::DataReader& reader) const;
};

inline void DdsEntityBase::checkState() const
{
    if (const auto state = state_.load(std::memory_order_acquire); state != EntityState::Initialized) {
        failNotOpen(state);
    }
}

} // namespace ovra::plex::ps::internal
