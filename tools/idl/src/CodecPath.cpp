// SPDX-License-Identifier: Apache-2.0
#include "CodecPath.hpp"

#include <plex/idl/Codec.hpp>

#include <ranges>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

std::string messageOf(const std::string& path, const std::string& text, std::optional<std::size_t> offset)
{
    return (path.empty() ? "" : path + ": ") + text +
           (offset ? " (offset " + std::to_string(*offset) + ")" : "");
}

} // namespace

CodecError::CodecError(std::string path, const std::string& text, std::optional<std::size_t> offset)
    : std::runtime_error(messageOf(path, text, offset))
    , path_(std::move(path))
    , offset_(offset)
{
}

CodecPath::Step::Step(CodecPath& path, std::string_view name) : path_(path)
{
    path_.push({name});
}

CodecPath::Step::Step(CodecPath& path, std::uint64_t index, const std::vector<std::uint32_t>* dimensions)
    : path_(path)
{
    path_.push({{}, index, dimensions});
}

CodecPath::Step::~Step()
{
    path_.parts_.pop_back();
}

void CodecPath::push(const Part& part)
{
    if (parts_.size() == MaximumNesting) {
        fail("values are nested more than " + std::to_string(MaximumNesting) + " deep");
    }
    parts_.push_back(part);
}

void CodecPath::append(std::string& text, const Part& part)
{
    if (!part.name.empty()) {
        text += text.empty() ? "" : ".";
        text += part.name;
        return;
    }
    std::string indices;
    std::uint64_t index = part.index;
    if (part.dimensions != nullptr) {
        for (std::size_t i = part.dimensions->size(); i-- > 1;) {
            indices.insert(0, "[" + std::to_string(index % (*part.dimensions)[i]) + "]");
            index /= (*part.dimensions)[i];
        }
    }
    text += "[" + std::to_string(index) + "]" + indices;
}

void CodecPath::fail(const std::string& text, std::optional<std::size_t> offset) const
{
    std::string path;
    for (const Part& part : parts_) {
        append(path, part);
    }
    throw CodecError(path, text, offset);
}

} // namespace ovra::plex::idl
