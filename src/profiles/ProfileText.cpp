// SPDX-License-Identifier: Apache-2.0
#include "ProfileText.hpp"

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>

#include <sstream>

namespace ovra::plex::profiles
{

namespace
{

using Tree = boost::property_tree::ptree;

/// Whether a part of a tree is an element, and no attributes or comment.
bool isElement(const std::string& kind)
{
    return !kind.starts_with('<');
}

void addPaths(const Tree& tree, const std::string& path, std::set<std::string>& paths)
{
    for (const auto& [kind, element] : tree) {
        if (isElement(kind)) {
            paths.insert(path + kind);
            addPaths(element, path + kind + "/", paths);
        }
    }
}

void addProfiles(const Tree& tree, std::vector<Profile>& profiles)
{
    for (const auto& [kind, element] : tree) {
        if (const auto name = element.get_optional<std::string>("<xmlattr>.profile_name")) {
            auto& profile = profiles.emplace_back(Profile{kind, *name, {}});
            addPaths(element, "", profile.says);
        } else {
            addProfiles(element, profiles);
        }
    }
}

} // namespace

std::vector<Profile> profilesIn(const std::string& text)
{
    Tree tree;
    try {
        std::istringstream in(text);
        read_xml(in, tree);
    } catch (const boost::property_tree::xml_parser_error&) {
        return {};
    }
    std::vector<Profile> profiles;
    addProfiles(tree, profiles);
    return profiles;
}

} // namespace ovra::plex::profiles
