// SPDX-License-Identifier: Apache-2.0
#include "Compression.hpp"
#include "Contents.hpp"
#include "Crc32.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

namespace ovra::plex::mcap
{

bool isEnded(const InputFile& file)
{
    const auto begin = file.read(0, std::min<std::uint64_t>(file.size(), magic.size()));
    if (begin.empty() || !std::ranges::equal(begin, std::span(magic).first(begin.size()))) {
        throw FormatError("this is no MCAP file of version 0: it begins otherwise", 0);
    }
    if (file.size() < 2 * magic.size() + prefixSize + footerSize) {
        return false;
    }
    return std::ranges::equal(file.read(file.size() - magic.size(), magic.size()), magic);
}

std::vector<std::uint8_t> load(const InputFile& file, const Section& section, const ReaderOptions& options)
{
    const auto limit = [&](std::uint64_t size) {
        if (size > options.mostChunkBytes) {
            throw FormatError("a record or chunk has " + std::to_string(size) + " bytes, and " +
                                  std::to_string(options.mostChunkBytes) + " are the most that is read",
                              section.offset);
        }
    };
    limit(section.length);
    auto bytes = file.read(section.offset, section.length);
    if (!section.isChunk) {
        return bytes;
    }
    Input input(bytes, section.offset);
    auto record = nextRecord(input);
    if (!record || record->opcode != Opcode::Chunk || input.left() > 0) {
        throw FormatError("the index names a chunk where there is none", section.offset);
    }
    auto& content = record->content;
    content.bytes(2 * sizeof(std::uint64_t)); // the times
    const auto size = content.number<std::uint64_t>();
    const auto crc = content.number<std::uint32_t>();
    const auto name = content.text();
    const auto records = content.bytes(content.number<std::uint64_t>());
    limit(size);
    const auto compression = compressionOf(name);
    if (!compression) {
        throw FormatError("a chunk has the unknown compression \"" + name + "\"", section.offset);
    }
    std::vector<std::uint8_t> uncompressed;
    if (!decompress(*compression, records, size, uncompressed)) {
        throw FormatError("a chunk can not be uncompressed", section.offset);
    }
    if (crc != 0 && crc != crc32(uncompressed)) {
        throw FormatError("a chunk has a wrong checksum", section.offset);
    }
    return uncompressed;
}

Input recordsOf(const Section& section, const std::vector<std::uint8_t>& bytes)
{
    return section.isChunk ? Input::ofChunk(bytes, section.offset) : Input(bytes, section.offset);
}

Header parseHeader(Input content)
{
    Header header;
    header.profile = content.text();
    header.library = content.text();
    return header;
}

Message parseMessage(Input content)
{
    Message message;
    message.channel = content.number<std::uint16_t>();
    message.sequence = content.number<std::uint32_t>();
    message.logTime = content.number<std::uint64_t>();
    message.publishTime = content.number<std::uint64_t>();
    message.data = content.bytes(content.left());
    return message;
}

void addSchema(Contents& contents, Input content)
{
    const Input begin = content;
    Schema schema;
    schema.id = content.number<std::uint16_t>();
    schema.name = content.text();
    schema.encoding = content.text();
    const auto data = content.bytes(content.number<std::uint32_t>());
    schema.data.assign(data.begin(), data.end());
    if (schema.id == 0) {
        return; // the format wants it to be passed over
    }
    const auto parts = [](const Schema& each) {
        return std::tie(each.name, each.encoding, each.data);
    };
    const auto [known, isNew] = contents.schemas.try_emplace(schema.id, schema);
    if (!isNew && parts(known->second) != parts(schema)) {
        begin.fail("there are two schemas with number " + std::to_string(schema.id));
    }
}

void addChannel(Contents& contents, Input content)
{
    const Input begin = content;
    Channel channel;
    channel.id = content.number<std::uint16_t>();
    channel.schema = content.number<std::uint16_t>();
    channel.topic = content.text();
    channel.encoding = content.text();
    channel.metadata = content.texts();
    const auto parts = [](const Channel& each) {
        return std::tie(each.schema, each.topic, each.encoding, each.metadata);
    };
    const auto [known, isNew] = contents.channels.try_emplace(channel.id, channel);
    if (!isNew && parts(known->second) != parts(channel)) {
        begin.fail("there are two channels with number " + std::to_string(channel.id));
    }
}

} // namespace ovra::plex::mcap
