// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <generated/vexstubif/Factories.hpp>
#include <plex/Plex.hpp>
#include <plex/dds/DdsPlex.hpp>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace plex::test
{

/// A value's numbers as bits: NaNs and signs of zero count.
template <std::size_t count>
using Bits = std::array<std::uint64_t, count>;

/// What is known of a topic of positions.
struct Positions {
    static constexpr const char* type = "AltAz";
    static constexpr std::size_t numbers = 2;
    static constexpr auto createPublisher = generated_dds_Publisher_vexstubif_AltAz;
    static constexpr auto createSubscriber = generated_dds_Subscriber_vexstubif_AltAz;

    static void set(vexstubif::AltAz& value, const Bits<2>& bits)
    {
        value.setAlt(std::bit_cast<double>(bits[0]));
        value.setAz(std::bit_cast<double>(bits[1]));
    }

    static Bits<2> bits(const vexstubif::AltAz& value)
    {
        return {std::bit_cast<std::uint64_t>(value.getAlt()), std::bit_cast<std::uint64_t>(value.getAz())};
    }
};

/// And of one of temperatures.
struct Temperatures {
    static constexpr const char* type = "DomeTemperature";
    static constexpr std::size_t numbers = 1;
    static constexpr auto createPublisher = generated_dds_Publisher_vexstubif_DomeTemperature;
    static constexpr auto createSubscriber = generated_dds_Subscriber_vexstubif_DomeTemperature;

    static void set(vexstubif::DomeTemperature& value, const Bits<1>& bits)
    {
        value.setTemp(std::bit_cast<double>(bits[0]));
    }

    static Bits<1> bits(const vexstubif::DomeTemperature& value)
    {
        return {std::bit_cast<std::uint64_t>(value.getTemp())};
    }
};

/// Loads the profile of a participant on the loopback interface, which loopbackProperties() name.
inline void loadLoopback(ovra::plex::DdsPlex& plex, const ovra::plex::Uri& uri)
{
    plex.getDomainParticipant(uri, {{"dds.qos.profile.file", LOOPBACK_FILE}});
}

/// The shipped profiles under which nothing is lost, whoever comes first, on the loopback interface.
/// @param representation empty where none is asked for.
inline ovra::plex::Plex::Properties loopbackProperties(const std::string& representation)
{
    ovra::plex::Plex::Properties result{
        {"dds.wait_for_ack.timeout_ms", "0"}, // a peer that has what it wants just goes
        {"dds.qos.profile.file", PROFILE_FILE},
        {"dds.qos.profile.library", "latched"},
        {"dds.qos.profile.participant", "loopback.participant"}};
    if (!representation.empty()) {
        result["dds.data_representation"] = representation;
    }
    return result;
}

/// A publisher or subscriber that one of the factories makes.
template <class Entity, class... Arguments>
std::unique_ptr<Entity> create(Entity* (*factory)(Arguments...),
                               const std::shared_ptr<ovra::plex::DdsPlex>& plex, const ovra::plex::Uri& uri,
                               const std::string& representation)
{
    return std::unique_ptr<Entity>(factory(plex, uri, {}, loopbackProperties(representation)));
}

} // namespace plex::test
