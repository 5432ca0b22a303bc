// SPDX-License-Identifier: Apache-2.0
#include "Stack.hpp"
#include "vexstubif.h"

#include <dds/dds.h>
#include <stdexcept>

namespace plex::bench
{

namespace
{

/// A domain of its own, behind those that run-bench gives out, so that the other DDS does not look at its
/// discovery.
constexpr unsigned domainOffset = 50;

dds_entity_t made(dds_entity_t entity, const char* what)
{
    if (entity < 0) {
        throw std::runtime_error(std::string("Cyclone DDS made no ") + what + ": " + dds_strretcode(entity));
    }
    return entity;
}

class Entity
{
public:
    Entity(dds_entity_t entity, const char* what) : entity_(made(entity, what)) {}

    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    ~Entity() { dds_delete(entity_); }

    dds_entity_t get() const { return entity_; }

private:
    const dds_entity_t entity_;
};

using Qos = std::unique_ptr<dds_qos_t, void (*)(dds_qos_t*)>;

/// The binding's quality of service, in so far as both have it. Writers are always reliable, as the binding's
/// are, and keep as much as under its profile `reliable`; readers that are not keep as much as by default.
Qos makeQos(bool reliable)
{
    Qos qos(dds_create_qos(), dds_delete_qos);
    dds_qset_reliability(qos.get(), reliable ? DDS_RELIABILITY_RELIABLE : DDS_RELIABILITY_BEST_EFFORT,
                         DDS_SECS(1));
    dds_qset_history(qos.get(), DDS_HISTORY_KEEP_ALL, 0);
    dds_qset_resource_limits(qos.get(), reliable ? 4000 : 40000, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED);
    return qos;
}

Entity makeTopic(const Entity& participant, const std::string& name)
{
    return {dds_create_topic(participant.get(), &vexstubif_AltAz_desc, name.c_str(), nullptr, nullptr),
            "topic"};
}

class CycloneSender final : public Sender
{
public:
    CycloneSender(const Entity& participant, const std::string& topic)
        : topic_(makeTopic(participant, topic))
        , writer_(dds_create_writer(participant.get(), topic_.get(), makeQos(true).get(), nullptr), "writer")
    {
    }

    bool send(const Horizontal& value) override
    {
        const vexstubif_AltAz position{value.alt, value.az};
        return dds_write(writer_.get(), &position) == DDS_RETCODE_OK;
    }

private:
    const Entity topic_;
    const Entity writer_;
};

class CycloneReceiver final : public Receiver
{
public:
    CycloneReceiver(const Entity& participant, const std::string& topic, bool reliable, Handler handler)
        : handler_(std::move(handler))
        , listener_(dds_create_listener(&handler_), dds_delete_listener)
        , topic_(makeTopic(participant, topic))
    {
        dds_lset_data_available(listener_.get(), onData);
        reader_ = std::make_unique<Entity>(
            dds_create_reader(participant.get(), topic_.get(), makeQos(reliable).get(), listener_.get()),
            "reader");
    }

private:
    static void onData(dds_entity_t reader, void* argument)
    {
        const Handler& handler = *static_cast<const Handler*>(argument);
        vexstubif_AltAz position{};
        void* sample = &position;
        dds_sample_info_t info;
        while (dds_take(reader, &sample, &info, 1, 1) == 1) {
            if (info.valid_data) {
                handler({position.alt, position.az});
            }
        }
    }

    Handler handler_;
    const std::unique_ptr<dds_listener_t, void (*)(dds_listener_t*)> listener_;
    const Entity topic_;
    std::unique_ptr<Entity> reader_;
};

class CycloneStack final : public Stack
{
public:
    explicit CycloneStack(const StackSettings& settings)
        : reliable_(settings.isReliable)
        , participant_(dds_create_participant(settings.domain + domainOffset, nullptr, nullptr),
                       "participant")
    {
    }

    std::unique_ptr<Sender> sender(const std::string& topic) override
    {
        return std::make_unique<CycloneSender>(participant_, topic);
    }

    std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) override
    {
        return std::make_unique<CycloneReceiver>(participant_, topic, reliable_, std::move(handler));
    }

private:
    const bool reliable_;
    const Entity participant_;
};

} // namespace

std::unique_ptr<Stack> makeCycloneStack(const StackSettings& settings)
{
    return std::make_unique<CycloneStack>(settings);
}

} // namespace plex::bench
