// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <set>
#include <string>
#include <vector>

/// What XML files of QoS profiles say, for those who tell people about them. Fast DDS reads them by itself.
namespace ovra::plex::profiles
{

/// One profile of a file.
struct Profile {
    std::string element; ///< "data_writer", "publisher", …
    std::string name;

    /// What it says anything about: the paths of the elements inside, as "qos/reliability/kind".
    std::set<std::string> says;
};

/// The profiles of a file, in its order; none where the text is no XML.
std::vector<Profile> profilesIn(const std::string& text);

} // namespace ovra::plex::profiles
