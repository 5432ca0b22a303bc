// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ovra::plex::idl
{

/// Half of a pair of UTF-16.
constexpr bool isSurrogate(char32_t character)
{
    return character >= 0xD800 && character <= 0xDFFF;
}

} // namespace ovra::plex::idl
