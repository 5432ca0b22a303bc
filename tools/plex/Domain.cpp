// SPDX-License-Identifier: Apache-2.0
#include "Domain.hpp"

#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Words.hpp"

#include <plex/fastdds/Transports.hpp>

#include <fastdds/dds/log/Log.hpp>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <platform/plex-dds/src/SharedMemory.hpp>
#include <src/engine/Compatibility.hpp>
#include <tuple>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using namespace std::chrono_literals;
using ps::internal::isWriter;

// Participants repeat themselves every 100 ms at first, then every 3 s. Whose answer was lost is heard then.
constexpr auto repetition = 3300ms;
constexpr auto shortestSettling = fastdds::answersReachAll ? 1000ms : repetition;
constexpr auto longestSettling = fastdds::answersReachAll ? 3000ms : 4500ms;
constexpr auto quietTime = 500ms;
constexpr auto quietTimeOfEach = 10ms; // further, for a participant: many take their turns to answer

constexpr std::uint32_t queueLength = 8192;             // packets
constexpr std::uint32_t segmentSize = 2U * 1024 * 1024; // bytes

/// Lets more packets wait in shared memory than by default: a best-effort reader loses what finds no room
/// there. The environment has the last word on built-in transports.
void lengthenQueues(dds::DomainParticipantQos& qos)
{
    const bool mayBeChosen =
        !fastdds::transportsOfEnvironment().empty() ||
        std::getenv("FASTDDS_ENVIRONMENT_FILE") != nullptr; // NOLINT(concurrency-mt-unsafe)
    if (qos.transport().use_builtin_transports && !mayBeChosen) {
        qos.setup_transports(eprosima::fastdds::rtps::BuiltinTransports::DEFAULT);
    }
    for (const auto& transport : qos.transport().user_transports) {
        using SharedMemory = eprosima::fastdds::rtps::SharedMemTransportDescriptor;
        if (auto* const memory = dynamic_cast<SharedMemory*>(transport.get())) {
            memory->port_queue_capacity(std::max(memory->port_queue_capacity(), queueLength));
            memory->segment_size(std::max(memory->segment_size(), segmentSize));
        }
    }
}

dds::DomainParticipantQos qosOf(dds::DomainParticipantFactory& factory, const std::string& name)
{
    factory.load_profiles(); // those that the environment names: the default QoS may be among them
    dds::DomainParticipantQos qos;
    factory.get_default_participant_qos(qos);
    qos.name(name.c_str());
    // Others answer an announcement at once; some answers come before there is anybody who listens.
    qos.wire_protocol().builtin.discovery_config.initial_announcements.count = 10;
    lengthenQueues(qos);
    mendSharedMemory(qos);
    return qos;
}

std::vector<fastdds::AnnouncedEndpoint> selected(const std::vector<fastdds::AnnouncedEndpoint>& endpoints,
                                                 const std::string& topic, bool writers)
{
    std::vector<fastdds::AnnouncedEndpoint> result;
    std::ranges::copy_if(endpoints, std::back_inserter(result), [&](const auto& endpoint) {
        return endpoint.topic == topic && isWriter(endpoint.guid) == writers;
    });
    return result;
}

} // namespace

std::vector<std::string> Scene::topics() const
{
    std::vector<std::string> names;
    std::ranges::transform(endpoints, std::back_inserter(names), &fastdds::AnnouncedEndpoint::topic);
    names.erase(std::ranges::unique(names).begin(), names.end());
    return names;
}

std::vector<fastdds::AnnouncedEndpoint> Scene::writersOf(const std::string& topic) const
{
    return selected(endpoints, topic, true);
}

std::vector<fastdds::AnnouncedEndpoint> Scene::readersOf(const std::string& topic) const
{
    return selected(endpoints, topic, false);
}

const fastdds::AnnouncedParticipant* Scene::participantOf(const fastdds::Guid& endpoint) const
{
    const auto found = participants.find(endpoint.guidPrefix);
    return found == participants.end() ? nullptr : &found->second;
}

Domain::Domain(std::uint32_t number, const std::string& name) : participant_(create(number, name))
{
    if (participant_ == nullptr) {
        throw Failure(ExitCode::Failed,
                      "cannot take part in domain " + std::to_string(number) +
                          ": no participant can be made, maybe for want of a network interface");
    }
    second_ = create(number, name);
}

Domain::~Domain()
{
    remove(second_);
    remove(participant_);
}

dds::DomainParticipant* Domain::create(std::uint32_t number, const std::string& name)
{
    dds::Log::ClearConsumers(); // the output is the command's, and Fast DDS 2 would write into it
    auto* const participant =
        factory_->create_participant(number, qosOf(*factory_, name), this, dds::StatusMask::none());
    if (participant != nullptr) {
        const std::lock_guard lock(mutex_);
        own_.push_back(participant->guid().guidPrefix);
    }
    return participant;
}

