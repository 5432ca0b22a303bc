// SPDX-License-Identifier: Apache-2.0
#include "Md5.hpp"

#include <bit>
#include <string>

namespace ovra::plex::idl
{

namespace
{

using State = std::array<std::uint32_t, 4>;

/// The integer parts of 2³² |sin i|.
constexpr std::array<std::uint32_t, 64> sines{
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr std::array<std::array<int, 4>, 4> rotations{
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

std::uint32_t mixed(std::size_t round, const State& s)
{
    switch (round) {
    case 0:
        return (s[1] & s[2]) | (~s[1] & s[3]);
    case 1:
        return (s[1] & s[3]) | (s[2] & ~s[3]);
    case 2:
        return s[1] ^ s[2] ^ s[3];
    default:
        return s[2] ^ (s[1] | ~s[3]);
    }
}

std::size_t wordOf(std::size_t step)
{
    constexpr std::array<std::array<std::size_t, 2>, 4> orders{{{1, 0}, {5, 1}, {3, 5}, {7, 0}}};
    const auto& order = orders.at(step / 16);
    return (order[0] * step + order[1]) % 16;
}

std::uint32_t littleEndian(std::string_view bytes)
{
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) {
        word = word << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return word;
}

void addBlock(State& state, std::string_view block)
{
    State s = state;
    for (std::size_t step = 0; step < 64; ++step) {
        const std::size_t round = step / 16;
        const std::uint32_t sum =
            s[0] + mixed(round, s) + sines.at(step) + littleEndian(block.substr(4 * wordOf(step), 4));
        s = {s[3], s[1] + std::rotl(sum, rotations.at(round).at(step % 4)), s[1], s[2]};
    }
    for (std::size_t i = 0; i < 4; ++i) {
        state.at(i) += s.at(i);
    }
}

/// The text with its length behind it, as a whole number of blocks.
std::string padded(std::string_view text)
{
    std::string result(text);
    result += '\x80';
    result.resize((result.size() + 8 + 63) / 64 * 64 - 8);
    for (unsigned i = 0; i < 8; ++i) {
        result += static_cast<char>(std::uint64_t{text.size()} * 8 >> 8 * i);
    }
    return result;
}

} // namespace

std::array<std::uint8_t, 16> md5(std::string_view text)
{
    State state{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const std::string blocks = padded(text);
    for (std::size_t i = 0; i < blocks.size(); i += 64) {
        addBlock(state, std::string_view(blocks).substr(i, 64));
    }
    std::array<std::uint8_t, 16> digest{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest.at(i) = static_cast<std::uint8_t>(state.at(i / 4) >> 8 * (i % 4));
    }
    return digest;
}

} // namespace ovra::plex::idl
