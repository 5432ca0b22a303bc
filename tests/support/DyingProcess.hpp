// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace plex::test
{

/// For fixtures of tests in which a process dies: it leaves no files in shared memory. To be inherited before
/// any fixture that makes a participant.
class DyingProcess
{
protected:
    /// Participants use the network only, so the files that a process has are of no use to any other.
    DyingProcess()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        setenv("FASTDDS_BUILTIN_TRANSPORTS", "UDPv4", 1); // NOLINT(concurrency-mt-unsafe): alone yet
    }

    /// To be called in the process that is to die, which then removes its files when it terminates.
    static void leaveNothingBehind() { terminate_ = std::set_terminate(removeFilesAndTerminate); }

private:
    [[noreturn]] static void removeFilesAndTerminate()
    {
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);) {
            if (const auto at = line.find("/dev/shm/"); at != std::string::npos) {
                std::error_code ignored; // for a file that is mapped in pieces
                std::filesystem::remove(line.substr(at), ignored);
            }
        }
        terminate_();
        std::abort();
    }

    inline static std::terminate_handler terminate_ = nullptr;
};

} // namespace plex::test
