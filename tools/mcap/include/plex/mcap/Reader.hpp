// SPDX-License-Identifier: Apache-2.0
// Reads files of the format MCAP, its messages in the order of their log times.
//
// What a file holds is known by its summary, else by reading all of it once. A file that was cut off, as its
// writer was killed, is read up to there. Whatever its numbers say, memory stays bounded. A Reader belongs to
// one thread at a time.
#pragma once

#include <plex/mcap/Records.hpp>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace ovra::plex::mcap
{

struct ReaderOptions {
    std::uint64_t mostChunkBytes = 256U << 20U; ///< of a chunk, uncompressed, and of the summary
    std::uint64_t mostMemoryBytes = 1024U
                                    << 20U; ///< of chunks that are read at a time, as their times overlap
};

class Reader
{
public:
    /// @throws FileError where it can not be read; FormatError where it is no such file, or damaged.
    explicit Reader(const std::filesystem::path& file, const ReaderOptions& options = {});
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader();

    const Header& header() const;
    const std::map<std::uint16_t, Schema>& schemas() const;
    const std::map<std::uint16_t, Channel>& channels() const;
    const Statistics& statistics() const;

    /// Where the file was cut off: all before was read. @returns nothing: it is complete.
    std::optional<std::uint64_t> cutAt() const;

    /// The next message. Its data is valid until the next call. @returns nothing: there are no more.
    /// @throws FileError, FormatError.
    std::optional<Message> next();

    /// Begins again with the first message.
    void rewind();

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace ovra::plex::mcap
