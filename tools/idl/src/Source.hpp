// SPDX-License-Identifier: Apache-2.0
// The files that a definition is made of, with their texts.
#pragma once

#include <plex/idl/Model.hpp>
#include <plex/idl/Parse.hpp>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::idl
{

/// A text with a name. It does not move while there are tokens that view it.
struct Source {
    static constexpr std::size_t LargestText = 16'000'000; ///< bytes; a device may have no end

    std::string path;
    std::string text; ///< without a byte order mark; empty where it is too large
    bool included = false;
    bool isTooLarge = false;
    bool once = false; ///< `#pragma once` was met

    /// The text of a line, without its end; empty where there is no such line. @param number from 1.
    std::string_view line(std::uint32_t number) const;

private:
    mutable std::vector<std::size_t> starts_; ///< of the lines; filled when the first one is asked for
};

/// All files that were read, each once.
class Sources
{
public:
    explicit Sources(ParseOptions::FileReader readFile);

    enum class Role : bool { Named, Included };

    /// Takes a text as the next file. @returns its index.
    std::uint32_t add(const std::string& path, std::string text, Role role = Role::Named);

    /// Finds a file by its path, reading it where it was not read before; however the path is written, it is
    /// the same file. @param role of a file that is read now. @returns its index, or nothing.
    std::optional<std::uint32_t> load(const std::string& path, Role role = Role::Named);

    std::uint32_t count() const { return static_cast<std::uint32_t>(sources_.size()); }

    Source& operator[](std::uint32_t index) { return *sources_[index]; }

    const Source& operator[](std::uint32_t index) const { return *sources_[index]; }

    std::vector<SourceFile> files() const;

private:
    ParseOptions::FileReader readFile_;
    std::vector<std::unique_ptr<Source>> sources_;
    std::map<std::string, std::uint32_t> indices_; ///< by absolute paths
};

} // namespace ovra::plex::idl
