// SPDX-License-Identifier: Apache-2.0
// Participants and endpoints in words, for people and as JSON.
#pragma once

#include "Domain.hpp"

#include <nlohmann/json.hpp>

namespace ovra::plex::tool
{

using Json = nlohmann::ordered_json;

/// Where a participant runs, as far as it says: texts are empty where it does not.
struct Place {
    std::string vendor; ///< whose DDS: "Fast DDS", "Cyclone DDS", else its number
    std::string name;   ///< of the participant
    std::string host;
    std::string process; ///< its number
};

Place placeOf(const fastdds::AnnouncedParticipant& participant);

/// "dome 4711": host and process where they are known, else the participant's name, else the vendor;
/// printable().
std::string shortPlace(const Scene& scene, const fastdds::Guid& endpoint);

std::string guidInWords(const fastdds::Guid& guid);

Json toJson(const fastdds::AnnouncedParticipant& participant);
Json toJson(const Scene& scene, const fastdds::AnnouncedEndpoint& endpoint);

/// {guid, participant, host, process} of who publishes.
Json publisherJson(const Scene& scene, const fastdds::Guid& writer);

/// The reliability, durability and representations of an endpoint, and every other policy that it does not
/// leave as it is by default.
std::string qosInWords(const fastdds::AnnouncedEndpoint& endpoint);

} // namespace ovra::plex::tool
