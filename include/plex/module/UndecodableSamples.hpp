// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ovra::plex::ps
{

/// The samples whose payload can not be decoded, gathered during the takes and reads of the calling thread
/// from the making of this object to its end. Where samples are lent out, Fast DDS decodes in the taking
/// thread and does not look at the outcome (ReadTakeCommand.hpp in 2.14 and 3).
///
/// Objects of one thread nest: the innermost gathers.
class PLEX_EXPORT UndecodableSamples
{
public:
    UndecodableSamples() : innermost_(innermost()), outer_(innermost_) { innermost_ = this; }

    UndecodableSamples(const UndecodableSamples&) = delete;
    UndecodableSamples& operator=(const UndecodableSamples&) = delete;

    ~UndecodableSamples() { innermost_ = outer_; }

    /// Notes, if a take or read is under way on this thread, that a sample can not be decoded.
    /// @param bytes its payload.
    static void add(const void* sample, std::span<const std::uint8_t> bytes);

    bool areAny() const { return !samples_.empty(); }

    std::size_t count() const { return samples_.size(); }

    bool contain(const void* sample) const { return std::ranges::find(samples_, sample) != samples_.end(); }

    /// The first bytes of the last one's payload.
    std::span<const std::uint8_t> lastBytes() const { return lastBytes_; }

private:
    static constexpr std::size_t mostBytes = 32;

    /// Of the calling thread, one in the process.
    static UndecodableSamples*& innermost();

    UndecodableSamples*& innermost_;
    UndecodableSamples* const outer_;
    std::vector<const void*> samples_;
    std::vector<std::uint8_t> lastBytes_;
};

} // namespace ovra::plex::ps
