// SPDX-License-Identifier: Apache-2.0
// The file that a recording goes to, written by a thread of its own.
#pragma once

#include <plex/mcap/Writer.hpp>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace ovra::plex::tool
{

/// A value on its way to the file.
struct RecordedValue {
    std::size_t channel; ///< in the order in which channels were added, from 0 on
    std::uint32_t sequence;
    std::uint64_t logTime;
    std::uint64_t publishTime;
};

/// Takes what is to be written without waiting for the disk, up to a limit of what waits.
///
/// What was added is in the file within about half a second, and then survives a kill. Belongs to one thread.
class RecordingFile
{
public:
    /// @throws mcap::FileError where the file can not be made.
    RecordingFile(const std::filesystem::path& path, const mcap::WriterOptions& options);
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /// Leaves a file that was not closed without its summary.
    ~RecordingFile();

    /// Adds a channel with its schema, if it has one.
    void add(std::optional<mcap::Schema> schema, mcap::Channel channel);

    /// @returns false: too much waits for the disk, so the value is left out.
    bool add(const RecordedValue& value, std::span<const std::uint8_t> payload);

    /// Whether there is no sense in going on: the disk is full, for example.
    bool hasFailed() const { return failed_; }

    /// Of the file, in bytes.
    std::uint64_t size() const { return size_; }

    /// Writes what waits, and completes the file. @throws what writing has ended with.
    void close();

private:
    struct NewChannel {
        std::optional<mcap::Schema> schema;
        mcap::Channel channel;
    };

    struct Waiting {
        std::vector<NewChannel> channels;                          ///< which come before the values
        std::vector<std::pair<RecordedValue, std::size_t>> values; ///< each with its size
        std::vector<std::uint8_t> payloads;                        ///< one after another
    };

    void run();
    void write(const Waiting& waiting);
    void addChannel(const NewChannel& added);
    void end();

    mcap::Writer writer_;                                                   ///< from here on of the thread
    std::vector<std::uint16_t> ids_;                                        ///< of the channels
    std::map<std::tuple<std::string, std::string>, std::uint16_t> schemas_; ///< by name and text
    std::exception_ptr error_;                                              ///< until here
    std::mutex mutex_;                                                      ///< guards what follows
    std::condition_variable change_;
    Waiting waiting_;
    bool isEnding_ = false; ///< until here
    std::atomic<std::uint64_t> size_{0};
    std::atomic<bool> failed_{false};
    std::thread thread_;
};

} // namespace ovra::plex::tool
