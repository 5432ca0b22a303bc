// SPDX-License-Identifier: Apache-2.0
#include "ProfileFiles.hpp"

#include <plex/PlexException.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <boost/algorithm/string/replace.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <system_error>

namespace ovra::plex
{

namespace
{

/// Empty where the file cannot be read, which is no valid file of profiles either.
std::string readFile(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// The profiles with the element names of this generation of Fast DDS, so that one file serves all.
std::string translated(const std::string& profiles)
{
    std::string result = profiles;
    for (const auto& [elsewhere, here] : ps::internal::renamedProfileElements) {
        for (const std::string open : {"<", "</"}) {
            for (const char* const end : {">", "/", " ", "\t", "\r", "\n"}) {
                boost::replace_all(result, open + elsewhere + end, open + here + end);
            }
        }
    }
    return result;
}

} // namespace

void loadProfileFileOnce(const std::string& file)
{
    // Fast DDS keeps profiles for the process and refuses to load a name twice.
    static std::mutex mutex;
    static std::set<std::string> loaded;

    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(file, error).string();
    const std::lock_guard lock(mutex);
    if (loaded.contains(path)) {
        return;
    }
    if (!std::filesystem::exists(path, error)) {
        throw PlexException("Failed to load QoS profile file " + file + ": " +
                            std::make_error_code(std::errc::no_such_file_or_directory).message());
    }
    const std::string profiles = translated(readFile(path));
    auto* const factory = eprosima::fastdds::dds::DomainParticipantFactory::get_instance();
    if (ps::internal::code(factory->load_XML_profiles_string(profiles.data(), profiles.size())) !=
        ps::internal::RETCODE_OK) {
        throw PlexException("Failed to load QoS profile file " + file + ": not a valid file of QoS profiles");
    }
    loaded.insert(path);
}

} // namespace ovra::plex
