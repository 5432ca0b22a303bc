// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

namespace plex::test
{

/// What a process holds of the system.
struct ProcessResources {
    std::size_t threads;
    std::size_t fileDescriptors;

    /// Whether none is held that was not before. Less may be: a thread that has been joined is seen a moment
    /// longer.
    bool isWithin(const ProcessResources& before) const
    {
        return threads <= before.threads && fileDescriptors <= before.fileDescriptors;
    }

    friend bool operator==(const ProcessResources&, const ProcessResources&) = default;

    friend std::ostream& operator<<(std::ostream& out, const ProcessResources& held)
    {
        return out << held.threads << " threads, " << held.fileDescriptors << " file descriptors";
    }
};

/// The name of a thread of the process, empty when it has ended.
inline std::string threadName(const std::filesystem::path& task)
{
    std::string name;
    std::ifstream file(task / "comm");
    std::getline(file, name);
    return name;
}

/// Without the thread for changes of status, which lives while there are any, and the one that Fast DDS keeps
/// from its first log record on.
inline ProcessResources processResources()
{
    using Entries = std::filesystem::directory_iterator;
    const auto isCounted = [](const auto& task) {
        const auto name = threadName(task.path());
        return !name.empty() && name != "plex-status" && name != "dds.log";
    };
    return {static_cast<std::size_t>(std::count_if(Entries("/proc/self/task"), Entries(), isCounted)),
            static_cast<std::size_t>(std::distance(Entries("/proc/self/fd"), Entries()))};
}

} // namespace plex::test
