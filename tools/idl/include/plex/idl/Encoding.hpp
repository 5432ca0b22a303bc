// SPDX-License-Identifier: Apache-2.0
// What of the encoding (DDS-XTypes 1.3, 7.4) follows from types alone. Any thread may call this.
#pragma once

#include <plex/idl/Model.hpp>

#include <cstdint>
#include <vector>

namespace ovra::plex::idl
{

enum class XcdrVersion : std::uint8_t { Xcdr1, Xcdr2 };

/// Where implementations of the standard differ.
struct EncodingRules {
    /// In XCDR version 2 a delimiter header stands before sequences and arrays of enums and bitmasks, as the
    /// standard has it. Fast CDR has none.
    bool delimitsEnumerations = false;
    /// Of what key hashes are made of. Generators for Fast DDS 2 take version 1, those for Fast DDS 3 take 2.
    XcdrVersion keyVersion = XcdrVersion::Xcdr1;
};

/// An array of arrays is one with the dimensions of all of them.
struct ArrayShape {
    explicit ArrayShape(const ArrayType& type);

    std::vector<std::uint32_t> dimensions;
    const Type* element = nullptr; ///< neither an alias nor an array
    std::uint64_t count = 1;       ///< of elements; the greatest number where there are more
};

/// The bytes of a primitive, enum or bitmask; 0 for others.
std::uint32_t widthOf(const Type& type);

/// Whether a delimiter header stands before a list of such elements in XCDR version 2.
/// @param delimitsEnumerations whether it does so before enums and bitmasks.
bool delimitsListOf(const Type& element, bool delimitsEnumerations);

/// A sequence or array of enums or bitmasks, arrays of arrays looked through; aliases are not.
bool isListOfEnumerations(const Type& type);

/// Whether values of a type take no bytes in some encoding: structs without members, and what consists of
/// such.
bool takesNothing(const Type& type);

/// How many elements a sequence may have; 0: any number. Where elements take no bytes it has a bound that its
/// declaration does not say: nothing else in a payload would limit their number.
std::uint32_t boundOf(const SequenceType& type);

/// How many bytes something takes at most. Where that is not bounded, or too much to be set aside, it is what
/// room is made for at first.
struct LargestSize {
    std::uint32_t bytes = 0;
    bool isBounded = true;

    static constexpr std::uint64_t mostBounded = 64ULL << 20U; ///< that counts as bounded
    static constexpr std::uint64_t mostAtFirst = 64ULL << 10U; ///< where it is not
    static constexpr std::uint64_t assumedCharacters = 256;    ///< of a string without a bound
    static constexpr std::uint64_t assumedElements = 64;       ///< of a sequence without a bound

    static LargestSize of(std::uint64_t bytes, bool isBounded);
};

/// The size of what key hashes are made of (RTPS 2.5, 9.6.4.8): the key members of a type, or all of them
/// where none is marked, without headers. It is exact up to the 16 bytes at which it matters, and beyond
/// where it is bounded by not too much.
LargestSize largestKey(const Type& type, XcdrVersion version, bool delimitsEnumerations);

} // namespace ovra::plex::idl
