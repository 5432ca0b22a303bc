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

/// Of some names those that are most like one that is none of them: three at most, the most alike first, and
/// none that has little to do with it.
std::vector<std::string> nearest(const std::string& name, const std::set<std::string>& names);

/// What to say behind the failure to find a profile: which others are nearest. Empty where the profile is
/// among the names, or nothing is like it.
std::string hintAt(const std::string& name, const std::set<std::string>& names);

} // namespace ovra::plex::profiles
