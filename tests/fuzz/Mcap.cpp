// SPDX-License-Identifier: Apache-2.0
#include "Check.hpp"
#include "Target.hpp"

#include <plex/mcap/Reader.hpp>

#include <cstdint>
#include <span>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace plex::fuzz
{

namespace
{

using namespace ovra::plex::mcap;

/// A file in memory.
class MemoryFile
{
public:
    explicit MemoryFile(std::span<const std::uint8_t> content)
        : descriptor_(memfd_create("fuzz", MFD_CLOEXEC))
    {
        check(descriptor_ >= 0 &&
                  write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
              "there is room for the input");
    }

    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    ~MemoryFile() { close(descriptor_); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    const int descriptor_;
};

/// Reads all messages. @returns how many there are.
std::uint64_t readAll(Reader& reader)
{
    std::uint64_t count = 0;
    std::uint64_t last = 0;
    std::uint64_t bytes = 0;
    while (const auto message = reader.next()) {
        check(reader.channels().contains(message->channel), "each message has a channel");
        bytes +=
            message->data.empty() ? 0U : message->data.front() + message->data.back(); // they can be read
        check(count == 0 || message->logTime >= last || !reader.cutAt(), "where all was read, times go up");
        last = message->logTime;
        ++count;
    }
    check(bytes <= count * 2 * 255, "bytes are bytes");
    return count;
}

} // namespace

/// Whatever a file says, there are messages or a complaint that names a place in it; the second time as at
/// first.
void run(std::span<const std::uint8_t> input)
{
    const MemoryFile file(input);
    ReaderOptions options;
    options.mostChunkBytes = 1U << 20U;
    options.mostMemoryBytes = 4U << 20U;
    try {
        Reader reader(file.path(), options);
        check(reader.cutAt().value_or(0) <= input.size(), "the cut is within the file");
        const auto count = readAll(reader);
        reader.rewind();
        check(readAll(reader) == count, "the messages are the same again");
    } catch (const FormatError& error) {
        check(error.offset() <= input.size(), "a complaint names a place in the file");
    }
}

} // namespace plex::fuzz
