// SPDX-License-Identifier: Apache-2.0
#include "CdrInput.hpp"

namespace ovra::plex::idl
{

void CdrInput::need(std::size_t count) const
{
    if (count > remaining()) {
        fail(std::to_string(count) + " bytes are needed, " + std::to_string(remaining()) + " are left");
    }
}

void CdrInput::align(std::size_t alignment)
{
    const std::size_t step = std::min(alignment, highestAlignment_);
    const std::size_t padding = (step - (position_ - origin_) % step) % step;
    position_ += std::min(padding, remaining());
}

std::span<const std::uint8_t> CdrInput::octets(std::size_t count)
{
    need(count);
    const auto result = bytes_.subspan(position_, count);
    position_ += count;
    return result;
}

} // namespace ovra::plex::idl
