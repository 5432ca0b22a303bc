// SPDX-License-Identifier: Apache-2.0
// Writes files of the format MCAP: messages in chunks with an index, and a summary at the end.
//
// Whatever ends the process, a chunk that was written stays readable. A Writer belongs to one thread at a
// time.
#pragma once

#include <plex/mcap/Records.hpp>

#include <filesystem>
#include <memory>
#include <string>

namespace ovra::plex::mcap
{

struct WriterOptions {
    Compression compression = Compression::Zstd;
    std::size_t chunkBytes = 4U << 20U; ///< a chunk ends when it has so many, uncompressed
    bool overwrites = false;            ///< whether the file may be there already
    std::string library;                ///< for the header: who writes
};

class Writer
{
public:
    /// @throws FileError where the file can not be made.
    Writer(const std::filesystem::path& file, const WriterOptions& options);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Leaves a file that was not closed as it is: without its last chunk and its summary.
    ~Writer();

    /// Adds a schema or a channel. The id is the writer's matter.
    /// @returns the id. @throws std::length_error where there are 65535 of them.
    std::uint16_t add(Schema schema);
    std::uint16_t add(Channel channel);

    /// Adds a message of a channel that was added. Ends the chunk where that is long enough.
    /// @throws FileError where the disk is full, for example. All that was written before stays readable.
    void write(const Message& message);

    /// Ends the chunk: what was added so far survives the end of the process. @throws FileError as write().
    void flush();

    /// Completes the file, and waits until it is on the disk. @throws FileError as write().
    void close();

    const Statistics& statistics() const;

    /// The size of the file in bytes.
    std::uint64_t size() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace ovra::plex::mcap
