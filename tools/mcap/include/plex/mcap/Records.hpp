// SPDX-License-Identifier: Apache-2.0
// What a file of the format MCAP holds.
//
// Times are nanoseconds, by convention since 1970.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>

namespace ovra::plex::mcap
{

/// How the chunks of a file are compressed.
enum class Compression : std::uint8_t { None, Lz4, Zstd };

struct Header {
    std::string profile; ///< what the file keeps to besides the format; empty: nothing
    std::string library; ///< who has written it
};

/// What the messages of a channel look like.
struct Schema {
    std::uint16_t id = 0;
    std::string name;     ///< of the type
    std::string encoding; ///< of the data: "omgidl"
    std::string data;
};

/// A stream of messages.
struct Channel {
    std::uint16_t id = 0;
    std::uint16_t schema = 0; ///< 0: none
    std::string topic;
    std::string encoding; ///< of its messages: "cdr"
    std::map<std::string, std::string> metadata;
};

struct Message {
    std::uint16_t channel = 0;
    std::uint32_t sequence = 0;
    std::uint64_t logTime = 0;     ///< when it was recorded
    std::uint64_t publishTime = 0; ///< when it was sent
    std::span<const std::uint8_t> data;
};

/// How much a file holds.
struct Statistics {
    std::uint64_t messages = 0;
    std::uint64_t begin = 0; ///< the earliest log time
    std::uint64_t end = 0;   ///< the latest one
    std::map<std::uint16_t, std::uint64_t> messagesOfChannels;
};

/// The file can not be opened, read or written: what the system says.
class FileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What is read is no file of this format, or a damaged one. The text says what is wrong, and at which byte.
class FormatError : public std::runtime_error
{
public:
    FormatError(const std::string& what, std::uint64_t offset)
        : std::runtime_error(what + ", at byte " + std::to_string(offset))
        , offset_(offset)
    {
    }

    std::uint64_t offset() const { return offset_; }

private:
    std::uint64_t offset_;
};

} // namespace ovra::plex::mcap
