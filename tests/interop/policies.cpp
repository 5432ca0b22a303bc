// SPDX-License-Identifier: Apache-2.0
// An endpoint of Cyclone DDS on a topic of positions or temperatures, with policies that fit ours, or with
// one that does not:
//
//     policies DOMAIN TOPIC TYPE      reads   "fit NAME", "misfit NAME"   a mismatch of Mismatches.hpp, by
//     its name
//                                             "judge"                     waits until it matches, or refuses
//                                             "drop"                      deletes the endpoint
//                                     prints  "matches", "refuses POLICY"
//
// It ends with its standard input.
#include "Cyclone.hpp"
#include "Types.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <string>

using namespace plex::test;

namespace
{

using Change = void (*)(dds_qos_t*);

template <dds_data_representation_id_t id>
void represent(dds_qos_t* qos)
{
    const dds_data_representation_id_t list = id;
    dds_qset_data_representation(qos, 1, &list);
}

/// What a mismatch changes of what fits.
const std::map<std::string, Change> changes{
    {"ReliabilityOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_reliability(qos, DDS_RELIABILITY_BEST_EFFORT, 0);
     }},
    {"ReliabilityAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, 0);
     }},
    {"DurabilityOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_durability(qos, DDS_DURABILITY_VOLATILE);
     }},
    {"DurabilityAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_durability(qos, DDS_DURABILITY_TRANSIENT_LOCAL);
     }},
    {"DeadlineOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_deadline(qos, DDS_SECS(2));
     }},
    {"DeadlineAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_deadline(qos, DDS_MSECS(500));
     }},
    {"LatencyBudgetOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_latency_budget(qos, DDS_SECS(2));
     }},
    {"LatencyBudgetAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_latency_budget(qos, 0);
     }},
    {"LivelinessOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_liveliness(qos, DDS_LIVELINESS_AUTOMATIC, DDS_SECS(5));
     }},
    {"LivelinessAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_liveliness(qos, DDS_LIVELINESS_MANUAL_BY_TOPIC, DDS_INFINITY);
     }},
    {"LeaseOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_liveliness(qos, DDS_LIVELINESS_MANUAL_BY_TOPIC, DDS_SECS(10));
     }},
    {"LeaseAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_liveliness(qos, DDS_LIVELINESS_AUTOMATIC, DDS_SECS(3));
     }},
    {"OwnershipOfferedToUs",
     [](dds_qos_t* qos) {
         dds_qset_ownership(qos, DDS_OWNERSHIP_SHARED);
     }},
    {"OwnershipAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_ownership(qos, DDS_OWNERSHIP_EXCLUSIVE);
     }},
    {"DestinationOrderAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_destination_order(qos, DDS_DESTINATIONORDER_BY_SOURCE_TIMESTAMP);
     }},
    {"PresentationAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_presentation(qos, DDS_PRESENTATION_TOPIC, true, true);
     }},
    {"PartitionOfferedToUs",
     [](dds_qos_t* qos) {
         std::array<const char*, 2> names{"south", "s*"};
         dds_qset_partition(qos, names.size(), names.data());
     }},
    {"PartitionAskedOfUs",
     [](dds_qos_t* qos) {
         dds_qset_partition1(qos, "north*");
     }},
    {"RepresentationOfferedToUs", represent<DDS_DATA_REPRESENTATION_XCDR2>},
    {"RepresentationAskedOfUs", represent<DDS_DATA_REPRESENTATION_XCDR2>},
};

const std::map<std::uint32_t, const char*> policies{
    {DDS_RELIABILITY_QOS_POLICY_ID, "reliability"},
    {DDS_DURABILITY_QOS_POLICY_ID, "durability"},
    {DDS_DEADLINE_QOS_POLICY_ID, "deadline"},
    {DDS_LATENCYBUDGET_QOS_POLICY_ID, "latency budget"},
    {DDS_LIVELINESS_QOS_POLICY_ID, "liveliness"},
    {DDS_OWNERSHIP_QOS_POLICY_ID, "ownership"},
    {DDS_DESTINATIONORDER_QOS_POLICY_ID, "destination order"},
    {DDS_PRESENTATION_QOS_POLICY_ID, "presentation"},
    {DDS_DATA_REPRESENTATION_QOS_POLICY_ID, "data representation"},
};

