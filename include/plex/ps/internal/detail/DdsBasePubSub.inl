// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/ProfileName.hpp>
#include <plex/ps/internal/SampleAge.hpp>

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/publisher/qos/PublisherQos.hpp>
#include <fastdds/dds/subscriber/qos/SubscriberQos.hpp>
#include <fastdds/dds/topic/qos/TopicQos.hpp>

#include <tuple>

namespace ovra::plex::ps::internal
{

inline DdsEntityBase::DdsEntityBase(Uri uri, qos::QoSList qos, Plex::Properties properties,
                                    ParticipantPointer participant, dds::TypeSupport typeSupport)
    : uri_(std::move(uri))
    , qos_(std::move(qos))
    , properties_(std::move(properties))
    , representation_(dataRepresentation(properties_))
    , participant_(std::move(participant))
    , typeSupport_(std::move(typeSupport))
{
    DdsUriHelper::checkUri(uri_, true);
    if (!DdsUriHelper::isPubSubUri(uri_)) {
        fail(logger_, "Uri " + uri_.string() + " is not DDS PubSub profile");
    }
    std::tie(latencyMs_, deadlineMs_) = getDeadlineAndLatencyDuration(qos_);
    const auto result = code(typeSupport_.register_type(participant_.get()));
    if (result != RETCODE_OK) {
        failWithErrMsg(logger_, withCode("Failed to register a DDS type. Uri: " + uri_.string() +
                                             "type name" + typeSupport_.get_type_name(),
                                         result));
    }
    topicName_ = DdsUriHelper::topic(uri_, true);
}

inline void DdsEntityBase::checkState() const
{
    if (const auto state = state_.load(std::memory_order_acquire); state != EntityState::Initialized) {
        failNotOpen(state);
    }
}

inline void DdsEntityBase::failNotOpen(EntityState state) const
{
    if (state == EntityState::Closed) {
        failClosed();
    }
    fail<IllegalStateException>(logger_, "Entity is not INITIALIZED. Uri: " + uri_.string());
}

inline void DdsEntityBase::failClosed() const
{
    fail<IllegalStateException>(logger_, "Entity closed Uri: " + uri_.string());
}

inline std::pair<dds::Topic*, bool> DdsEntityBase::createTopic()
{
    TopicUses& uses = topicUses();
    const std::lock_guard lock(uses.mutex);
    if (dds::Topic* const existing = findTopic()) {
        uses.found(existing);
        return {existing, false};
    }
    dds::Topic* const topic = makeTopic();
    uses.made(topic);
    return {topic, true};
}

inline dds::Topic* DdsEntityBase::findTopic() const
{
    dds::TopicDescription* const description = participant_->lookup_topicdescription(topicName_);
    if (description == nullptr) {
        return nullptr;
    }
    auto* const topic = dynamic_cast<dds::Topic*>(description);
    if (topic == nullptr || topic->get_type_name() != typeSupport_.get_type_name()) {
        fail(logger_, "Failed to create topic with Uri: " + uri_.string());
    }
    return topic;
}

inline dds::Topic* DdsEntityBase::makeTopic() const
{
    const std::string typeName = typeSupport_.get_type_name();
    if (getQosLibraryName() != nullptr) {
        const auto profile = getProfileNameByProfileType(ProfileType::Topic, properties_);
        dds::Topic* const topic = participant_->create_topic_with_profile(topicName_, typeName, profile,
                                                                          nullptr, dds::StatusMask::all());
        if (topic == nullptr) {
            fail(logger_, "Failed to create topic with profile:" + profile + " Uri: " + uri_.string());
        }
        return topic;
    }
    dds::Topic* const topic =
        participant_->create_topic(topicName_, typeName, dds::TopicQos(), nullptr, dds::StatusMask::all());
    if (topic == nullptr) {
        fail(logger_, "Failed to create topic with Uri: " + uri_.string());
    }
    return topic;
}

inline dds::Publisher* DdsEntityBase::createPublisher()
{
    if (getQosLibraryName() != nullptr) {
        const auto profile = getProfileNameByProfileType(ProfileType::Publisher, properties_);
        dds::Publisher* const publisher =
            participant_->create_publisher_with_profile(profile, nullptr, dds::StatusMask::all());
        if (publisher == nullptr) {
            fail(logger_, "Failed to create publisher with profile:" + profile + " Uri: " + uri_.string());
        }
        return publisher;
    }
    dds::Publisher* const publisher =
        participant_->create_publisher(dds::PublisherQos(), nullptr, dds::StatusMask::all());
    if (publisher == nullptr) {
        fail(logger_, "Failed to create publisher for Uri: " + uri_.string());
    }
    return publisher;
}

inline dds::DataWriter* DdsEntityBase::createWriter(dds::Publisher& publisher, dds::Topic& topic,
                                                    const log4cplus::Logger& logger,
                                                    std::optional<std::int32_t> historyDepth) const
{
    if (getQosLibraryName() != nullptr) {
        const auto profile = getProfileNameByProfileType(ProfileType::Writer, properties_);
        dds::DataWriter* const writer = createWriterWithProfile(publisher, topic, profile);
        if (writer == nullptr) {
            fail(logger, "Failed to create writer with profile:" + profile);
        }
        return writer;
    }
    dds::DataWriterQos qos;
    if (deadlineMs_ > 0) {
        qos.deadline().period = deadlinePeriod();
    }
    qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
    qos.history().depth = historyDepth.value_or(qos.history().depth);
    qos.resource_limits().max_samples = 40000;
    qos.resource_limits().max_instances = 100;
    qos.endpoint().history_memory_policy = HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE;
    represent(qos, representation_); // may need another policy
    dds::DataWriter* const writer = publisher.create_datawriter(&topic, qos, nullptr, dds::StatusMask::all());
    if (writer == nullptr) {
        fail(logger, "Failed to create writer");
    }
    return writer;
}

inline dds::DataWriter* DdsEntityBase::createWriterWithProfile(dds::Publisher& publisher, dds::Topic& topic,
                                                               const std::string& profile) const
{
    const auto mask = dds::StatusMask::all();
    if (!representation_) {
        return publisher.create_datawriter_with_profile(&topic, profile, nullptr, mask);
    }
    dds::DataWriterQos qos; // a profile cannot say the representation
    if (code(publisher.get_datawriter_qos_from_profile(profile, qos)) != RETCODE_OK) {
        return nullptr;
    }
    represent(qos, representation_);
    return publisher.create_datawriter(&topic, qos, nullptr, mask);
}

inline dds::DataReader* DdsEntityBase::createReaderWithProfile(dds::Subscriber& subscriber, dds::Topic& topic,
                                                               const std::string& profile) const
{
    const auto mask = dds::StatusMask::all();
    if (!representation_) {
        return subscriber.create_datareader_with_profile(&topic, profile, nullptr, mask);
    }
    dds::DataReaderQos qos;
    if (code(subscriber.get_datareader_qos_from_profile(profile, qos)) != RETCODE_OK) {
        return nullptr;
    }
    represent(qos, representation_);
    return subscriber.create_datareader(&topic, qos, nullptr, mask);
}

inline std::shared_ptr<dds::Subscriber> DdsEntityBase::createSubscriber()
{
    dds::Subscriber* subscriber = nullptr;
    if (getQosLibraryName() != nullptr) {
        const auto profile = getProfileNameByProfileType(ProfileType::Subscriber, properties_);
        subscriber = participant_->create_subscriber_with_profile(profile, nullptr, dds::StatusMask::all());
        if (subscriber == nullptr) {
            fail(logger_, "Failed to create subscriber with profile:" + profile + " Uri: " + uri_.string());
        }
    } else {
        subscriber = participant_->create_subscriber(dds::SubscriberQos(), nullptr, dds::StatusMask::all());
        if (subscriber == nullptr) {
            fail(logger_, "Failed to create subscriber  Uri: " + uri_.string());
        }
    }
    return holdSubscriber(participant_, subscriber, logger_, "Failed to delete publisher");
}

inline const char* DdsEntityBase::getQosLibraryName() const
{
    const auto found = properties_.find("dds.qos.profile.library");
    return found == properties_.end() ? nullptr : found->second.c_str();
}

inline bool DdsEntityBase::isQosExceeded(const dds::SampleInfo& info) const
{
    return (latencyMs_ > 0 || deadlineMs_ > 0) && isTooOld(info);
}

inline bool DdsEntityBase::isTooOld(const dds::SampleInfo& info) const
{
    const WallTime now = WallTime::now();
    const WallTime sample{info.source_timestamp.seconds(), info.source_timestamp.nanosec()};
    return (latencyMs_ > 0 && isOlderThan(sample, latencyMs_, now)) ||
           (deadlineMs_ > 0 && isPastDeadline(sample, deadlineMs_, now));
}

inline std::pair<std::int32_t, std::int32_t>
DdsEntityBase::getDeadlineAndLatencyDuration(const qos::QoSList& qos)
{
    std::int32_t latencyMs = 0;
    std::int32_t deadlineMs = 0;
    for (const auto& entry : qos) {
        if (const auto* const latency = dynamic_cast<const qos::Latency*>(entry.get())) {
            latencyMs = latency->getDurationMs();
        } else if (const auto* const deadline = dynamic_cast<const qos::Deadline*>(entry.get())) {
            deadlineMs = deadline->getDurationMs();
        }
    }
    return {latencyMs, deadlineMs};
}

inline Duration_t DdsEntityBase::deadlinePeriod() const
{
    return {deadlineMs_ / 1000, static_cast<std::uint32_t>(deadlineMs_ % 1000)};
}

} // namespace ovra::plex::ps::internal
