// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/Failure.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/DataReaderListener.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/Topic.hpp>

#include <cstdint>
#include <memory>
#include <string>

/// Shared pointers to DDS entities. Each deleter gives its entity back to the entity that made it and keeps
/// that one alive until then. A deleter that cannot do so logs why; one that may not go on throws, and as no
/// exception passes a shared pointer's release the process ends: an entity that DDS refuses to delete could
/// still call into an object that is gone. Where an entity may not be deleted, as where DDS holds locks
/// around a callback, that happens later or elsewhere: see Deletions.hpp.
namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

using ParticipantPointer = std::shared_ptr<dds::DomainParticipant>;

/// How the entities of a publisher word their failures and how long they wait before they go.
struct PublisherTexts {
    log4cplus::Logger logger;
    std::string publisherWaitFailed;
    std::string writerWaitFailed;
    std::int64_t waitForAckTimeoutMs; ///< 0 or less: no wait
};

/// Holds one use of a topic that createTopic() returned.
/// @param failureText logged and thrown, with the code behind it, when the topic cannot be deleted.
PLEX_EXPORT std::shared_ptr<dds::Topic> holdTopic(ParticipantPointer participant, dds::Topic* topic,
                                                  const log4cplus::Logger& logger,
                                                  const std::string& failureText);

/// Holds a DDS publisher; its deletion waits for acknowledgments and never throws.
PLEX_EXPORT std::shared_ptr<dds::Publisher>
holdPublisher(ParticipantPointer participant, dds::Publisher* publisher, const PublisherTexts& texts);

/// Holds a data writer with the publisher and the topic that it needs, as a publication may outlast their
/// holders; its deletion waits for acknowledgments and never throws. It lives 2 ms at least.
PLEX_EXPORT std::shared_ptr<dds::DataWriter> holdWriter(std::shared_ptr<dds::Publisher> publisher,
                                                        std::shared_ptr<dds::Topic> topic,
                                                        dds::DataWriter* writer, const PublisherTexts& texts);

/// Holds a DDS subscriber; failureText as for a topic.
PLEX_EXPORT std::shared_ptr<dds::Subscriber> holdSubscriber(ParticipantPointer participant,
                                                            dds::Subscriber* subscriber,
                                                            const log4cplus::Logger& logger,
                                                            const std::string& failureText);

/// Holds a data reader with the subscriber, the topic and the listener (if any) that it needs, as a loan may
/// outlast their holders; failureText as for a topic. It lives 2 ms at least.
PLEX_EXPORT std::shared_ptr<dds::DataReader>
holdReader(std::shared_ptr<dds::Subscriber> subscriber, std::shared_ptr<dds::Topic> topic,
           dds::DataReader* reader, std::shared_ptr<dds::DataReaderListener> listener,
           const log4cplus::Logger& logger, const std::string& failureText);

} // namespace ovra::plex::ps::internal
