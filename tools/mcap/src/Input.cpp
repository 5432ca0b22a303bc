// SPDX-License-Identifier: Apache-2.0
#include "Input.hpp"

#include <utility>

namespace ovra::plex::mcap
{

Input Input::ofChunk(std::span<const std::uint8_t> bytes, std::uint64_t chunk)
{
    Input input(bytes, chunk);
    input.isChunk_ = true;
    return input;
}

void Input::fail(const std::string& what) const
{
    throw FormatError(what + (isChunk_ ? " in the chunk" : ""), offset());
}

std::span<const std::uint8_t> Input::bytes(std::uint64_t size)
{
    if (size > left()) {
        fail("a record is longer than the room that it has");
    }
    const auto found = bytes_.subspan(position_, size);
    position_ += size;
    return found;
}

std::string Input::text()
{
    const auto read = bytes(number<std::uint32_t>());
    return {read.begin(), read.end()};
}

Input Input::part(std::uint64_t size)
{
    Input input(*this);
    bytes(size);
    input.bytes_ = bytes_.first(position_);
    return input;
}

std::map<std::string, std::string> Input::texts()
{
    std::map<std::string, std::string> map;
    for (auto entries = list(); entries.left() > 0;) {
        auto key = entries.text();
        map[std::move(key)] = entries.text();
    }
    return map;
}

std::map<std::uint16_t, std::uint64_t> Input::numbers()
{
    std::map<std::uint16_t, std::uint64_t> map;
    for (auto entries = list(); entries.left() > 0;) {
        const auto key = entries.number<std::uint16_t>();
        map[key] = entries.number<std::uint64_t>();
    }
    return map;
}

std::optional<Record> nextRecord(Input& input)
{
    if (input.left() == 0) {
        return std::nullopt;
    }
    const auto opcode = static_cast<Opcode>(input.number<std::uint8_t>());
    const auto length = input.number<std::uint64_t>();
    return Record{opcode, input.part(length)};
}

} // namespace ovra::plex::mcap
