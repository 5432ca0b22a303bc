// SPDX-License-Identifier: Apache-2.0
#include "MemberIds.hpp"

#include "Md5.hpp"

namespace ovra::plex::idl
{

std::uint32_t hashedMemberId(std::string_view name)
{
    const auto digest = md5(name);
    std::uint32_t id = 0;
    for (std::size_t i = 4; i-- > 0;) {
        id = id << 8U | digest.at(i);
    }
    return id & HighestMemberId;
}

} // namespace ovra::plex::idl
