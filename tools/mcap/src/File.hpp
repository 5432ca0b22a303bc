// SPDX-License-Identifier: Apache-2.0
// Files of the system.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace ovra::plex::mcap
{

/// A descriptor, which closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int number() const { return number_; }

private:
    const int number_;
};

/// A file that grows. What is appended is in it whole or not at all.
class OutputFile
{
public:
    /// @throws FileError, also where it is there already and may not be overwritten.
    OutputFile(const std::filesystem::path& path, bool overwrites);

    /// @throws FileError; the file is as long as before then.
    void append(std::span<const std::uint8_t> bytes);

    /// Waits until the file is on the disk. @throws FileError where it can not be.
    void synchronise();

    std::uint64_t size() const { return size_; }

private:
    const std::filesystem::path path_;
    const Descriptor descriptor_;
    std::uint64_t size_ = 0;
};

/// A file that is read from any place.
class InputFile
{
public:
    /// @throws FileError.
    explicit InputFile(const std::filesystem::path& path);

    std::uint64_t size() const { return size_; }

    /// Reads bytes that must be in the file. @throws FileError.
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) const;
    std::vector<std::uint8_t> read(std::uint64_t offset, std::uint64_t size) const;

private:
    const std::filesystem::path path_;
    const Descriptor descriptor_;
    std::uint64_t size_;
};

} // namespace ovra::plex::mcap
