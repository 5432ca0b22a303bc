// SPDX-License-Identifier: Apache-2.0
#include "ShortestLife.hpp"
#include "TopicUses.hpp"

#include <plex/ps/internal/Deletions.hpp>
#include <plex/ps/internal/Entities.hpp>
#include <plex/ps/internal/Time.hpp>

#include <log4cplus/loggingmacros.h>

#include <exception>
#include <utility>

namespace ovra::plex::ps::internal
{

namespace
{

/// Waits until what was written is acknowledged; a failure is logged at WARN.
template <class Entity>
void waitForAcknowledgments(Entity& entity, const PublisherTexts& texts, const std::string& failureText)
{
    if (texts.waitForAckTimeoutMs > 0) {
        const auto result =
            fastdds::code(entity.wait_for_acknowledgments(toDuration(texts.waitForAckTimeoutMs)));
        if (result != fastdds::RETCODE_OK) {
            LOG4CPLUS_WARN(texts.logger, withCode(failureText, result));
        }
    }
}

/// Holds an entity until its deletion by the function given, which runs where that may be.
template <class Entity, class Delete>
std::shared_ptr<Entity> hold(Entity* entity, Delete deleteHeld)
{
    return {
        entity, [deleteHeld = std::move(deleteHeld)](Entity* held) {
            deleteEntity([deleteHeld, held] {
                try {
                    deleteHeld(held);
                } catch (...) {
                    std::terminate(); // where the exception is at hand still: no release of a pointer throws
                }
            });
        }};
}

} // namespace

std::shared_ptr<dds::Topic> holdTopic(ParticipantPointer participant, dds::Topic* topic,
                                      const log4cplus::Logger& logger, const std::string& failureText)
{
    return hold(topic, [participant = std::move(participant), logger, failureText](dds::Topic* used) {
        TopicUses& uses = topicUses();
        const std::lock_guard lock(uses.mutex);
        if (!uses.released(used)) {
            return;
        }
        const auto result = fastdds::code(participant->delete_topic(used));
        if (result != fastdds::RETCODE_OK && result != fastdds::RETCODE_PRECONDITION_NOT_MET) {
            fail(logger, withCode(failureText, result));
        }
    });
}

std::shared_ptr<dds::Publisher> holdPublisher(ParticipantPointer participant, dds::Publisher* publisher,
                                              const PublisherTexts& texts)
{
    return hold(publisher, [participant = std::move(participant), texts](dds::Publisher* held) {
        waitForAcknowledgments(*held, texts, texts.publisherWaitFailed);
        const auto result = fastdds::code(participant->delete_publisher(held));
        if (result != fastdds::RETCODE_OK) {
            LOG4CPLUS_ERROR(texts.logger, withCode("Failed to delete publisher", result));
        }
    });
}

std::shared_ptr<dds::DataWriter> holdWriter(std::shared_ptr<dds::Publisher> publisher,
                                            std::shared_ptr<dds::Topic> topic, dds::DataWriter* writer,
                                            const PublisherTexts& texts)
{
    return hold(writer, [publisher = std::move(publisher), topic = std::move(topic), texts,
                         life = ShortestLife()](dds::DataWriter* held) {
        waitForAcknowledgments(*held, texts, texts.writerWaitFailed);
        life.await();
        const EndpointLock lock;
        const auto result = fastdds::code(publisher->delete_datawriter(held));
        if (result != fastdds::RETCODE_OK) {
            LOG4CPLUS_ERROR(texts.logger, withCode("Failed to delete data writer", result));
        }
    });
}

std::shared_ptr<dds::Subscriber> holdSubscriber(ParticipantPointer participant, dds::Subscriber* subscriber,
                                                const log4cplus::Logger& logger,
                                                const std::string& failureText)
{
    return hold(subscriber,
                [participant = std::move(participant), logger, failureText](dds::Subscriber* held) {
                    const auto result = fastdds::code(participant->delete_subscriber(held));
                    if (result != fastdds::RETCODE_OK) {
                        fail(logger, withCode(failureText, result));
                    }
                });
}

std::shared_ptr<dds::DataReader> holdReader(std::shared_ptr<dds::Subscriber> subscriber,
                                            std::shared_ptr<dds::Topic> topic, dds::DataReader* reader,
                                            std::shared_ptr<dds::DataReaderListener> listener,
                                            const log4cplus::Logger& logger, const std::string& failureText)
{
    return hold(reader,
                [subscriber = std::move(subscriber), topic = std::move(topic), listener = std::move(listener),
                 logger, failureText, life = ShortestLife()](dds::DataReader* held) {
                    life.await();
                    const EndpointLock lock;
                    const auto result = fastdds::code(subscriber->delete_datareader(held));
                    if (result != fastdds::RETCODE_OK) {
                        fail(logger, withCode(failureText, result));
                    }
                });
}

} // namespace ovra::plex::ps::internal
