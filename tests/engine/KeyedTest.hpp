// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CallbackTest.hpp"

#include <keyed/dds/Factories.hpp>
#include <keyed/dds/SensorAdapter.hpp>

#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>

#include <string>
#include <vector>

namespace plex::test
{

using keyed::Sensor;
using SensorFilter = DataEventFilter<Sensor>;
using SensorEvent = ovra::plex::ps::DataEvent<Sensor>;
using SensorEvents = std::vector<std::shared_ptr<SensorEvent>>;
using SensorReader = ovra::plex::ps::Subscriber<Sensor>;
using SensorWriter = ovra::plex::ps::Publisher<Sensor>;

/// A sensor's reading in a form that is easy to compare.
struct Reading {
    std::string name;
    double value;

    friend bool operator==(const Reading&, const Reading&) = default;

    friend std::ostream& operator<<(std::ostream& out, const Reading& reading)
    {
        return out << reading.name << " = " << reading.value;
    }
};

/// A vocabulary for tests of a type whose samples belong to instances, by the sensors' names.
class KeyedTest : public CallbackTest
{
protected:
    std::unique_ptr<SensorWriter> sensorPublisher(const QoSList& qos = {}, const Properties& properties = {})
    {
        return std::unique_ptr<SensorWriter>(
            generated_dds_Publisher_keyed_Sensor(plex, uri, qos, properties));
    }

    std::unique_ptr<SensorReader> sensorSubscriber(const QoSList& qos = {})
    {
        return std::unique_ptr<SensorReader>(generated_dds_Subscriber_keyed_Sensor(plex, uri, qos, {}));
    }

    std::unique_ptr<ovra::plex::ps::MrvSubscriber<Sensor>> mrvSensorSubscriber()
    {
        return std::unique_ptr<ovra::plex::ps::MrvSubscriber<Sensor>>(
            generated_dds_MrvSubscriber_keyed_Sensor(plex, uri, {}, {}));
    }

    static std::unique_ptr<Sensor> sensor(const std::string& name, double value = 0.0)
    {
        std::unique_ptr<Sensor> result(generated_dds_DataEntity_keyed_Sensor());
        result->setName(name);
        result->setValue(value);
        return result;
    }

    static void publish(ovra::plex::ps::InstancePublisher<Sensor>& publisher, const std::string& name,
                        double value = 0.0)
    {
        publisher.publish(*sensor(name, value), 0ms);
    }

    /// A filter that names an instance.
    static SensorFilter of(const std::string& name, InstanceState state = InstanceState::Any,
                           std::set<InstanceEvent> events = {})
    {
        return SensorFilter(state, std::move(events), sensor(name));
    }

    static SensorFilter any() { return SensorFilter(InstanceState::Any); }

    static Reading reading(const Sensor& value) { return {std::string(value.getName()), value.getValue()}; }

    static std::vector<Reading> readings(const std::vector<std::shared_ptr<Sensor>>& values)
    {
        std::vector<Reading> result;
        for (const auto& value : values) {
            result.push_back(reading(*value));
        }
        return result;
    }

    static std::vector<Reading> readings(const SensorEvents& events)
    {
        std::vector<Reading> result;
        for (const auto& event : events) {
            result.push_back(reading(*event->getData()));
        }
        return result;
    }

    /// A callback that remembers what it is told.
    static SensorReader::Callback hearing(std::vector<Reading>& heard)
    {
        return [&heard](SensorReader&, const SensorEvent& event) {
            heard.push_back(reading(*event.getData()));
        };
    }

    /// A writer of DDS's own on the topic of a test's sensors, which must exist. It ends instances, which
    /// publishers never do.
    class PlainWriter
    {
    public:
        explicit PlainWriter(KeyedTest& test) : PlainWriter(test, test.participant()) {}

        /// A writer of another participant, in which the topic must exist.
        PlainWriter(KeyedTest& test, std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant)
            : participant_(std::move(participant))
        {
            namespace dds = eprosima::fastdds::dds;
            auto* const topic = dynamic_cast<dds::Topic*>(
                participant_->lookup_topicdescription(ovra::plex::DdsUriHelper::topic(test.uri, true)));
            publisher_ = participant_->create_publisher(dds::PublisherQos());
            dds::DataWriterQos qos;
            qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
            qos.writer_data_lifecycle().autodispose_unregistered_instances = false;
            writer_ = publisher_->create_datawriter(topic, qos);
        }

        PlainWriter(const PlainWriter&) = delete;
        PlainWriter& operator=(const PlainWriter&) = delete;

        ~PlainWriter()
        {
            publisher_->delete_datawriter(writer_);
            participant_->delete_publisher(publisher_);
        }

        void write(const std::string& name, double value = 0.0) { writer_->write(&wire(name, value)); }

        void dispose(const std::string& name)
        {
            writer_->dispose(&wire(name), eprosima::fastdds::dds::HANDLE_NIL);
        }

        void unregister(const std::string& name)
        {
            writer_->unregister_instance(&wire(name), eprosima::fastdds::dds::HANDLE_NIL);
        }

    private:
        generated::dds_::keyed::Sensor& wire(const std::string& name, double value = 0.0)
        {
            wire_.name(name);
            wire_.value(value);
            return wire_;
        }

        const std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant_;
        eprosima::fastdds::dds::Publisher* publisher_;
        eprosima::fastdds::dds::DataWriter* writer_;
        generated::dds_::keyed::Sensor wire_;
    };
};

} // namespace plex::test
