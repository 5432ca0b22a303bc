// SPDX-License-Identifier: Apache-2.0
#include "ProfileFiles.hpp"

#include <plex/PlexException.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <filesystem>
#include <mutex>
#include <set>

namespace ovra::plex
{

void loadProfileFileOnce(const std::string& file)
{
    // Fast DDS keeps profiles for the process and refuses to load a name twice.
    static std::mutex mutex;
    static std::set<std::string> loaded;

    std::error_code error;
    const auto path = std::filesystem::canonical(file, error).string();
    if (error) {
        throw PlexException("Failed to load QoS profile file " + file + ": " + error.message());
    }
    const std::lock_guard lock(mutex);
    if (loaded.count(path) != 0) {
        return;
    }
    auto* const factory = eprosima::fastdds::dds::DomainParticipantFactory::get_instance();
    if (ps::internal::code(factory->load_XML_profiles_file(path)) != ps::internal::RETCODE_OK) {
        throw PlexException("Failed to load QoS profile file " + file + ": not a valid file of QoS profiles");
    }
    loaded.insert(path);
}

} // namespace ovra::plex
