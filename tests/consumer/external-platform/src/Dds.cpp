// SPDX-License-Identifier: Apache-2.0
#include <plex/dds/DdsPlex.hpp>
#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/ProfileName.hpp>
#include <vexstubif/AltAz.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <array>
#include <dlfcn.h>

namespace ovra::plex
{

namespace dds = eprosima::fastdds::dds;

namespace
{

const std::string beforeDomain = "dds+ps://";

std::shared_ptr<dds::DomainParticipant> createParticipant(unsigned domain)
{
    const auto factory = dds::DomainParticipantFactory::get_shared_instance();
    auto* const participant = factory->create_participant(domain, dds::PARTICIPANT_QOS_DEFAULT);
    if (participant == nullptr) {
        throw PlexException("No participant for domain " + std::to_string(domain));
    }
    return {participant, [factory](dds::DomainParticipant* last) {
                factory->delete_participant(last);
            }};
}

} // namespace

void DdsUriHelper::checkUri(const Uri& uri, bool /*logFailure*/)
{
    if (!isPubSubUri(uri)) {
        throw PlexException("No URI of DDS: " + uri.string());
    }
}

bool DdsUriHelper::isPubSubUri(const Uri& uri)
{
    return uri.string().starts_with(beforeDomain);
}

std::string DdsUriHelper::topic(const Uri& uri, bool /*decode*/)
{
    const std::string text = uri.string();
    return text.substr(text.find('/', beforeDomain.size()) + 1);
}

std::string getProfileNameByProfileType(ProfileType type, const Plex::Properties& properties)
{
    constexpr std::array kinds = {"participant", "topic", "writer", "publisher", "reader", "subscriber"};
    return properties.at("dds.qos.profile.library") + "." + kinds.at(static_cast<std::size_t>(type));
}

DdsPlex::~DdsPlex() = default;

std::shared_ptr<dds::DomainParticipant> DdsPlex::getDomainParticipant(const Uri& uri,
                                                                      const Properties& /*properties*/)
{
    DdsUriHelper::checkUri(uri, true);
    const auto domain = static_cast<unsigned>(std::stoul(uri.string().substr(beforeDomain.size())));
    const std::lock_guard lock(mutex_);
    auto participant = participants_[domain].lock();
    if (!participant) {
        participant = createParticipant(domain);
        participants_[domain] = participant;
    }
    return participant;
}

Plex::Factory DdsPlex::findFactory(const std::string& kind, const std::type_info& valueType,
                                   const std::string& /*scheme*/, const Properties& /*properties*/)
{
    if (valueType != typeid(vexstubif::AltAz)) {
        throw PlexException(std::string("No module for ") + valueType.name());
    }
    const std::string symbol = "generated_dds_" + kind + "_vexstubif_AltAz";
    void* const library = dlopen("libplex-dds-vexstubif.so", RTLD_NOW);
    void* const function = library == nullptr ? nullptr : dlsym(library, symbol.c_str());
    if (function == nullptr) {
        throw PlexException(dlerror());
    }
    return {reinterpret_cast<void (*)()>(function), shared_from_this()};
}

} // namespace ovra::plex

extern "C" ovra::plex::Plex* newDdsPlex(const ovra::plex::Plex::Properties& properties)
{
    return new ovra::plex::DdsPlex(properties);
}
