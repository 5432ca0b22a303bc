// SPDX-License-Identifier: Apache-2.0
#include "CodecEncoder.hpp"
#include "Md5.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

/// A hash holds a key of so many bytes as it is.
constexpr std::size_t HashSize = 16;

bool hasKey(const Type& type)
{
    if (const auto* const structure = as<StructType>(type)) {
        return structure->hasKey;
    }
    const auto* const choice = as<UnionType>(type);
    return choice != nullptr && choice->discriminatorIsKey;
}

std::array<std::uint8_t, HashSize> hashOf(const std::vector<std::uint8_t>& key)
{
    return md5({reinterpret_cast<const char*>(key.data()), key.size()});
}

} // namespace

std::optional<std::array<std::uint8_t, 16>> keyHash(const Type& type, const Datum& value, XcdrVersion version,
                                                    const CodecOptions& options)
{
    if (!hasKey(resolved(type))) {
        return std::nullopt;
    }
    Encoder encoder({version, std::endian::big}, options, Encoder::Part::Key, 0);
    encoder.write(type, value);
    const std::vector<std::uint8_t> key = encoder.take();
    const LargestSize largest = largestKey(type, version, options.delimitsEnumerations);
    if (!largest.isBounded || largest.bytes > HashSize) {
        return hashOf(key);
    }
    std::array<std::uint8_t, HashSize> hash{};
    std::ranges::copy(key, hash.begin());
    return hash;
}

} // namespace ovra::plex::idl
