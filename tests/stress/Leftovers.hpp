// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <system_error>

namespace plex::test::stress
{

/// Removes what processes that were killed leave in shared memory: the files of DDS that came while this
/// object lives, and that no process uses.
class Leftovers
{
public:
    Leftovers() = default;
    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;

    ~Leftovers()
    {
        const auto used = usedFiles();
        for (const auto& file : files()) {
            std::error_code ignored; // somebody else may have removed it
            if (!before_.contains(file) && !used.contains(file) && isSettled(file)) {
                std::filesystem::remove(file, ignored);
            }
        }
    }

private:
    static constexpr const char* directory = "/dev/shm/";

    static std::set<std::string> files()
    {
        std::set<std::string> found;
        for (const auto& file : std::filesystem::directory_iterator(directory)) {
            if (file.path().filename().string().find("fast") != std::string::npos) {
                found.insert(file.path().string());
            }
        }
        return found;
    }

    /// Whether it is older than the time that a process takes to make a file and use it.
    static bool isSettled(const std::string& file)
    {
        std::error_code failed;
        const auto changed = std::filesystem::last_write_time(file, failed);
        return !failed && std::filesystem::file_time_type::clock::now() - changed > std::chrono::seconds(1);
    }

    static std::set<std::string> usedFiles()
    {
        std::set<std::string> used;
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            std::ifstream maps(process.path() / "maps");
            for (std::string line; std::getline(maps, line);) {
                if (const auto at = line.find(directory); at != std::string::npos) {
                    used.insert(line.substr(at));
                }
            }
        }
        return used;
    }

    const std::set<std::string> before_ = files();
};

} // namespace plex::test::stress
