// SPDX-License-Identifier: Apache-2.0
#include "ProfileFiles.hpp"

#include <plex/PlexException.hpp>
#include <plex/fastdds/Generation.hpp>

#include <boost/algorithm/string/replace.hpp>
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <system_error>

namespace ovra::plex
{

namespace
{

using Names = std::set<std::string>;

constexpr const char* notValid = "not a valid file of QoS profiles";

[[noreturn]] void refuse(const std::string& file, const std::string& reason)
{
    throw PlexException("Failed to load QoS profile file " + file + ": " + reason);
}

std::string readFile(const std::string& file, const std::filesystem::path& path)
{
    const std::ifstream in(path);
    if (!in) {
        refuse(file, std::generic_category().message(errno));
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// Adds what Fast DDS knows the parts of an XML tree by, each with the kind of its element.
void addNames(const boost::property_tree::ptree& tree, Names& names)
{
    for (const auto& [kind, element] : tree) {
        if (const auto name = element.get_optional<std::string>("<xmlattr>.profile_name")) {
            names.insert(kind + " " + *name);
        }
        if (const auto id = element.get_optional<std::string>("transport_id");
            id && kind == "transport_descriptor") {
            names.insert(kind + " " + *id);
        }
        addNames(element, names);
    }
}

Names namesIn(const std::string& file, const std::string& profiles)
{
    boost::property_tree::ptree tree;
    try {
        std::istringstream in(profiles);
        read_xml(in, tree);
    } catch (const boost::property_tree::xml_parser_error& error) {
        refuse(file, std::string(notValid) + " (" + error.message() + " in line " +
                         std::to_string(error.line()) + ")");
    }
    Names names;
    addNames(tree, names);
    return names;
}

/// The profiles with the element names of this generation of Fast DDS, so that one file serves all.
std::string translated(const std::string& profiles)
{
    std::string result = profiles;
    for (const auto& [elsewhere, here] : fastdds::renamedProfileElements) {
        for (const std::string open : {"<", "</"}) {
            for (const char* const end : {">", "/", " ", "\t", "\r", "\n"}) {
                boost::replace_all(result, open + elsewhere + end, open + here + end);
            }
        }
    }
    return result;
}

/// What was loaded. Fast DDS keeps profiles for the process; of those of one name the first, without a word.
struct LoadedFiles {
    std::mutex mutex; ///< guards the others
    std::set<std::string> paths;
    std::set<std::string> texts;
    std::map<std::string, std::string> fileOfName; ///< by an element's kind and name
};

LoadedFiles& loadedFiles()
{
    static LoadedFiles ofProcess;
    return ofProcess;
}

} // namespace

void loadProfileFileOnce(const std::string& file)
{
    auto& [mutex, loadedPaths, loadedTexts, fileOfName] = loadedFiles();

    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(file, error);
    if (error) {
        refuse(file, error.message());
    }
    const std::lock_guard lock(mutex);
    if (loadedPaths.contains(path)) {
        return;
    }
    const std::string profiles = translated(readFile(file, path));
    if (!loadedTexts.contains(profiles)) {
        const Names names = namesIn(file, profiles);
        for (const auto& name : names) {
            if (const auto other = fileOfName.find(name); other != fileOfName.end()) {
                refuse(file, name + " is already loaded from " + other->second);
            }
        }
        auto* const factory = eprosima::fastdds::dds::DomainParticipantFactory::get_instance();
        if (fastdds::code(factory->load_XML_profiles_string(profiles.data(), profiles.size())) !=
            fastdds::RETCODE_OK) {
            refuse(file, notValid);
        }
        for (const auto& name : names) {
            fileOfName.emplace(name, file);
        }
        loadedTexts.insert(profiles);
    }
    loadedPaths.insert(path);
}

std::set<std::string> loadedParticipantProfiles()
{
    const std::string kind = "participant ";
    auto& loaded = loadedFiles();
    const std::lock_guard lock(loaded.mutex);
    Names names;
    for (const auto& [name, file] : loaded.fileOfName) {
        if (name.starts_with(kind)) {
            names.insert(name.substr(kind.size()));
        }
    }
    return names;
}

} // namespace ovra::plex
