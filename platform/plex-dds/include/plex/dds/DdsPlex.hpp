// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>
#include <plex/Uri.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace eprosima::fastdds::dds
{
class DomainParticipant;
}

namespace ovra::plex
{

/// The DDS transport's middleware instance: finds the module libraries' factories and hands out the
/// process's domain participants.
///
/// Threads: all operations may be called from several threads at once.
class PLEX_EXPORT DdsPlex final : public Plex
{
public:
    /// @param properties settings for everything that its create calls make.
    explicit DdsPlex(Properties properties);
    ~DdsPlex() override;

    /// The participant for a URI's domain, shared by all who ask for the same domain and participant
    /// profile. It is made on first use, lives as long as somebody holds it, and is deleted afterwards with
    /// everything that is left in it.
    ///
    /// With property "dds.qos.profile.library" the participant is made from the profile that
    /// getProfileNameByProfileType() gives. Property "dds.qos.profile.file" names an XML file of profiles;
    /// each file is loaded once a process, before its first use.
    ///
    /// As the first participant of a domain is made, what its host has that keeps it deaf is logged at WARN,
    /// once a process and cause, unless property "dds.startup.check" is "off".
    ///
    /// @param properties all settings that hold, as a module's factory gets them: those of the instance are
    /// not
    ///        looked at again.
    /// @throws PlexException when the URI is ill-formed, the file does not load, a property is bad, or the
    ///         participant cannot be made (for want of its profile, for instance); of several faults the
    ///         first of these.
    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant>
    getDomainParticipant(const Uri& uri, const Properties& properties);

protected:
    Factory findFactory(const std::string& kind, const std::type_info& valueType, const std::string& scheme,
                        const Properties& properties) override;

private:
    using ParticipantKey = std::pair<std::uint32_t, std::string>; ///< domain and profile name or ""

    std::mutex mutex_; ///< guards participants_; held while a participant is made
    std::map<ParticipantKey, std::weak_ptr<eprosima::fastdds::dds::DomainParticipant>> participants_;
};

} // namespace ovra::plex
