// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Failure.hpp>
#include <plex/ps/internal/TopicUses.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/Topic.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>

/// Shared pointers to DDS entities. Each deleter gives its entity back to the entity that made it and keeps
/// that one alive until then. A deleter that cannot do so logs why; one that may not go on throws, and as no
/// exception passes a shared pointer's release the process ends: an entity that DDS refuses to delete could
/// still call into an object that is gone.
namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

using ParticipantPointer = std::shared_ptr<dds::DomainParticipant>;

/// Milliseconds as a DDS duration, fraction of a second included; longer than its 32-bit seconds is as long
/// as these go, 68 years.
inline Duration_t toDuration(std::int64_t milliseconds)
{
    constexpr std::int64_t longest = std::int64_t{std::numeric_limits<std::int32_t>::max()} * 1000;
    return {static_cast<long double>(std::min(milliseconds, longest)) / 1000.0L};
}

/// The shortest time that a data writer or reader lives. When a writer and a reader of one process meet, Fast
/// DDS has the participant's event thread look at the reader once, as soon as it wakes, and that look does
/// not hold the lock under which the deletion of either clears what it reads: it may end in a segmentation
/// fault (2.14 to 3.6 at least). DDS tells nobody when the look is over, so an entity made just now is given
/// ample time for it.
class ShortestLife
{
public:
    /// Blocks the thread while the entity is younger; an older one costs a look at the clock.
    void await() const { std::this_thread::sleep_until(end_); }

private:
    std::chrono::steady_clock::time_point end_ =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
};

/// How the entities of a publisher word their failures and how long they wait before they go.
struct PublisherTexts {
    log4cplus::Logger logger;
    std::string publisherWaitFailed;
    std::string writerWaitFailed;
    std::int64_t waitForAckTimeoutMs; ///< 0 or less: no wait
};

/// Waits until what was written is acknowledged; a failure is logged at WARN.
template <class Entity>
void waitForAcknowledgments(Entity& entity, const PublisherTexts& texts, const std::string& failureText)
{
    if (texts.waitForAckTimeoutMs > 0) {
        const auto result = code(entity.wait_for_acknowledgments(toDuration(texts.waitForAckTimeoutMs)));
        if (result != RETCODE_OK) {
            LOG4CPLUS_WARN(texts.logger, withCode(failureText, result));
        }
    }
}

/// Holds one use of a topic that createTopic() returned.
/// @param failureText logged and thrown, with the code behind it, when the topic cannot be deleted.
inline std::shared_ptr<dds::Topic> holdTopic(ParticipantPointer participant, dds::Topic* topic,
                                             const log4cplus::Logger& logger, const std::string& failureText)
{
    return {topic, [participant = std::move(participant), logger, failureText](dds::Topic* used) {
                TopicUses& uses = topicUses();
                const std::lock_guard lock(uses.mutex);
                if (!uses.released(used)) {
                    return;
                }
                const auto result = code(participant->delete_topic(used));
                if (result != RETCODE_OK && result != RETCODE_PRECONDITION_NOT_MET) {
                    fail(logger, withCode(failureText, result));
                }
            }};
}

/// Holds a DDS publisher; its deletion waits for acknowledgments and never throws.
inline std::shared_ptr<dds::Publisher> holdPublisher(ParticipantPointer participant,
                                                     dds::Publisher* publisher, const PublisherTexts& texts)
{
    return {publisher, [participant = std::move(participant), texts](dds::Publisher* held) {
                waitForAcknowledgments(*held, texts, texts.publisherWaitFailed);
                const auto result = code(participant->delete_publisher(held));
                if (result != RETCODE_OK) {
                    LOG4CPLUS_ERROR(texts.logger, withCode("Failed to delete publisher", result));
                }
            }};
}

/// Holds a data writer; its deletion waits for acknowledgments and never throws.
inline std::shared_ptr<dds::DataWriter> holdWriter(std::shared_ptr<dds::Publisher> publisher,
                                                   dds::DataWriter* writer, const PublisherTexts& texts)
{
    return {writer, [publisher = std::move(publisher), texts, life = ShortestLife()](dds::DataWriter* held) {
                waitForAcknowledgments(*held, texts, texts.writerWaitFailed);
                life.await();
                const auto result = code(publisher->delete_datawriter(held));
                if (result != RETCODE_OK) {
                    LOG4CPLUS_ERROR(texts.logger, withCode("Failed to delete data writer", result));
                }
            }};
}

/// Holds a DDS subscriber; failureText as for a topic.
inline std::shared_ptr<dds::Subscriber> holdSubscriber(ParticipantPointer participant,
                                                       dds::Subscriber* subscriber,
                                                       const log4cplus::Logger& logger,
                                                       const std::string& failureText)
{
    return {subscriber, [participant = std::move(participant), logger, failureText](dds::Subscriber* held) {
                const auto result = code(participant->delete_subscriber(held));
                if (result != RETCODE_OK) {
                    fail(logger, withCode(failureText, result));
                }
            }};
}

/// Holds a data reader with the subscriber and the topic that it needs, as a loan may outlast both holders;
/// failureText as for a topic.
inline std::shared_ptr<dds::DataReader> holdReader(std::shared_ptr<dds::Subscriber> subscriber,
                                                   std::shared_ptr<dds::Topic> topic, dds::DataReader* reader,
                                                   const log4cplus::Logger& logger,
                                                   const std::string& failureText)
{
    return {reader, [subscriber = std::move(subscriber), topic = std::move(topic), logger, failureText,
                     life = ShortestLife()](dds::DataReader* held) {
                life.await();
                const auto result = code(subscriber->delete_datareader(held));
                if (result != RETCODE_OK) {
                    fail(logger, withCode(failureText, result));
                }
            }};
}

} // namespace ovra::plex::ps::internal
