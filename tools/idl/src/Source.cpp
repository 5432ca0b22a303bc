// SPDX-License-Identifier: Apache-2.0
#include "Source.hpp"

#include <array>
#include <filesystem>
#include <fstream>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Of a file that is too large a beginning that is too large as well.
std::optional<std::string> readFromDisk(const std::string& path)
{
    std::error_code failed;
    if (std::filesystem::is_directory(path, failed)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    std::array<char, 65536> part;
    while (text.size() <= Source::LargestText && (file.read(part.data(), part.size()), file.gcount() > 0)) {
        text.append(part.data(), static_cast<std::size_t>(file.gcount()));
    }
    return text;
}

std::string keyOf(const std::string& path)
{
    std::error_code failed;
    return std::filesystem::absolute(path, failed).lexically_normal().string();
}

} // namespace

std::string_view Source::line(std::uint32_t number) const
{
    if (starts_.empty()) {
        starts_.push_back(0);
        for (std::size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 1)) {
            starts_.push_back(i + 1);
        }
    }
    if (number == 0 || number > starts_.size()) {
        return {};
    }
    const std::size_t begin = starts_[number - 1];
    std::string_view line(text);
    line = line.substr(begin, line.find('\n', begin) - begin);
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

Sources::Sources(ParseOptions::FileReader readFile)
    : readFile_(readFile ? std::move(readFile) : ParseOptions::FileReader(readFromDisk))
{
}

std::uint32_t Sources::add(const std::string& path, std::string text, Role role)
{
    const auto index = static_cast<std::uint32_t>(sources_.size());
    if (text.starts_with(byteOrderMark)) {
        text.erase(0, byteOrderMark.size());
    }
    sources_.push_back(std::make_unique<Source>());
    auto& source = *sources_.back();
    source.path = path;
    source.isTooLarge = text.size() > Source::LargestText;
    source.text = source.isTooLarge ? std::string() : std::move(text);
    source.included = role == Role::Included;
    indices_.emplace(keyOf(path), index);
    return index;
}

std::optional<std::uint32_t> Sources::load(const std::string& path, Role role)
{
    if (const auto known = indices_.find(keyOf(path)); known != indices_.end()) {
        return known->second;
    }
    auto text = readFile_(path);
    return text ? std::optional(add(path, std::move(*text), role)) : std::nullopt;
}

std::vector<SourceFile> Sources::files() const
{
    std::vector<SourceFile> files;
    files.reserve(sources_.size());
    for (const auto& source : sources_) {
        files.push_back({source->path, source->included});
    }
    return files;
}

} // namespace ovra::plex::idl
