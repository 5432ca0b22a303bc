// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <plex/Uri.hpp>
#include <plex/dds/DdsUriHelper.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/Topic.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <cstdint>
#include <string>

namespace plex::test
{

namespace dds = eprosima::fastdds::dds;

/// A participant of DDS's own, with readers or writers of one type on the topic of a test.
class PlainPeer
{
public:
    using Type = dds::TypeSupport;

    /// @param lease after which others give it up when it says nothing any more; 0: that of DDS.
    explicit PlainPeer(const ovra::plex::Uri& uri, const std::string& name = "plain", std::int32_t lease = 0)
    {
        auto* const factory = dds::DomainParticipantFactory::get_instance();
        dds::DomainParticipantQos qos;
        qos.name(name);
        if (lease > 0) {
            auto& discovery = qos.wire_protocol().builtin.discovery_config;
            discovery.leaseDuration = {lease, 0};
            discovery.leaseDuration_announcementperiod = {0, 250000000};
        }
        participant_ = factory->create_participant(ovra::plex::DdsUriHelper::domain(uri, {}), qos);
        topicName_ = ovra::plex::DdsUriHelper::topic(uri, true);
    }

    PlainPeer(const PlainPeer&) = delete;
    PlainPeer& operator=(const PlainPeer&) = delete;

    ~PlainPeer()
    {
        drop();
        dds::DomainParticipantFactory::get_instance()->delete_participant(participant_);
    }

    /// Deletes the readers and writers.
    void drop() { participant_->delete_contained_entities(); }

    void write(const dds::DataWriterQos& qos, const dds::PublisherQos& publisherQos = {},
               const Type& type = altAz())
    {
        participant_->create_publisher(publisherQos)->create_datawriter(topic(type), qos);
    }

    void read(const dds::DataReaderQos& qos, const dds::SubscriberQos& subscriberQos = {},
              const Type& type = altAz())
    {
        participant_->create_subscriber(subscriberQos)->create_datareader(topic(type), qos);
    }

    static Type altAz() { return Type(new generated::dds_::vexstubif::AltAzPubSubType()); }

private:
    dds::Topic* topic(const Type& type)
    {
        auto* const known = participant_->lookup_topicdescription(topicName_);
        if (known != nullptr) {
            return dynamic_cast<dds::Topic*>(known);
        }
        type.register_type(participant_);
        return participant_->create_topic(topicName_, type.get_type_name(), dds::TopicQos());
    }

    dds::DomainParticipant* participant_;
    std::string topicName_;
};

} // namespace plex::test
