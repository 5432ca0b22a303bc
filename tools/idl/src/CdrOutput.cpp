// SPDX-License-Identifier: Apache-2.0
#include "CdrOutput.hpp"

#include <plex/idl/Codec.hpp>

#include <string>

namespace ovra::plex::idl
{

void CdrOutput::need(std::size_t count) const
{
    if (count > MaximumPayload - bytes_.size()) {
        fail("the payload takes more than " + std::to_string(MaximumPayload) + " bytes");
    }
}

void CdrOutput::align(std::size_t alignment)
{
    const std::size_t step = std::min(alignment, highestAlignment_);
    const std::size_t padding = (step - (bytes_.size() - origin_) % step) % step;
    need(padding);
    bytes_.resize(bytes_.size() + padding);
}

void CdrOutput::octets(std::span<const std::uint8_t> octets)
{
    need(octets.size());
    bytes_.insert(bytes_.end(), octets.begin(), octets.end());
}

void CdrOutput::insert(std::size_t position, std::size_t count)
{
    need(count);
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(position), count, 0);
    origin_ += origin_ >= position ? count : 0;
}

} // namespace ovra::plex::idl
