// SPDX-License-Identifier: Apache-2.0
#include "ProfileFiles.hpp"
#include "SharedMemory.hpp"
#include "StartupCheck.hpp"
#include "src/profiles/ProfileText.hpp"

#include <plex/Transport.hpp>
#include <plex/common/Properties.hpp>
#include <plex/common/SharedLibrary.hpp>
#include <plex/dds/DdsPlex.hpp>
#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/ProfileName.hpp>
#include <plex/fastdds/DiscoveryRelay.hpp>
#include <plex/fastdds/Generation.hpp>

#include <boost/algorithm/string/replace.hpp>
#include <boost/core/demangle.hpp>
#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <sstream>

namespace ovra::plex
{

namespace dds = eprosima::fastdds::dds;

namespace
{

std::vector<std::string> moduleDirectories(const Plex::Properties& properties)
{
    std::istringstream list(util::findProperty(properties, "dds.module.path").value_or(""));
    std::vector<std::string> directories;
    for (std::string directory; std::getline(list, directory, ':');) {
        if (!directory.empty()) {
            directories.push_back(directory);
        }
    }
    return directories;
}

/// Where the factory of a value type `module::Type` stands.
LibrarySymbol factorySymbol(const std::string& kind, const std::type_info& valueType)
{
    const std::string name = boost::core::demangle(valueType.name());
    const auto separator = name.rfind("::");
    if (separator == std::string::npos) {
        throw PlexException("Value type " + name + " belongs to no interface module: it has no namespace");
    }
    const std::string module = boost::replace_all_copy(name.substr(0, separator), "::", "_");
    return {"libplex-dds-" + module + ".so",
            "generated_dds_" + kind + "_" + module + "_" + name.substr(separator + 2)};
}

/// Deletes a participant through the factory, which it keeps alive as well as the listener; what was left in
/// it is deleted too, but not without a word.
class ParticipantDeleter
{
public:
    fastdds::DiscoveryRelay* listener() const { return listener_.get(); }

    void operator()(dds::DomainParticipant* participant) const noexcept
    {
        auto code = fastdds::code(factory_->delete_participant(participant));
        if (code == fastdds::RETCODE_PRECONDITION_NOT_MET) {
            LOG4CPLUS_WARN(log4cplus::Logger::getInstance("plexDdsPlex"),
                           "Participant is deleted with the entities that were left in it");
            participant->delete_contained_entities();
            code = fastdds::code(factory_->delete_participant(participant));
        }
        if (code != fastdds::RETCODE_OK) {
            participant->set_listener(nullptr, dds::StatusMask::none()); // which goes all the same
            LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("plexDdsPlex"),
                            "Failed to delete participant code:" << code);
        }
    }

private:
    std::shared_ptr<dds::DomainParticipantFactory> factory_ =
        dds::DomainParticipantFactory::get_shared_instance();
    std::shared_ptr<fastdds::DiscoveryRelay> listener_ = std::make_shared<fastdds::DiscoveryRelay>();
};

/// What a participant is made of.
struct ParticipantWish {
    std::uint32_t domain;
    std::string profile; ///< empty for the default QoS
    bool looksAtHost;    ///< whether what keeps it deaf is looked for
};

/// Whether property "dds.startup.check" lets the host be looked at.
bool looksAtHost(const Plex::Properties& properties)
{
    const auto value = util::findProperty(properties, "dds.startup.check").value_or("on");
    if (value != "on" && value != "off") {
        throw PlexException(R"(Property dds.startup.check is neither "on" nor "off": ")" + value + "\"");
    }
    return value == "on";
}

/// @returns nullptr when Fast DDS has no such profile or refuses to make the participant.
dds::DomainParticipant* newParticipant(const ParticipantWish& wish, fastdds::DiscoveryRelay* listener)
{
    const auto& [domain, profile, looks] = wish;
    auto* const factory = dds::DomainParticipantFactory::get_instance();
    factory->load_profiles(); // those that the environment names: the default QoS may be among them
    dds::DomainParticipantQos qos;
    const auto code = profile.empty() ? factory->get_default_participant_qos(qos)
                                      : factory->get_participant_qos_from_profile(profile, qos);
    if (fastdds::code(code) != fastdds::RETCODE_OK) {
        return nullptr;
    }
    mendSharedMemory(qos);
    if (looks) {
        startup::checkOnce(domain, qos);
    }
    return factory->create_participant(domain, qos, listener, dds::StatusMask::none());
}

/// What to say behind the name of a profile of which no participant could be made.
std::string hintAt(const std::string& profile)
{
    return profiles::hintAt(profile, loadedParticipantProfiles());
}

std::shared_ptr<dds::DomainParticipant> createParticipant(const ParticipantWish& wish)
{
    ParticipantDeleter deleter;
    auto* const participant = newParticipant(wish, deleter.listener());
    if (participant == nullptr) {
        const auto& profile = wish.profile;
        const std::string message = "Failed to create participant for domain " + std::to_string(wish.domain) +
                                    (profile.empty() ? "" : " with profile:" + profile + hintAt(profile));
        LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("plexDdsPlex"), message);
        throw PlexException(message);
    }
    return {participant, std::move(deleter)};
}

} // namespace

DdsPlex::DdsPlex(Properties properties) : Plex(std::move(properties)) {}

DdsPlex::~DdsPlex() = default;

std::shared_ptr<dds::DomainParticipant> DdsPlex::getDomainParticipant(const Uri& uri,
                                                                      const Properties& properties)
{
    DdsUriHelper::checkUri(uri, true);
    if (const auto file = util::findProperty(properties, "dds.qos.profile.file")) {
        loadProfileFileOnce(*file);
    }
    const bool usesProfiles = properties.contains("dds.qos.profile.library");
    const ParticipantKey key{DdsUriHelper::domain(uri, properties),
                             usesProfiles ? getProfileNameByProfileType(ProfileType::Participant, properties)
                                          : ""};
    const bool looks = looksAtHost(properties);

    const std::lock_guard lock(mutex_);
    auto& known = participants_[key];
    auto participant = known.lock();
    if (!participant) {
        participant = createParticipant({key.first, key.second, looks});
        known = participant;
    }
    return participant;
}

Plex::Factory DdsPlex::findFactory(const std::string& kind, const std::type_info& valueType,
                                   const std::string& /*scheme*/, const Properties& properties)
{
    auto* const function = loadFunction(factorySymbol(kind, valueType), moduleDirectories(properties));
    return {function, shared_from_this()};
}

} // namespace ovra::plex

extern "C" PLEX_EXPORT ovra::plex::Plex*
plex_create_transport_dds(const ovra::plex::Plex::Properties& properties);

ovra::plex::Plex* plex_create_transport_dds(const ovra::plex::Plex::Properties& properties)
{
    return new ovra::plex::DdsPlex(properties);
}
