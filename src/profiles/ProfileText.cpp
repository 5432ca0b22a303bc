// SPDX-License-Identifier: Apache-2.0
#include "ProfileText.hpp"

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

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

/// How many letters must be put in, left out or replaced to make one text of another (Levenshtein).
std::size_t editDistance(const std::string& one, const std::string& other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        auto diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const auto replaced = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.at(other.size());
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

std::vector<std::string> nearest(const std::string& name, const std::set<std::string>& names)
{
    constexpr std::size_t most = 3;
    std::vector<std::pair<std::size_t, std::string>> byDistance;
    for (const auto& candidate : names) {
        const auto length = std::max(name.size(), candidate.size());
        if (const auto apart = editDistance(name, candidate); 3 * apart <= length) {
            byDistance.emplace_back(apart, candidate);
        }
    }
    std::ranges::sort(byDistance);
    std::vector<std::string> found;
    for (const auto& [apart, candidate] : byDistance) {
        if (found.size() < most) {
            found.push_back(candidate);
        }
    }
    return found;
}

std::string hintAt(const std::string& name, const std::set<std::string>& names)
{
    if (names.contains(name)) {
        return "";
    }
    std::string list;
    for (const auto& candidate : nearest(name, names)) {
        list += (list.empty() ? "" : ", ") + candidate;
    }
    return list.empty() ? "" : "; there is no such profile, the nearest are: " + list;
}

} // namespace ovra::plex::profiles
