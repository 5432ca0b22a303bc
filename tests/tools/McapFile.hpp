// SPDX-License-Identifier: Apache-2.0
// Files for the tests of recordings: in a folder of their own, as bytes, and byte by byte.
#pragma once

#include <plex/mcap/Reader.hpp>
#include <plex/mcap/Writer.hpp>

#include <gmock/gmock.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace ovra::plex::mcap
{

/// A message with its data.
struct Kept {
    std::uint16_t channel;
    std::uint32_t sequence;
    std::uint64_t logTime;
    std::uint64_t publishTime;
    std::string data;

    bool operator==(const Kept&) const = default;
};

inline std::vector<Kept> messagesOf(Reader& reader)
{
    std::vector<Kept> all;
    while (const auto message = reader.next()) {
        all.push_back({message->channel,
                       message->sequence,
                       message->logTime,
                       message->publishTime,
                       {message->data.begin(), message->data.end()}});
    }
    return all;
}

inline void write(Writer& writer, const Kept& message)
{
    writer.write({message.channel,
                  message.sequence,
                  message.logTime,
                  message.publishTime,
                  {reinterpret_cast<const std::uint8_t*>(message.data.data()), message.data.size()}});
}

/// A number, little-endian.
template <class Number>
std::string bytesOf(Number number)
{
    std::string bytes;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8U * i));
    }
    return bytes;
}

inline std::string textOf(const std::string& text)
{
    return bytesOf(static_cast<std::uint32_t>(text.size())) + text;
}

inline std::string record(int opcode, const std::string& content)
{
    return static_cast<char>(opcode) + bytesOf(static_cast<std::uint64_t>(content.size())) + content;
}

inline const std::string magicBytes{"\x89MCAP0\r\n"};

/// A file as others may write it: without chunks, index and summary.
inline std::string plainFile(const std::string& records)
{
    return magicBytes + record(0x01, textOf("") + textOf("by hand")) + records +
           record(0x0F, bytesOf(std::uint32_t{0})) + record(0x02, std::string(20, '\0')) + magicBytes;
}

/// A channel "numbers" with number 1, without a schema.
inline std::string plainChannel()
{
    return record(0x04, bytesOf(std::uint16_t{1}) + bytesOf(std::uint16_t{0}) + textOf("numbers") +
                            textOf("cdr") + textOf(""));
}

inline std::string plainMessage(std::uint64_t time, const std::string& data)
{
    return record(0x05, bytesOf(std::uint16_t{1}) + bytesOf(std::uint32_t{7}) + bytesOf(time) +
                            bytesOf(time) + data);
}

/// A chunk that is not compressed. @param crc 0: none.
inline std::string plainChunk(const std::string& records, std::uint32_t crc = 0,
                              const std::string& compression = "")
{
    return record(0x06, bytesOf(std::uint64_t{0}) + bytesOf(std::uint64_t{0}) +
                            bytesOf(static_cast<std::uint64_t>(records.size())) + bytesOf(crc) +
                            textOf(compression) + bytesOf(static_cast<std::uint64_t>(records.size())) +
                            records);
}

/// A folder of its own, which goes.
class McapTest : public testing::Test
{
protected:
    ~McapTest() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path file(const std::string& name = "recording.mcap") const { return folder_ / name; }

    std::string content() const
    {
        std::ifstream stream(file(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void setContent(const std::string& bytes) const { std::ofstream(file(), std::ios::binary) << bytes; }

    /// Two channels, several chunks; with a summary at the end.
    std::vector<Kept> recorded(Compression compression, std::size_t messages = 100,
                               std::size_t perChunk = 10) const
    {
        WriterOptions options;
        options.compression = compression;
        options.library = "test";
        options.overwrites = true;
        Writer writer(file(), options);
        const auto schema = writer.add(Schema{0, "a::B", "omgidl", "module a { struct B { long c; }; };"});
        const auto first = writer.add(Channel{0, schema, "first", "cdr", {{"key", "value"}, {"other", ""}}});
        const auto second = writer.add(Channel{0, 0, "second", "cdr", {}});
        std::vector<Kept> kept;
        for (std::size_t i = 0; i < messages; ++i) {
            kept.push_back({i % 3 == 0 ? second : first, static_cast<std::uint32_t>(i), 1000 + 10 * i,
                            900 + i, std::string(i % 40, static_cast<char>('a' + i % 26))});
            write(writer, kept.back());
            if (i % perChunk == perChunk - 1) {
                writer.flush();
            }
        }
        writer.close();
        return kept;
    }

    /// What reading the file ends with.
    std::string complaint() const
    {
        try {
            Reader reader(file());
            messagesOf(reader);
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

private:
    const std::filesystem::path folder_ = [] {
        std::string pattern = std::filesystem::temp_directory_path() / "plex-mcap-XXXXXX";
        return std::filesystem::path(mkdtemp(pattern.data()));
    }();
};

} // namespace ovra::plex::mcap
