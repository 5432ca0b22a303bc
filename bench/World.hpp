// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BareEntities.hpp"
#include "Profiles.hpp"

#include <generated/vexstubif/Factories.hpp>
#include <keyed/dds/Factories.hpp>
#include <plex/dds/DdsPlex.hpp>

#include <memory>
#include <string>
#include <unistd.h>

namespace plex::bench
{

using Position = vexstubif::AltAz;

/// Makes entities of both sides in the same participant, each on a topic of its own unless told otherwise.
class World
{
public:
    /// @param profileFile has the QoS profiles.
    explicit World(std::string profileFile) : profileFile_(std::move(profileFile)) {}

    std::string newTopic() { return "bench/" + std::to_string(++topics_); }

    ParticipantPointer participant(const Profiles& profiles = {})
    {
        auto& held = profiles.areUsed() ? profiled_ : plain_;
        if (held == nullptr) {
            held = plex_->getDomainParticipant(uri("bench"), properties(profiles));
        }
        return held;
    }

    std::shared_ptr<ovra::plex::ps::Publisher<Position>> publisher(const std::string& topic,
                                                                   const Profiles& profiles = {})
    {
        return std::shared_ptr<ovra::plex::ps::Publisher<Position>>(
            generated_dds_Publisher_vexstubif_AltAz(plex_, uri(topic), {}, properties(profiles)));
    }

    std::shared_ptr<ovra::plex::ps::Subscriber<Position>> subscriber(const std::string& topic,
                                                                     const Profiles& profiles = {})
    {
        return std::shared_ptr<ovra::plex::ps::Subscriber<Position>>(
            generated_dds_Subscriber_vexstubif_AltAz(plex_, uri(topic), {}, properties(profiles)));
    }

    std::shared_ptr<ovra::plex::ps::Publisher<keyed::Channel>> channelPublisher(const std::string& topic)
    {
        return std::shared_ptr<ovra::plex::ps::Publisher<keyed::Channel>>(
            generated_dds_Publisher_keyed_Channel(plex_, uri(topic), {}, properties({})));
    }

    std::shared_ptr<ovra::plex::ps::Subscriber<keyed::Channel>> channelSubscriber(const std::string& topic)
    {
        return std::shared_ptr<ovra::plex::ps::Subscriber<keyed::Channel>>(
            generated_dds_Subscriber_keyed_Channel(plex_, uri(topic), {}, properties({})));
    }

    static std::shared_ptr<keyed::Channel> channel(int number)
    {
        std::shared_ptr<keyed::Channel> value(generated_dds_DataEntity_keyed_Channel());
        value->setNumber(number);
        return value;
    }

    std::shared_ptr<BareWriter> bareWriter(const std::string& topic, const Profiles& profiles = {})
    {
        return std::make_shared<BareWriter>(participant(profiles), topic, profiles);
    }

    std::shared_ptr<BareReader> bareReader(const std::string& topic, const Profiles& profiles = {},
                                           dds::DataReaderListener* listener = nullptr)
    {
        return std::make_shared<BareReader>(participant(profiles), topic, profiles, listener);
    }

private:
    ovra::plex::Uri uri(const std::string& topic) const
    {
        return ovra::plex::Uri("dds+ps://" + std::to_string(domain_) + "/" + topic);
    }

    ovra::plex::Plex::Properties properties(const Profiles& profiles) const
    {
        return profiles.properties(profileFile_);
    }

    const std::string profileFile_;
    const int domain_ = 1 + getpid() % 90;
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ =
        std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
    ParticipantPointer plain_;
    ParticipantPointer profiled_;
    int topics_ = 0;
};

} // namespace plex::bench
