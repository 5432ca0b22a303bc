// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Profiles.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/core/LoanableSequence.hpp>
#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/DataReaderListener.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

/// Fast DDS as one uses it without the binding: the yardstick.
namespace plex::bench
{

namespace dds = eprosima::fastdds::dds;
namespace fastdds = ovra::plex::fastdds;

using ParticipantPointer = std::shared_ptr<dds::DomainParticipant>;
using WireAltAz = generated::dds_::vexstubif::AltAz;

/// Refuses to go on with a null pointer.
template <class Entity>
Entity* made(Entity* entity, const char* what)
{
    if (entity == nullptr) {
        throw std::runtime_error(std::string("Fast DDS made no ") + what);
    }
    return entity;
}

/// A use of a topic of positions, which is made where it is not there yet.
class BareTopic
{
public:
    BareTopic(ParticipantPointer participant, const std::string& name, const Profiles& profiles)
        : participant_(std::move(participant))
    {
        const dds::TypeSupport type(new generated::dds_::vexstubif::AltAzPubSubType());
        type.register_type(participant_.get());
        topic_ = dynamic_cast<dds::Topic*>(participant_->lookup_topicdescription(name));
        if (topic_ == nullptr && !profiles.areUsed()) {
            topic_ = participant_->create_topic(name, type.get_type_name(), dds::TopicQos());
        } else if (topic_ == nullptr) {
            topic_ = participant_->create_topic_with_profile(name, type.get_type_name(),
                                                             profiles.library + ".topic");
        }
        made(topic_, "topic");
    }

    BareTopic(const BareTopic&) = delete;
    BareTopic& operator=(const BareTopic&) = delete;

    ~BareTopic() { participant_->delete_topic(topic_); } // refused while others use it

    dds::DomainParticipant& participant() const { return *participant_; }

    dds::Topic* get() const { return topic_; }

private:
    const ParticipantPointer participant_;
    dds::Topic* topic_;
};

/// A writer with the quality of service that the binding gives its own.
class BareWriter
{
public:
    BareWriter(ParticipantPointer participant, const std::string& topic, const Profiles& profiles = {})
        : topic_(std::move(participant), topic, profiles)
    {
        if (profiles.areUsed()) {
            publisher_ =
                made(topic_.participant().create_publisher_with_profile(profiles.library + ".publisher"),
                     "publisher");
            writer_ =
                made(publisher_->create_datawriter_with_profile(topic_.get(), profiles.library + ".writer"),
                     "writer");
            return;
        }
        dds::DataWriterQos qos;
        qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
        qos.history().depth = 1000;
        qos.resource_limits().max_samples = 40000;
        qos.resource_limits().max_instances = 100;
        qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE;
        publisher_ = made(topic_.participant().create_publisher(dds::PublisherQos()), "publisher");
        writer_ = made(publisher_->create_datawriter(topic_.get(), qos), "writer");
    }

    BareWriter(const BareWriter&) = delete;
    BareWriter& operator=(const BareWriter&) = delete;

    ~BareWriter()
    {
        publisher_->delete_datawriter(writer_);
        topic_.participant().delete_publisher(publisher_);
    }

    bool write(const WireAltAz& value)
    {
        return fastdds::code(writer_->write(fastdds::asSample(&value), dds::HANDLE_NIL)) ==
               fastdds::RETCODE_OK;
    }

    bool write(const WireAltAz& value, const fastdds::Time_t& sourceTime)
    {
        return fastdds::code(writer_->write_w_timestamp(fastdds::asSample(&value), dds::HANDLE_NIL,
                                                        sourceTime)) == fastdds::RETCODE_OK;
    }

private:
    const BareTopic topic_;
    dds::Publisher* publisher_;
    dds::DataWriter* writer_;
};

/// A reader with the quality of service that the binding gives its own.
class BareReader
{
public:
    using Samples = dds::LoanableSequence<WireAltAz>;

    BareReader(ParticipantPointer participant, const std::string& topic, const Profiles& profiles = {},
               dds::DataReaderListener* listener = nullptr)
        : topic_(std::move(participant), topic, profiles)
    {
        if (profiles.areUsed()) {
            subscriber_ =
                made(topic_.participant().create_subscriber_with_profile(profiles.library + ".subscriber"),
                     "subscriber");
            reader_ = made(
                subscriber_->create_datareader_with_profile(topic_.get(), profiles.ofReaders(), listener),
                "reader");
            return;
        }
        dds::DataReaderQos qos;
        qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
        qos.history().depth = 1000;
        qos.resource_limits().max_samples = 40000;
        qos.resource_limits().max_instances = 100;
        qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE;
        subscriber_ = made(topic_.participant().create_subscriber(dds::SubscriberQos()), "subscriber");
        reader_ = made(subscriber_->create_datareader(topic_.get(), qos, listener), "reader");
    }

    BareReader(const BareReader&) = delete;
    BareReader& operator=(const BareReader&) = delete;

    ~BareReader()
    {
        subscriber_->delete_datareader(reader_);
        topic_.participant().delete_subscriber(subscriber_);
    }

    /// Takes samples on loan. @returns whether there were any.
    bool take(Samples& samples, dds::SampleInfoSeq& infos, std::int32_t limit)
    {
        return fastdds::code(reader_->take(samples, infos, limit)) == fastdds::RETCODE_OK;
    }

    void giveBack(Samples& samples, dds::SampleInfoSeq& infos) { reader_->return_loan(samples, infos); }

    /// Takes and forgets everything.
    void drain()
    {
        Samples samples;
        dds::SampleInfoSeq infos;
        while (take(samples, infos, dds::LENGTH_UNLIMITED)) {
            giveBack(samples, infos);
        }
    }

private:
    const BareTopic topic_;
    dds::Subscriber* subscriber_;
    dds::DataReader* reader_;
};

/// Takes each sample in place as it arrives, and hands it on.
template <class Handler>
class BareListener final : public dds::DataReaderListener
{
public:
    explicit BareListener(std::remove_const_t<Handler> handler) : handler_(std::move(handler)) {}

    void on_data_available(dds::DataReader* reader) override
    {
        WireAltAz value;
        dds::SampleInfo info;
        while (fastdds::code(reader->take_next_sample(&value, &info)) == fastdds::RETCODE_OK) {
            if (info.valid_data) {
                handler_(value);
            }
        }
    }

private:
    Handler handler_;
};

} // namespace plex::bench
