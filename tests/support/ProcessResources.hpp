// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <ostream>

namespace plex::test
{

/// What a process holds of the system.
struct ProcessResources {
    std::size_t threads;
    std::size_t fileDescriptors;

    friend bool operator==(const ProcessResources&, const ProcessResources&) = default;

    friend std::ostream& operator<<(std::ostream& out, const ProcessResources& held)
    {
        return out << held.threads << " threads, " << held.fileDescriptors << " file descriptors";
    }
};

inline ProcessResources processResources()
{
    const auto entries = [](const char* directory) {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(directory),
                                                      std::filesystem::directory_iterator()));
    };
    return {entries("/proc/self/task"), entries("/proc/self/fd")};
}

} // namespace plex::test
