// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BareEntities.hpp"

#include <generated/vexstubif/Factories.hpp>
#include <keyed/Factories.hpp>
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
    /// @param profiles file of QoS profiles.
    explicit World(std::string profiles) : profiles_(std::move(profiles)) {}

    std::string newTopic() { return "bench/" + std::to_string(++topics_); }

    /// @param library of QoS profiles, empty for none, here and below.
    ParticipantPointer participant(const std::string& library = {})
    {
        auto& held = library.empty() ? plain_ : profiled_;
        if (held == nullptr) {
            held = plex_->getDomainParticipant(uri("bench"), properties(library));
        }
        return held;
    }

    std::shared_ptr<ovra::plex::ps::Publisher<Position>> publisher(const std::string& topic,
                                                                   const std::string& library = {})
    {
        return std::shared_ptr<ovra::plex::ps::Publisher<Position>>(
            generated_dds_Publisher_vexstubif_AltAz(plex_, uri(topic), {}, properties(library)));
    }

    std::shared_ptr<ovra::plex::ps::Subscriber<Position>> subscriber(const std::string& topic,
                                                                     const std::string& library = {})
    {
        return std::shared_ptr<ovra::plex::ps::Subscriber<Position>>(
            generated_dds_Subscriber_vexstubif_AltAz(plex_, uri(topic), {}, properties(library)));
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

    std::shared_ptr<BareWriter> bareWriter(const std::string& topic, const std::string& library = {})
    {
        return std::make_shared<BareWriter>(participant(library), topic, library);
    }

    std::shared_ptr<BareReader> bareReader(const std::string& topic, const std::string& library = {},
                                           dds::DataReaderListener* listener = nullptr)
    {
        return std::make_shared<BareReader>(participant(library), topic, library, listener);
    }

private:
    ovra::plex::Uri uri(const std::string& topic) const
    {
        return ovra::plex::Uri("dds+ps://" + std::to_string(domain_) + "/" + topic);
    }

    ovra::plex::Plex::Properties properties(const std::string& library) const
    {
        ovra::plex::Plex::Properties result{{"dds.wait_for_ack.timeout_ms", "0"}};
        if (!library.empty()) {
            result["dds.qos.profile.file"] = profiles_;
            result["dds.qos.profile.library"] = library;
        }
        return result;
    }

    const std::string profiles_;
    const int domain_ = 1 + getpid() % 90;
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ =
        std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
    ParticipantPointer plain_;
    ParticipantPointer profiled_;
    int topics_ = 0;
};

} // namespace plex::bench
