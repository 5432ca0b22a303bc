// SPDX-License-Identifier: Apache-2.0
// The program plex-idl as a process.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace plex::test
{

namespace fs = std::filesystem;

inline std::string textOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What a program that has ended leaves.
struct Outcome {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// An empty directory of the running test's own, which is removed with all that is in it.
class WorkDirectory
{
public:
    explicit WorkDirectory(const std::string& name = "work") : path_(pathOf(name))
    {
        fs::remove_all(path_);
        fs::create_directories(path_);
    }

    WorkDirectory(const WorkDirectory&) = delete;
    WorkDirectory& operator=(const WorkDirectory&) = delete;

    ~WorkDirectory() { fs::remove_all(path_); }

    const fs::path& path() const { return path_; }

    /// Writes a file. @returns its path.
    std::string write(const std::string& name, const std::string& text) const
    {
        const fs::path file = path_ / name;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
        return file.string();
    }

private:
    static fs::path pathOf(const std::string& name)
    {
        const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
        std::string full = std::string(test.test_suite_name()) + "." + test.name() + "." + name;
        std::ranges::replace(full, '/', '_');
        return fs::temp_directory_path() / ("plex-idl-" + full + "." + std::to_string(getpid()));
    }

    fs::path path_;
};

/// Runs a program to its end.
inline Outcome run(std::vector<std::string> arguments)
{
    const WorkDirectory directory("streams");
    const std::array<std::string, 2> files{directory.write("output", ""), directory.write("errors", "")};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, files[0].c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, files[1].c_str(), O_WRONLY, 0);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    const int failure = posix_spawn(&process, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failure != 0 || waitpid(process, &status, 0) != process) {
        throw std::runtime_error("cannot run " + arguments.front());
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, textOf(files[0]), textOf(files[1])};
}

/// Runs plex-idl with these arguments.
inline Outcome plexIdl(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), PLEX_TEST_IDL_PROGRAM);
    return run(std::move(arguments));
}

} // namespace plex::test
