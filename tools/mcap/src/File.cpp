// SPDX-License-Identifier: Apache-2.0
#include "File.hpp"

#include <plex/mcap/Records.hpp>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ovra::plex::mcap
{

namespace
{

[[noreturn]] void fail(const char* action, const std::filesystem::path& path, int error)
{
    throw FileError(std::string("cannot ") + action + " \"" + path.string() +
                    "\": " + std::generic_category().message(error));
}

int opened(const char* action, const std::filesystem::path& path, int flags)
{
    const int number = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    if (number < 0) {
        fail(action, path, errno);
    }
    return number;
}

std::uint64_t sizeOf(const std::filesystem::path& path, const Descriptor& descriptor)
{
    struct stat status = {};
    if (fstat(descriptor.number(), &status) != 0) {
        fail("read", path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError("cannot read \"" + path.string() + "\": it is no ordinary file");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

} // namespace

Descriptor::~Descriptor()
{
    ::close(number_);
}

OutputFile::OutputFile(const std::filesystem::path& path, bool overwrites)
    : path_(path)
    , descriptor_(opened("write", path, O_WRONLY | O_CREAT | (overwrites ? O_TRUNC : O_EXCL)))
{
}

void OutputFile::append(std::span<const std::uint8_t> bytes)
{
    auto left = bytes;
    while (!left.empty()) {
        const auto count = ::write(descriptor_.number(), left.data(), left.size());
        if (count >= 0) {
            left = left.subspan(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            const int error = errno;
            // Where the piece of a record can not be taken away, readers will pass over it.
            [[maybe_unused]] const int shortened = ftruncate(descriptor_.number(), static_cast<off_t>(size_));
            fail("write", path_, error);
        }
    }
    size_ += bytes.size();
}

void OutputFile::synchronise()
{
    if (fsync(descriptor_.number()) != 0 && errno != EINVAL &&
        errno != EROFS) { // a pipe has nothing to wait for
        fail("write", path_, errno);
    }
}

InputFile::InputFile(const std::filesystem::path& path)
    : path_(path)
    , descriptor_(opened("read", path, O_RDONLY))
    , size_(sizeOf(path, descriptor_))
{
}

void InputFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    while (!bytes.empty()) {
        const auto count =
            ::pread(descriptor_.number(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            offset += static_cast<std::uint64_t>(count);
        } else if (count == 0) {
            throw FileError("cannot read \"" + path_.string() + "\": it has become shorter meanwhile");
        } else if (errno != EINTR) {
            fail("read", path_, errno);
        }
    }
}

std::vector<std::uint8_t> InputFile::read(std::uint64_t offset, std::uint64_t size) const
{
    std::vector<std::uint8_t> bytes(size);
    read(offset, bytes);
    return bytes;
}

} // namespace ovra::plex::mcap
