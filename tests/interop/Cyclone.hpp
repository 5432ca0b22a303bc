// SPDX-License-Identifier: Apache-2.0
// What programs of the peer, Cyclone DDS, have in common.
#pragma once

#include <cstdint>
#include <dds/dds.h>
#include <stdexcept>
#include <string>

namespace plex::test
{

constexpr dds_duration_t patience = DDS_SECS(20);

/// An entity, or a failure as an exception.
inline dds_entity_t checked(dds_entity_t result, const char* what)
{
    if (result < 0) {
        throw std::runtime_error(std::string(what) + ": " + dds_strretcode(result));
    }
    return result;
}

/// The QoS of every entity: nothing is lost, whoever comes first.
/// @param representation xcdr1, xcdr2, or default for what the peer chooses.
/// @returns what dds_delete_qos() must be called with.
inline dds_qos_t* makeQos(const std::string& representation)
{
    dds_qos_t* const qos = dds_create_qos();
    dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, patience);
    dds_qset_durability(qos, DDS_DURABILITY_TRANSIENT_LOCAL);
    dds_qset_history(qos, DDS_HISTORY_KEEP_ALL, DDS_LENGTH_UNLIMITED);
    dds_qset_durability_service(qos, 0, DDS_HISTORY_KEEP_ALL, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED,
                                DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED);
    if (representation != "default") {
        const dds_data_representation_id_t id =
            representation == "xcdr1" ? DDS_DATA_REPRESENTATION_XCDR1 : DDS_DATA_REPRESENTATION_XCDR2;
        dds_qset_data_representation(qos, 1, &id);
    }
    return qos;
}

/// Waits for a status of an entity.
class Watch
{
public:
    Watch(dds_entity_t participant, dds_entity_t entity, std::uint32_t statuses)
        : waitSet_(checked(dds_create_waitset(participant), "create a wait set"))
    {
        checked(dds_set_status_mask(entity, statuses), "set the status mask");
        checked(dds_waitset_attach(waitSet_, entity, 0), "attach to the wait set");
    }

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    ~Watch() { dds_delete(waitSet_); } // an entity that is attached to one can not go

    void wait() const
    {
        if (checked(dds_waitset_wait_until(waitSet_, nullptr, 0, end_), "wait") == 0) {
            throw std::runtime_error("the other side did not do its part in time");
        }
    }

private:
    const dds_entity_t waitSet_;
    const dds_time_t end_ = dds_time() + patience;
};

} // namespace plex::test
