// SPDX-License-Identifier: Apache-2.0
// A publisher or subscriber of Cyclone DDS for one topic, reliable and transient-local. Numbers are given and
// printed as the 16 hexadecimal digits of their bits, those of one value on one line.
//
//     peer publish DOMAIN TOPIC TYPE REPRESENTATION NUMBER…    ends when a reader has acknowledged all values
//     peer subscribe DOMAIN TOPIC TYPE REPRESENTATION COUNT    ends after so many values
//
// REPRESENTATION is xcdr1, xcdr2, or default for what the peer chooses. An endpoint on the other side that
// does not fit ends it too: it prints "incompatible data representation", or the number of the policy that
// does not fit.
#include "Cyclone.hpp"
#include "Types.h"

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

using namespace plex::test;

namespace
{

/// What the command line asks for.
struct Task {
    bool publishes;
    dds_domainid_t domain;
    const char* topic;
    const dds_topic_descriptor_t* type;
    std::string representation;
    std::vector<const char*> rest;

    /// Values of all types are one or more numbers of 64 bits.
    std::size_t numbers() const { return type->m_size / sizeof(std::uint64_t); }
};

Task parse(const std::vector<const char*>& arguments)
{
    if (arguments.size() < 7) {
        throw std::runtime_error("arguments are missing");
    }
    return {std::string(arguments[1]) == "publish",
            static_cast<dds_domainid_t>(std::strtoul(arguments[2], nullptr, 10)),
            arguments[3],
            std::string(arguments[4]) == "AltAz" ? &generated_dds__vexstubif_AltAz_desc
                                                 : &generated_dds__vexstubif_DomeTemperature_desc,
            arguments[5],
            {arguments.begin() + 6, arguments.end()}};
}

bool isIncompatible(std::uint32_t count, std::uint32_t policy)
{
    if (count > 0 && policy == DDS_DATA_REPRESENTATION_QOS_POLICY_ID) {
        std::printf("incompatible data representation\n");
    } else if (count > 0) {
        std::printf("incompatible policy %" PRIu32 "\n", policy);
    }
    return count > 0;
}

void publish(const Task& task, dds_entity_t participant, dds_entity_t topic, const dds_qos_t* qos)
{
    const dds_entity_t writer =
        checked(dds_create_writer(participant, topic, qos, nullptr), "create a writer");
    const Watch watch(participant, writer,
                      DDS_PUBLICATION_MATCHED_STATUS | DDS_OFFERED_INCOMPATIBLE_QOS_STATUS);
    watch.wait();
    dds_offered_incompatible_qos_status_t status{};
    checked(dds_get_offered_incompatible_qos_status(writer, &status), "get a status");
    if (isIncompatible(status.total_count, status.last_policy_id)) {
        return;
    }
    std::vector<std::uint64_t> value;
    for (const char* const number : task.rest) {
        value.push_back(std::strtoull(number, nullptr, 16));
        if (value.size() == task.numbers()) {
            checked(dds_write(writer, value.data()), "write");
            value.clear();
        }
    }
    checked(dds_wait_for_acks(writer, patience), "wait for acknowledgments");
}

void subscribe(const Task& task, dds_entity_t participant, dds_entity_t topic, const dds_qos_t* qos)
{
    const dds_entity_t reader =
        checked(dds_create_reader(participant, topic, qos, nullptr), "create a reader");
    const Watch watch(participant, reader, DDS_DATA_AVAILABLE_STATUS | DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS);
    unsigned long missing = std::strtoul(task.rest.front(), nullptr, 10);
    while (missing > 0) {
        watch.wait();
        dds_requested_incompatible_qos_status_t status{};
        checked(dds_get_requested_incompatible_qos_status(reader, &status), "get a status");
        if (isIncompatible(status.total_count, status.last_policy_id)) {
            return;
        }
        std::array<std::uint64_t, 2> value{}; // no type has more
        void* sample = value.data();
        dds_sample_info_t info{};
        while (checked(dds_take(reader, &sample, &info, 1, 1), "take") > 0) {
            for (std::size_t i = 0; info.valid_data && i < task.numbers(); ++i) {
                std::printf("%016" PRIx64 "%s", value[i], i + 1 < task.numbers() ? " " : "\n");
            }
            missing -= info.valid_data ? 1 : 0;
        }
        std::fflush(stdout);
    }
}

void run(const Task& task)
{
    const dds_entity_t participant =
        checked(dds_create_participant(task.domain, nullptr, nullptr), "create a participant");
    dds_qos_t* const qos = makeQos(task.representation);
    const dds_entity_t topic =
        checked(dds_create_topic(participant, task.type, task.topic, qos, nullptr), "create a topic");
    (task.publishes ? publish : subscribe)(task, participant, topic, qos);
    dds_delete_qos(qos);
    checked(dds_delete(participant), "delete the participant");
}

} // namespace

int main(int argc, char** argv)
{
    try {
        run(parse({argv, argv + argc}));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "peer: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
