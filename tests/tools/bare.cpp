// SPDX-License-Identifier: Apache-2.0
// A program of bare Fast DDS for the tests of the command plex: one endpoint of type vexstubif::AltAz.
//
//     bare write|read DOMAIN TOPIC [reliable|best-effort [PARTITION [PARTICIPANT]]]
//     bare crowd DOMAIN TOPIC PARTICIPANTS PAIRS
//
// A crowd's participants have so many writers and readers each, of topics TOPIC/0, TOPIC/1 …; it obeys
// nothing.
//
// Each line of its standard input is a command, each of its answers a line:
//
//     matched N        waits for so many endpoints on the other side: "matched"
//     publish N RATE   publishes values with alt 0, 1, … and az -0.5, so many a second:
//                      "published SECONDS", from the first to the last one
//     take N           waits for so many values: "ALT AZ" for each
//
// It ends with its standard input, or with an error where something does not come in time.
#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace fastdds = ovra::plex::fastdds;
using generated::dds_::vexstubif::AltAz;
using generated::dds_::vexstubif::AltAzPubSubType;
using Clock = std::chrono::steady_clock;

template <class Condition>
void waitFor(Condition condition)
{
    const auto end = Clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (Clock::now() > end) {
            throw std::runtime_error("it takes too long");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

template <class Entity>
Entity* made(Entity* entity)
{
    if (entity == nullptr) {
        throw std::runtime_error("DDS refuses to make an entity");
    }
    return entity;
}

/// The entities, deleted with their participant.
struct Entities {
    explicit Entities(unsigned domain, const std::string& name = "RTPSParticipant")
        : participant(
              made(dds::DomainParticipantFactory::get_instance()->create_participant(domain, named(name))))
    {
    }

    Entities(const Entities&) = delete;
    Entities& operator=(const Entities&) = delete;

    ~Entities()
    {
        participant->delete_contained_entities();
        dds::DomainParticipantFactory::get_instance()->delete_participant(participant);
    }

    static dds::DomainParticipantQos named(const std::string& name)
    {
        dds::DomainParticipantQos qos;
        qos.name(name.c_str());
        return qos;
    }

    dds::DomainParticipant* const participant;
    dds::DataWriter* writer = nullptr;
    dds::DataReader* reader = nullptr;
};

void create(Entities& entities, const std::vector<std::string>& arguments)
{
    const auto kind = arguments.size() > 4 && arguments[4] == "best-effort" ? dds::BEST_EFFORT_RELIABILITY_QOS
                                                                            : dds::RELIABLE_RELIABILITY_QOS;
    auto& participant = *entities.participant;
    const dds::TypeSupport type(new AltAzPubSubType());
    type.register_type(&participant);
    auto* const topic =
        made(participant.create_topic(arguments[3], type.get_type_name(), dds::TOPIC_QOS_DEFAULT));
    if (arguments[1] == "write") {
        dds::PublisherQos publisherQos;
        if (arguments.size() > 5) {
            publisherQos.partition().push_back(arguments[5].c_str());
        }
        dds::DataWriterQos qos;
        qos.reliability().kind = kind;
        qos.history().depth = 1000;
        entities.writer =
            made(made(participant.create_publisher(publisherQos))->create_datawriter(topic, qos));
    } else {
        dds::DataReaderQos qos;
        qos.reliability().kind = kind;
        qos.history().depth = 1000;
        entities.reader = made(
            made(participant.create_subscriber(dds::SUBSCRIBER_QOS_DEFAULT))->create_datareader(topic, qos));
    }
}

/// Waits for the end of the standard input with participants that have writers and readers.
void crowd(const std::vector<std::string>& arguments)
{
    const auto pairs = std::stoi(arguments.at(5));
    std::vector<std::unique_ptr<Entities>> all;
    for (int i = 0; i < std::stoi(arguments.at(4)); ++i) {
        auto& participant =
            *all.emplace_back(std::make_unique<Entities>(static_cast<unsigned>(std::stoul(arguments[2]))))
                 ->participant;
        const dds::TypeSupport type(new AltAzPubSubType());
        type.register_type(&participant);
        auto* const publisher = made(participant.create_publisher(dds::PUBLISHER_QOS_DEFAULT));
        auto* const subscriber = made(participant.create_subscriber(dds::SUBSCRIBER_QOS_DEFAULT));
        for (int pair = 0; pair < pairs; ++pair) {
            auto* const topic = made(participant.create_topic(arguments[3] + "/" + std::to_string(pair),
                                                              type.get_type_name(), dds::TOPIC_QOS_DEFAULT));
            made(publisher->create_datawriter(topic, dds::DATAWRITER_QOS_DEFAULT));
            made(subscriber->create_datareader(topic, dds::DATAREADER_QOS_DEFAULT));
        }
    }
    std::cout << "ready" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
    }
}

int matchedOf(const Entities& entities)
{
    if (entities.writer != nullptr) {
        dds::PublicationMatchedStatus status;
        entities.writer->get_publication_matched_status(status);
        return status.current_count;
    }
    dds::SubscriptionMatchedStatus status;
    entities.reader->get_subscription_matched_status(status);
    return status.current_count;
}

void publish(dds::DataWriter& writer, int count, double rate)
{
    const auto begin = Clock::now();
    auto last = begin;
    AltAz value;
    value.az(-0.5);
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_until(
            begin + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(i / rate)));
        value.alt(i);
        last = Clock::now();
        if (fastdds::code(writer.write(fastdds::asSample(&value), fastdds::InstanceHandle_t())) !=
            fastdds::RETCODE_OK) {
            throw std::runtime_error("a value is refused");
        }
    }
    std::cout << "published " << std::chrono::duration<double>(last - begin).count() << std::endl;
}

void take(dds::DataReader& reader, int count)
{
    waitFor([&] {
        AltAz value;
        dds::SampleInfo info;
        while (count > 0 && fastdds::code(reader.take_next_sample(&value, &info)) == fastdds::RETCODE_OK) {
            if (info.valid_data) {
                std::cout << value.alt() << ' ' << value.az() << std::endl;
                --count;
            }
        }
        return count == 0;
    });
}

void obey(const Entities& entities, const std::string& line)
{
    std::istringstream words(line);
    std::string verb;
    int count = 0;
    double rate = 0;
    words >> verb >> count >> rate;
    if (verb == "matched") {
        waitFor([&] { return matchedOf(entities) >= count; });
        std::cout << verb << std::endl;
    } else if (verb == "publish" && entities.writer != nullptr) {
        publish(*entities.writer, count, rate);
    } else if (verb == "take" && entities.reader != nullptr) {
        take(*entities.reader, count);
    } else {
        throw std::runtime_error("\"" + line + "\" is no command");
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const std::vector<std::string> arguments(argv, argv + argc);
        if (arguments.size() < 4) {
            throw std::runtime_error("arguments are missing");
        }
        if (arguments[1] == "crowd") {
            crowd(arguments);
            return EXIT_SUCCESS;
        }
        const auto domain = static_cast<unsigned>(std::stoul(arguments[2]));
        Entities entities(domain, arguments.size() > 6 ? arguments[6] : "RTPSParticipant");
        create(entities, arguments);
        std::cout << "ready" << std::endl;
        for (std::string line; std::getline(std::cin, line);) {
            obey(entities, line);
        }
    } catch (const std::exception& error) {
        std::cerr << "bare: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
