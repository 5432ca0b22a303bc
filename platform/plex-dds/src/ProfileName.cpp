// SPDX-License-Identifier: Apache-2.0
#include <plex/common/Properties.hpp>
#include <plex/dds/ProfileName.hpp>

#include <array>

namespace ovra::plex
{

std::string getProfileNameByProfileType(ProfileType type, const Plex::Properties& properties)
{
    static constexpr std::array<const char*, 6> kinds = {"participant", "topic",  "writer",
                                                         "publisher",   "reader", "subscriber"};
    const auto index = static_cast<std::size_t>(type);
    if (index >= kinds.size()) {
        throw PlexException("Unknown type of QoS profile: " +
                            std::to_string(static_cast<std::int32_t>(type)));
    }
    const std::string kind = kinds.at(index);
    const auto named = util::findProperty(properties, "dds.qos.profile." + kind);
    return named ? *named
                 : util::findProperty(properties, "dds.qos.profile.library").value_or("") + "." + kind;
}

} // namespace ovra::plex