void Domain::remove(dds::DomainParticipant* participant)
{
    if (participant != nullptr) {
        participant->set_listener(nullptr, dds::StatusMask::none());
        participant->delete_contained_entities();
        factory_->delete_participant(participant);
    }
}

bool Domain::isOwn(const fastdds::GuidPrefix& participant) const
{
    return std::ranges::find(own_, participant) != own_.end();
}

Scene Domain::scene() const
{
    const std::lock_guard lock(mutex_);
    return sceneLocked();
}

Scene Domain::sceneLocked() const
{
    Scene scene;
    scene.participants = participants_;
    std::erase_if(scene.participants, [&](const auto& entry) { return isOwn(entry.first); });
    for (const auto& [guid, endpoint] : endpoints_) {
        if (!isOwn(guid.guidPrefix)) {
            scene.endpoints.push_back(endpoint);
        }
    }
    std::ranges::sort(scene.endpoints, {}, [](const fastdds::AnnouncedEndpoint& endpoint) {
        return std::tuple(endpoint.topic, !isWriter(endpoint.guid), endpoint.guid);
    });
    return scene;
}

std::uint64_t Domain::changes() const
{
    const std::lock_guard lock(mutex_);
    return changes_;
}

std::optional<fastdds::AnnouncedEndpoint> Domain::ownEndpoint(const fastdds::Guid& guid) const
{
    const std::lock_guard lock(mutex_);
    const auto found = endpoints_.find(guid);
    return found == endpoints_.end() ? std::nullopt : std::optional(found->second);
}

bool Domain::isSettled() const
{
    const auto now = Clock::now();
    const auto quiet = quietTime + participants_.size() * quietTimeOfEach;
    return now - begin_ >= longestSettling ||
           (now - begin_ >= shortestSettling && now - lastChange_ >= quiet);
}

void Domain::settle()
{
    settleUnless([](const Scene&) { return false; });
}

bool Domain::settleUnless(const std::function<bool(const Scene&)>& condition)
{
    const bool holds = waitUnless([this] { return isSettled(); }, condition);
    remove(std::exchange(second_, nullptr));
    return holds;
}

bool Domain::waitForRepetition(const std::function<bool(const Scene&)>& condition) const
{
    return waitUnless([this] { return Clock::now() - begin_ >= repetition; }, condition);
}

bool Domain::waitUnless(const std::function<bool()>& isOver,
                        const std::function<bool(const Scene&)>& condition) const
{
    std::unique_lock lock(mutex_);
    std::uint64_t seen = 0;
    bool holds = condition(sceneLocked());
    while (!holds && !isOver() && !isInterrupted()) {
        change_.wait_for(lock, longestWait);
        if (seen != changes_) {
            seen = changes_;
            holds = condition(sceneLocked());
        }
    }
    return holds;
}

void Domain::changed()
{
    ++changes_;
    lastChange_ = Clock::now();
    change_.notify_all();
}

void Domain::announced(const fastdds::AnnouncedParticipant& participant)
{
    const std::lock_guard lock(mutex_);
    participants_[participant.prefix] = participant;
    changed();
}

void Domain::gone(const fastdds::GuidPrefix& participant)
{
    const std::lock_guard lock(mutex_);
    participants_.erase(participant);
    std::erase_if(endpoints_, [&](const auto& entry) { return entry.first.guidPrefix == participant; });
    changed();
}

void Domain::announced(const fastdds::AnnouncedEndpoint& endpoint)
{
    const std::lock_guard lock(mutex_);
    endpoints_[endpoint.guid] = endpoint;
    changed();
}

void Domain::gone(const fastdds::Guid& endpoint)
{
    const std::lock_guard lock(mutex_);
    endpoints_.erase(endpoint);
    changed();
}

void waitForTopic(Domain& domain, const std::string& topic)
{
    const auto isThere = [&](const Scene& scene) {
        return std::ranges::any_of(scene.endpoints,
                                   [&](const auto& endpoint) { return endpoint.topic == topic; });
    };
    if (!domain.settleUnless(isThere) && !domain.waitForRepetition(isThere) && !isInterrupted()) {
        const auto topics = domain.scene().topics();
        throw Failure(ExitCode::NotFound,
                      "there is no topic \"" + topic + "\"" +
                          (topics.empty() ? ", nor any other one" : suggestion(topic, topics)));
    }
}

bool hasKey(const fastdds::Guid& endpoint)
{
    const auto kind = endpoint.entityId.value[3] & 0x0FU;
    return kind == 0x02 || kind == 0x07;
}

} // namespace ovra::plex::tool
