// SPDX-License-Identifier: Apache-2.0
#include "RawWriter.hpp"

#include "Failure.hpp"

#include <plex/fastdds/WriterTimes.hpp>

#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <algorithm>
#include <src/engine/Compatibility.hpp>

namespace ovra::plex::tool
{

namespace
{

constexpr std::int32_t keptForLatecomers = 100;
constexpr std::int32_t mostUnacknowledged =
    400; // with more, reliable readers that fall behind never catch up

/// A writer that offers what each of some readers asks for.
dds::DataWriterQos writerQos(const std::vector<fastdds::AnnouncedEndpoint>& readers,
                             const RawWriter::Type& type)
{
    dds::DataWriterQos qos;
    qos.reliability().kind = dds::RELIABLE_RELIABILITY_QOS;
    qos.history().kind = dds::KEEP_LAST_HISTORY_QOS;
    qos.history().depth = keptForLatecomers;
    qos.resource_limits().max_samples = 0; // as many as the instances need
    qos.resource_limits().max_instances = 0;
    qos.resource_limits().max_samples_per_instance = keptForLatecomers;
    if (type.waitsForReaders) {
        qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
        if (!type.keyed) { // else there is a limit for each instance
            qos.resource_limits().max_samples = mostUnacknowledged;
        }
        qos.resource_limits().max_samples_per_instance = mostUnacknowledged;
    }
    qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE;
    qos.data_sharing().off();
    fastdds::heartbeatPeriodOf(qos) = fastdds::Duration_t(0, 100'000'000); // the first value may wait for one
    fastdds::offer(qos, type.representation, false);
    qos.durability().kind = dds::VOLATILE_DURABILITY_QOS;
    for (const auto& reader : readers) {
        qos.durability().kind =
            std::max(qos.durability().kind, std::min(reader.durability, dds::TRANSIENT_LOCAL_DURABILITY_QOS));
        qos.ownership().kind = reader.ownership;
        if (reader.deadline < qos.deadline().period) {
            qos.deadline().period = reader.deadline;
        }
        if (reader.livelinessLease < qos.liveliness().lease_duration) {
            qos.liveliness().lease_duration = reader.livelinessLease;
            qos.liveliness().announcement_period =
                fastdds::Duration_t(static_cast<std::int32_t>(reader.livelinessLease.seconds / 2),
                                    reader.livelinessLease.nanosec / 2 + 1);
        }
    }
    return qos;
}

/// The participant's topic. @returns null when DDS refuses, also where it has one of that name and another
/// type.
dds::Topic* topicOf(dds::DomainParticipant& participant, const std::string& name, const std::string& type)
{
    auto* const known = dynamic_cast<dds::Topic*>(participant.lookup_topicdescription(name));
    if (known != nullptr) {
        return known->get_type_name() == type ? known : nullptr;
    }
    return participant.create_topic(name, type, dds::TOPIC_QOS_DEFAULT);
}

dds::PublisherQos publisherQos(const std::vector<fastdds::AnnouncedEndpoint>& readers)
{
    dds::PublisherQos qos;
    for (const auto& reader : readers) {
        for (const auto& partition : reader.partitions) {
            qos.partition().push_back(partition.c_str());
        }
    }
    return qos;
}

} // namespace

void requireTopicName(const std::string& topic)
{
    constexpr std::size_t longest = 255; // bytes
    if (topic.empty() || topic.size() > longest) {
        throw Failure(ExitCode::Usage, "the name of a topic has 1 to " + std::to_string(longest) +
                                           " bytes; \"" + topic + "\" has " + std::to_string(topic.size()));
    }
}

RawWriter::RawWriter(Domain& domain, const std::string& topic, const Type& type,
                     const std::vector<fastdds::AnnouncedEndpoint>& readers)
    : domain_(domain)
{
    requireTopicName(topic);
    auto& participant = domain.participant();
    dds::TypeSupport(new RawType(type.name, type.keyed, true)).register_type(&participant);
    auto* const made = topicOf(participant, topic, type.name);
    auto* const publisher = participant.create_publisher(publisherQos(readers));
    writer_ = made == nullptr || publisher == nullptr
                  ? nullptr
                  : publisher->create_datawriter(made, writerQos(readers, type));
    if (writer_ == nullptr) {
        throw Failure(ExitCode::Failed, "DDS makes no writer for topic \"" + topic + "\"");
    }
}

std::size_t RawWriter::matched() const
{
    dds::PublicationMatchedStatus status;
    writer_->get_publication_matched_status(status);
    return static_cast<std::size_t>(std::max(status.current_count, 0));
}

std::vector<ps::Refusal> RawWriter::refusalsOf(const fastdds::AnnouncedEndpoint& reader) const
{
    const auto own = domain_.ownEndpoint(writer_->guid());
    return own ? ps::internal::refusalsBetween(*own, reader) : std::vector<ps::Refusal>();
}

bool RawWriter::tryToWrite(const RawSample& sample)
{
    const auto code = fastdds::code(writer_->write(fastdds::asSample(&sample), fastdds::InstanceHandle_t()));
    if (code != fastdds::RETCODE_OK && code != fastdds::RETCODE_TIMEOUT) {
        throw Failure(ExitCode::Failed, "DDS does not take the value, code " + std::to_string(code));
    }
    return code == fastdds::RETCODE_OK;
}

void RawWriter::write(const RawSample& sample)
{
    if (!tryToWrite(sample)) {
        throw Failure(ExitCode::Failed,
                      "DDS does not take the value, code " + std::to_string(fastdds::RETCODE_TIMEOUT));
    }
}

bool RawWriter::waitForAcknowledgments(std::chrono::milliseconds timeout)
{
    const fastdds::Duration_t duration(static_cast<std::int32_t>(timeout.count() / 1000),
                                       static_cast<std::uint32_t>(timeout.count() % 1000) * 1'000'000U);
    return fastdds::code(writer_->wait_for_acknowledgments(duration)) == fastdds::RETCODE_OK;
}

} // namespace ovra::plex::tool