/// Fits a subscriber of the library "strict".
void fitWriter(dds_qos_t* qos)
{
    dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, 0);
    dds_qset_durability(qos, DDS_DURABILITY_TRANSIENT_LOCAL);
    dds_qset_deadline(qos, DDS_SECS(1));
    dds_qset_liveliness(qos, DDS_LIVELINESS_MANUAL_BY_TOPIC, DDS_SECS(5));
    dds_qset_ownership(qos, DDS_OWNERSHIP_EXCLUSIVE);
    dds_qset_partition1(qos, "north");
}

/// Fits a publisher of the library "loose".
void fitReader(dds_qos_t* qos)
{
    dds_qset_reliability(qos, DDS_RELIABILITY_BEST_EFFORT, 0);
    dds_qset_latency_budget(qos, DDS_SECS(2));
}

class Endpoint
{
public:
    Endpoint(dds_entity_t participant, dds_entity_t topic, const std::string& mismatch, bool fits)
        : participant_(participant)
        , isWriter_(mismatch.find("OfferedToUs") != std::string::npos)
    {
        dds_qos_t* const qos = dds_create_qos();
        represent<DDS_DATA_REPRESENTATION_XCDR1>(qos);
        (isWriter_ ? fitWriter : fitReader)(qos);
        if (!fits) {
            changes.at(mismatch)(qos);
        }
        entity_ =
            checked((isWriter_ ? dds_create_writer : dds_create_reader)(participant, topic, qos, nullptr),
                    "create an endpoint");
        dds_delete_qos(qos);
    }

    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;

    ~Endpoint() { dds_delete(entity_); }

    void judge() const
    {
        const Watch watch(participant_, entity_,
                          isWriter_
                              ? DDS_PUBLICATION_MATCHED_STATUS | DDS_OFFERED_INCOMPATIBLE_QOS_STATUS
                              : DDS_SUBSCRIPTION_MATCHED_STATUS | DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS);
        watch.wait();
        dds_offered_incompatible_qos_status_t offered{};
        dds_requested_incompatible_qos_status_t requested{};
        checked(isWriter_ ? dds_get_offered_incompatible_qos_status(entity_, &offered)
                          : dds_get_requested_incompatible_qos_status(entity_, &requested),
                "get a status");
        const auto policy = isWriter_ ? offered.last_policy_id : requested.last_policy_id;
        if (offered.total_count + requested.total_count == 0) {
            std::puts("matches");
        } else {
            const auto name = policies.find(policy);
            std::printf("refuses %s\n", name == policies.end() ? "another policy" : name->second);
        }
    }

private:
    const dds_entity_t participant_;
    const bool isWriter_;
    dds_entity_t entity_ = 0;
};

void run(dds_domainid_t domain, const char* topicName, const std::string& type)
{
    const dds_entity_t participant =
        checked(dds_create_participant(domain, nullptr, nullptr), "create a participant");
    const dds_entity_t topic =
        checked(dds_create_topic(participant,
                                 type == "AltAz" ? &generated_dds__vexstubif_AltAz_desc
                                                 : &generated_dds__vexstubif_DomeTemperature_desc,
                                 topicName, nullptr, nullptr),
                "create a topic");
    std::unique_ptr<Endpoint> endpoint;
    for (std::string word; std::cin >> word;) {
        if (word == "drop") {
            endpoint.reset();
        } else if (word == "judge") {
            endpoint->judge();
        } else {
            std::string mismatch;
            std::cin >> mismatch;
            endpoint = std::make_unique<Endpoint>(participant, topic, mismatch, word == "fit");
        }
    }
    endpoint.reset();
    checked(dds_delete(participant), "delete the participant");
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // each line reaches the test at once
    try {
        if (argc != 4) {
            throw std::runtime_error("arguments are missing");
        }
        run(static_cast<dds_domainid_t>(std::strtoul(argv[1], nullptr, 10)), argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "policies: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
