// SPDX-License-Identifier: Apache-2.0
#include "QosSettings.hpp"
#include "TopicUses.hpp"
#include "src/profiles/ProfileText.hpp"

#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/ProfileName.hpp>
#include <plex/ps/internal/DdsEntityBase.hpp>
#include <plex/ps/internal/Deletions.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/Settings.hpp>

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/publisher/qos/PublisherQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>
#include <fastdds/dds/subscriber/qos/SubscriberQos.hpp>
#include <fastdds/dds/topic/qos/TopicQos.hpp>

#include <tuple>

namespace ovra::plex::ps::internal
{

namespace
{

using Profile = const std::string&;

const dds::StatusMask& allStatuses()
{
    static const dds::StatusMask mask = dds::StatusMask::all();
    return mask;
}

/// How the failure to make an entity is worded.
struct CreationTexts {
    std::string withProfile;     ///< before the profile's name
    std::string behindProfile;   ///< behind it
    std::string withoutProfiles; ///< the whole text
};

/// Makes an entity: from the profile of its kind where profiles are used, else with QoS of our own.
/// @throws PlexException when DDS refuses, logged.
template <class MakeFromProfile, class Make>
auto* create(const Plex::Properties& properties, ProfileType kind, const log4cplus::Logger& logger,
             const CreationTexts& texts, MakeFromProfile makeFromProfile, Make make)
{
    if (properties.contains("dds.qos.profile.library")) {
        const auto profile = getProfileNameByProfileType(kind, properties);
        auto* const entity = makeFromProfile(profile);
        if (entity == nullptr) {
            fail(logger, texts.withProfile + profile + texts.behindProfile +
                             profiles::hintAt(profile, profileNames(properties, kind)));
        }
        return entity;
    }
    auto* const entity = make();
    if (entity == nullptr) {
        fail(logger, texts.withoutProfiles);
    }
    return entity;
}

dds::Subscriber* createSubscriber(dds::DomainParticipant& participant, const Plex::Properties& properties,
                                  const log4cplus::Logger& logger, const CreationTexts& texts)
{
    return create(
        properties, ProfileType::Subscriber, logger, texts,
        [&](Profile profile) {
            return participant.create_subscriber_with_profile(profile, nullptr, allStatuses());
        },
        [&] { return participant.create_subscriber(dds::SubscriberQos(), nullptr, allStatuses()); });
}

} // namespace

DdsEntityBase::DdsEntityBase(Uri uri, qos::QoSList qos, Plex::Properties properties,
                             ParticipantPointer participant, dds::TypeSupport typeSupport, bool hasKey)
    : uri_(std::move(uri))
    , qos_(std::move(qos))
    , properties_(std::move(properties))
    , participant_(watched(std::move(participant)))
    , typeSupport_(std::move(typeSupport))
{
    DdsUriHelper::checkUri(uri_, true);
    if (!DdsUriHelper::isPubSubUri(uri_)) {
        fail(logger_, "Uri " + uri_.string() + " is not DDS PubSub profile");
    }
    representation_ = dataRepresentation(properties_);
    std::tie(latencyMs_, deadlineMs_) = getDeadlineAndLatencyDuration(qos_);
    checkModule(hasKey);
    const auto result = fastdds::code(typeSupport_.register_type(participant_.get()));
    if (result != fastdds::RETCODE_OK) {
        failWithErrMsg(logger_, withCode("Failed to register a DDS type. Uri: " + uri_.string() +
                                             "type name" + typeSupport_.get_type_name(),
                                         result));
    }
    topicName_ = DdsUriHelper::topic(uri_, true);
}

DdsEntityBase::~DdsEntityBase() = default;

/// Notices a module that contradicts itself while it can still be said in a sentence.
void DdsEntityBase::checkModule(bool hasKey) const
{
    fastdds::TopicDataType& type = topicDataType();
    const std::string name = type.getName();
    if (type.m_isGetKeyDefined != hasKey) {
        fail(logger_, "The module of type " + name +
                          " contradicts itself: by hasKey() of its values the type " +
                          (hasKey ? "has a key" : "has no key") + ", by its topic data type the opposite");
    }
    const auto free = [&type](void* sample) {
        type.deleteData(sample);
    };
    const std::unique_ptr<void, decltype(free)> sample(type.createData(), free);
    for (const auto representation : {dds::XCDR_DATA_REPRESENTATION, dds::XCDR2_DATA_REPRESENTATION}) {
        const auto size = type.getSerializedSizeProvider(sample.get(), representation)();
        if (size > type.m_typeSize) {
            fail(logger_, "The module of type " + name + " states a largest payload of " +
                              std::to_string(type.m_typeSize) + " bytes, but a default value takes " +
                              std::to_string(size));
        }
    }
    fastdds::InstanceHandle_t handle;
    if (hasKey && !type.getKey(sample.get(), &handle, false)) {
        fail(logger_,
             "The module of type " + name +
                 " can not compute the key of a default value; is the largest key that it states too "
                 "small?");
    }
}

fastdds::TopicDataType& DdsEntityBase::topicDataType() const
{
    return static_cast<fastdds::TopicDataType&>(*typeSupport_); // as every module's is
}

void DdsEntityBase::failNotOpen(EntityState state) const
{
    if (state == EntityState::Closed) {
        failClosed();
    }
    fail<IllegalStateException>(logger_, "Entity is not INITIALIZED. Uri: " + uri_.string());
}

void DdsEntityBase::failClosed() const
{
    fail<IllegalStateException>(logger_, "Entity closed Uri: " + uri_.string());
}

std::pair<dds::Topic*, bool> DdsEntityBase::createTopic()
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

dds::Topic* DdsEntityBase::findTopic() const
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

dds::Topic* DdsEntityBase::makeTopic() const
{
    const std::string typeName = typeSupport_.get_type_name();
    const std::string where = " Uri: " + uri_.string();
    return create(
        properties_, ProfileType::Topic, logger_,
        {"Failed to create topic with profile:", where, "Failed to create topic with" + where},
        [&](Profile profile) {
            return participant_->create_topic_with_profile(topicName_, typeName, profile, nullptr,
                                                           allStatuses());
        },
        [&] {
            return participant_->create_topic(topicName_, typeName, dds::TopicQos(), nullptr, allStatuses());
        });
}

dds::Publisher* DdsEntityBase::createPublisher()
{
    const std::string where = " Uri: " + uri_.string();
    return create(
        properties_, ProfileType::Publisher, logger_,
        {"Failed to create publisher with profile:", where, "Failed to create publisher for" + where},
        [&](Profile profile) {
            return participant_->create_publisher_with_profile(profile, nullptr, allStatuses());
        },
        [&] { return participant_->create_publisher(dds::PublisherQos(), nullptr, allStatuses()); });
}

std::shared_ptr<dds::Subscriber> DdsEntityBase::createSubscriber()
{
    const std::string where = " Uri: " + uri_.string();
    auto* const subscriber = internal::createSubscriber(
        *participant_, properties_, logger_,
        {"Failed to create subscriber with profile:", where, "Failed to create subscriber " + where});
    return holdSubscriber(participant_, subscriber, logger_, "Failed to delete publisher");
}

dds::Subscriber* DdsEntityBase::createReadersSubscriber(const log4cplus::Logger& logger) const
{
    return internal::createSubscriber(
        *participant_, properties_, logger,
        {"Failed to create subscriber with profile:", "", "Failed to create subscriber"});
}

QosWishes DdsEntityBase::wishes() const
{
    const auto& type = topicDataType();
    return {deadlineMs_, representation_, fastdds::mayPreallocate(type.is_bounded(), type.m_typeSize),
            type.m_isGetKeyDefined};
}

dds::DataWriter* DdsEntityBase::createWriter(dds::Publisher& publisher, dds::Topic& topic,
                                             const log4cplus::Logger& logger,
                                             std::optional<std::int32_t> historyDepth) const
{
    const EndpointLock lock;
    return create(
        properties_, ProfileType::Writer, logger,
        {"Failed to create writer with profile:", "", "Failed to create writer"},
        [&](Profile profile) { return createWriterWithProfile(publisher, topic, profile); },
        [&] {
            dds::DataWriterQos qos;
            applyLayers(writerLayers(wishes(), historyDepth), qos);
            return publisher.create_datawriter(&topic, qos, nullptr, allStatuses());
        });
}

dds::DataWriter* DdsEntityBase::createWriterWithProfile(dds::Publisher& publisher, dds::Topic& topic,
                                                        const std::string& profile) const
{
    if (!representation_) {
        return publisher.create_datawriter_with_profile(&topic, profile, nullptr, allStatuses());
    }
    dds::DataWriterQos qos;
    if (fastdds::code(publisher.get_datawriter_qos_from_profile(profile, qos)) != fastdds::RETCODE_OK) {
        return nullptr;
    }
    applyLayers(layersOnWriterProfile(wishes()), qos);
    return publisher.create_datawriter(&topic, qos, nullptr, allStatuses());
}

dds::DataReader* DdsEntityBase::createReader(dds::Subscriber& subscriber, dds::Topic& topic,
                                             const log4cplus::Logger& logger) const
{
    const EndpointLock lock;
    return create(
        properties_, ProfileType::Reader, logger,
        {"Failed to create reader with profile:", "", "Failed to create reader"},
        [&](Profile profile) { return createReaderWithProfile(subscriber, topic, profile); },
        [&] {
            dds::DataReaderQos qos;
            applyLayers(readerLayers(wishes()), qos);
            return subscriber.create_datareader(&topic, qos, nullptr, allStatuses());
        });
}

dds::DataReader* DdsEntityBase::createReaderWithProfile(dds::Subscriber& subscriber, dds::Topic& topic,
                                                        const std::string& profile) const
{
    if (!representation_) {
        return subscriber.create_datareader_with_profile(&topic, profile, nullptr, allStatuses());
    }
    dds::DataReaderQos qos;
    if (fastdds::code(subscriber.get_datareader_qos_from_profile(profile, qos)) != fastdds::RETCODE_OK) {
        return nullptr;
    }
    applyLayers(layersOnReaderProfile(wishes()), qos);
    return subscriber.create_datareader(&topic, qos, nullptr, allStatuses());
}

dds::DataReader* DdsEntityBase::createMostRecentReader(dds::Subscriber& subscriber, dds::Topic& topic) const
{
    const dds::StatusMask communicationStatuses(0x7FE7);
    dds::DataReaderQos qos;
    applyLayers(mostRecentReaderLayers(wishes()), qos);
    const EndpointLock lock;
    return subscriber.create_datareader(&topic, qos, nullptr, communicationStatuses);
}

const char* DdsEntityBase::getQosLibraryName() const
{
    const auto found = properties_.find("dds.qos.profile.library");
    return found == properties_.end() ? nullptr : found->second.c_str();
}

std::pair<std::int32_t, std::int32_t> DdsEntityBase::getDeadlineAndLatencyDuration(const qos::QoSList& qos)
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

} // namespace ovra::plex::ps::internal
