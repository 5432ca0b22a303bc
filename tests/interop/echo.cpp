// SPDX-License-Identifier: Apache-2.0
// Cyclone DDS reads values of one topic and sends them back on another one, whose name ends in "_back". For
// each value it prints
//
//     received HEX    the payload as it came
//     read TEXT       the value as the peer understands it
//     sent HEX        the payload as the peer writes that value
//
//     echo DOMAIN TOPIC TYPE REPRESENTATION COUNT    ends when a reader has acknowledged so many values
#include "Cyclone.hpp"
#include "Kinds.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dds/ddsi/ddsi_serdata.h>
#include <map>
#include <memory>
#include <vector>

using namespace plex::test;

namespace
{

const std::map<std::string, const dds_topic_descriptor_t*> types{{"Plain", &kinds_Plain_desc},
                                                                 {"Frozen", &kinds_Frozen_desc},
                                                                 {"Growing", &kinds_Growing_desc},
                                                                 {"Loose", &kinds_Loose_desc}};

struct Unref {
    void operator()(ddsi_serdata* sample) const { ddsi_serdata_unref(sample); }
};

using Serialized = std::unique_ptr<ddsi_serdata, Unref>;

/// The next sample of a reader that has a value; empty when there is none.
Serialized take(dds_entity_t reader)
{
    ddsi_serdata* sample = nullptr;
    dds_sample_info_t info{};
    while (checked(dds_takecdr(reader, &sample, 1, &info, DDS_ANY_STATE), "take") > 0) {
        Serialized result(sample);
        if (info.valid_data) {
            return result;
        }
    }
    return {};
}

void printBytes(const char* what, const ddsi_serdata& sample)
{
    std::vector<unsigned char> bytes(ddsi_serdata_size(&sample));
    ddsi_serdata_to_ser(&sample, 0, bytes.size(), bytes.data());
    std::printf("%s ", what);
    for (const unsigned char byte : bytes) {
        std::printf("%02x", byte);
    }
    std::printf("\n");
}

void printValue(const ddsi_serdata& sample)
{
    std::array<char, 4096> text{};
    ddsi_serdata_print(&sample, text.data(), text.size());
    std::printf("read %s\n", text.data());
}

/// A value in the structure that the peer's compiler makes for a type.
class Value
{
public:
    Value(const dds_topic_descriptor_t& type, const ddsi_serdata& sample)
        : type_(type)
        , memory_(dds_alloc(type.m_size))
    {
        std::memset(memory_, 0, type.m_size);
        if (!ddsi_serdata_to_sample(&sample, memory_, nullptr, nullptr)) {
            throw std::runtime_error("the peer does not read the value");
        }
    }

    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    ~Value() { dds_sample_free(memory_, &type_, DDS_FREE_ALL); }

    const void* memory() const { return memory_; }

private:
    const dds_topic_descriptor_t& type_;
    void* const memory_;
};

/// The entities of an exchange. The peer's own reader of what it sends shows how that is encoded.
class Echo
{
public:
    Echo(dds_domainid_t domain, const std::string& topic, const dds_topic_descriptor_t& type,
         const std::string& representation)
        : type_(type)
        , participant_(checked(dds_create_participant(domain, nullptr, nullptr), "create a participant"))
        , qos_(makeQos(representation))
        , reader_(
              checked(dds_create_reader(participant_, makeTopic(topic), qos_, nullptr), "create a reader"))
        , back_(makeTopic(topic + "_back"))
        , writer_(checked(dds_create_writer(participant_, back_, qos_, nullptr), "create a writer"))
        , own_(checked(dds_create_reader(participant_, back_, qos_, nullptr), "create a reader"))
    {
    }

    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

    ~Echo()
    {
        dds_delete_qos(qos_);
        dds_delete(participant_);
    }

    void run(unsigned long count) const
    {
        waitForSubscriber();
        const Watch watch(participant_, reader_, DDS_DATA_AVAILABLE_STATUS);
        while (count > 0) {
            watch.wait();
            for (Serialized sample = take(reader_); sample; sample = take(reader_)) {
                sendBack(*sample);
                --count;
            }
        }
        checked(dds_wait_for_acks(writer_, patience), "wait for acknowledgments");
    }

private:
    dds_entity_t makeTopic(const std::string& name) const
    {
        return checked(dds_create_topic(participant_, &type_, name.c_str(), qos_, nullptr), "create a topic");
    }

    /// Waits for the one of the other side, besides the own one.
    void waitForSubscriber() const
    {
        const Watch watch(participant_, writer_, DDS_PUBLICATION_MATCHED_STATUS);
        dds_publication_matched_status_t status{};
        while (status.current_count < 2) {
            watch.wait();
            checked(dds_get_publication_matched_status(writer_, &status), "get a status");
        }
    }

    void sendBack(const ddsi_serdata& sample) const
    {
        printBytes("received", sample);
        printValue(sample);
        const Value value(type_, sample);
        checked(dds_write(writer_, value.memory()), "write");
        const Serialized sent = take(own_);
        if (!sent) {
            throw std::runtime_error("the peer does not hear itself");
        }
        printBytes("sent", *sent);
    }

    const dds_topic_descriptor_t& type_;
    const dds_entity_t participant_;
    dds_qos_t* const qos_;
    const dds_entity_t reader_;
    const dds_entity_t back_;
    const dds_entity_t writer_;
    const dds_entity_t own_;
};

} // namespace

int main(int argc, char** argv)
{
    try {
        const std::vector<std::string> arguments(argv, argv + argc);
        const Echo echo(static_cast<dds_domainid_t>(std::stoul(arguments.at(1))), arguments.at(2),
                        *types.at(arguments.at(3)), arguments.at(4));
        echo.run(std::stoul(arguments.at(5)));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "echo: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
