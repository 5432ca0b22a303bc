// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <TestTopic.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace plex::test
{

/// An empty directory of the running test's own, removed with all that is in it.
class TemporaryDirectory
{
public:
    TemporaryDirectory() { std::filesystem::create_directories(path_); }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    ~TemporaryDirectory() { std::filesystem::remove_all(path_); }

    std::string path() const { return path_.string(); }

    /// Writes a file. @returns its path.
    std::string write(const std::string& name, const std::string& content) const
    {
        const auto file = path_ / name;
        std::ofstream(file) << content;
        return file.string();
    }

private:
    std::filesystem::path path_ = [] {
        std::string name = testName();
        std::replace(name.begin(), name.end(), '/', '_');
        return std::filesystem::temp_directory_path() / ("plex-" + name);
    }();
};

} // namespace plex::test
