// SPDX-License-Identifier: Apache-2.0
#include "Output.hpp"

#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

namespace fs = std::filesystem;

std::optional<std::string> textOf(const fs::path& path)
{
    const std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << file.rdbuf();
    return std::move(text).str();
}

/// Files under other names, until all of them are written. What was not put into its place goes.
class Pending
{
public:
    Pending() = default;
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    ~Pending()
    {
        for (const auto& [temporary, path] : files_) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
        }
    }

    void write(const fs::path& path, const std::string& text)
    {
        fs::create_directories(path.parent_path());
        const fs::path temporary = path.string() + "." + std::to_string(getpid()) + ".new";
        files_.emplace_back(temporary, path);
        std::ofstream file(temporary, std::ios::binary);
        file << text;
        file.close();
        if (!file) {
            throw std::runtime_error("cannot write " + path.string());
        }
    }

    void putIntoPlace()
    {
        for (const auto& [temporary, path] : files_) {
            if (fs::is_directory(path)) {
                throw std::runtime_error("cannot write " + path.string() + ", which is a folder");
            }
        }
        for (const auto& [temporary, path] : files_) {
            fs::rename(temporary, path);
        }
    }

private:
    std::vector<std::pair<fs::path, fs::path>> files_;
};

/// A path as make reads it.
std::string escaped(const std::string& path)
{
    std::string result;
    for (const char c : path) {
        if (c == ' ' || c == '#') {
            result += '\\';
        } else if (c == '$') {
            result += '$';
        }
        result += c;
    }
    return result;
}

} // namespace

void writeFiles(const fs::path& folder, const std::vector<GeneratedFile>& files)
{
    Pending pending;
    for (const GeneratedFile& file : files) {
        const fs::path path = folder / file.path;
        if (textOf(path) != file.text) {
            pending.write(path, file.text);
        }
    }
    pending.putIntoPlace();
}

std::string dependencies(const std::vector<std::string>& targets, const std::vector<std::string>& read)
{
    std::string text;
    for (const std::string& target : targets) {
        text += (text.empty() ? "" : " ") + escaped(target);
    }
    text += ":";
    for (const std::string& path : read) {
        text += " \\\n  " + escaped(path);
    }
    return text + "\n";
}

} // namespace ovra::plex::idl
