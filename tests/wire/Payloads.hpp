// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// Payloads laid out by hand, as they stand on the wire.
namespace plex::test
{

using Bytes = std::vector<std::uint8_t>;

/// The members of a value as bit patterns: NaNs and signs of zero count.
using Bits = std::vector<std::uint64_t>;

/// The bytes that hexadecimal text spells; blanks are ignored.
inline Bytes bytes(std::string_view hex)
{
    std::string digits(hex);
    std::erase(digits, ' ');
    Bytes result;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        result.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return result;
}

/// An encoding as the encapsulation header names it.
struct Encoding {
    std::uint16_t id;
    std::endian order;
    bool delimited;
};

inline constexpr std::array<Encoding, 6> encodings{{{0x0000, std::endian::big, false},
                                                    {0x0001, std::endian::little, false},
                                                    {0x0006, std::endian::big, false},
                                                    {0x0007, std::endian::little, false},
                                                    {0x0008, std::endian::big, true},
                                                    {0x0009, std::endian::little, true}}};

inline std::ostream& operator<<(std::ostream& out, const Encoding& encoding)
{
    return out << "encoding 0x" << std::hex << std::setw(4) << std::setfill('0') << encoding.id << std::dec;
}

/// Appends a number's bytes.
template <class Number>
void append(Bytes& payload, Number number, std::endian order)
{
    auto raw = std::bit_cast<std::array<std::uint8_t, sizeof number>>(number);
    if (order != std::endian::native) {
        std::reverse(raw.begin(), raw.end());
    }
    payload.insert(payload.end(), raw.begin(), raw.end());
}

inline Bytes header(std::uint16_t id)
{
    Bytes payload;
    append(payload, id, std::endian::big);
    payload.resize(4);
    return payload;
}

/// A payload whose delimiter header, where there is one, says what it likes.
inline Bytes payloadOf(const Encoding& encoding, const Bits& members, std::uint32_t delimiter)
{
    Bytes payload = header(encoding.id);
    if (encoding.delimited) {
        append(payload, delimiter, encoding.order);
    }
    for (const auto member : members) {
        append(payload, member, encoding.order);
    }
    return payload;
}

inline Bytes payloadOf(const Encoding& encoding, const Bits& members)
{
    return payloadOf(encoding, members, static_cast<std::uint32_t>(members.size() * sizeof(double)));
}

inline Bytes firstBytes(const Bytes& payload, std::size_t count)
{
    return {payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(count)};
}

} // namespace plex::test
