// SPDX-License-Identifier: Apache-2.0
// What reading and writing values share: how types lie in payloads, their defaults, and what values they
// have.
#pragma once

#include <plex/idl/Codec.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ovra::plex::idl
{

/// Identifiers of parameters in XCDR version 1, without their flags.
inline constexpr std::uint32_t HighestShortId = 0x3F00;
inline constexpr std::uint32_t ExtendedParameter = 0x3F01;
inline constexpr std::uint32_t EndOfParameters = 0x3F02;
inline constexpr std::uint32_t IgnoredParameter = 0x3F03;

/// The id of a union's discriminator.
inline constexpr std::uint32_t DiscriminatorId = 0;

/// How the members of a struct or union follow one another.
enum class Layout : std::uint8_t { Plain, Delimited, Parameters };

Layout layoutOf(Extensibility extensibility, XcdrVersion version);

/// That of a struct or union; others are final.
Extensibility extensibilityOf(const Type& type);

/// Octet or uint8: a list of them is kept as bytes.
bool isByte(const Type& type);

/// The bytes that a value takes at least, padding apart; 0 where it may take none.
std::uint64_t leastSize(const Type& declared, XcdrVersion version);

/// What the header of a member in XCDR version 2 takes from the member's own length: 5 the bytes that its
/// first 32 bits count, 6 as many words of 4 bytes, 7 of 8 bytes; 0 nothing.
std::uint32_t sharedLengthCode(const Type& declared, const CodecOptions& options);

/// The members of structs in the order of the encoding, found once.
class MemberLists
{
public:
    const std::vector<const Member*>& of(const StructType& type);
    /// Those that make up the key, by id: all of them where none is marked.
    const std::vector<const Member*>& keysOf(const StructType& type);

private:
    using Lists = std::unordered_map<const StructType*, std::vector<const Member*>>;

    Lists all_;
    Lists keys_;
};

// --- Defaults ----------------------------------------------------------------------------------------------

/// @param type resolved. @returns for an array nothing but the default's mark: its elements have their own.
Datum defaultOf(const Type& type);

Datum defaultOf(const Member& member);

/// A discriminator as a value of its type, and back.
Datum discriminatorDatum(const Type& declared, std::uint64_t bits);
std::uint64_t discriminatorBits(const Datum& value);

// --- What is wrong with a value; nothing where it is one of the type ------------------------------------

using Fault = std::optional<std::string>;

Fault faultOf(const StringType& type, std::string_view text);
Fault faultOf(const EnumType& type, std::int64_t number, const CodecOptions& options);
Fault faultOfLength(const SequenceType& type, std::uint64_t length);
/// @param type signed or unsigned, or a bitmask.
Fault faultOfNumber(const Type& type, std::int64_t number);
Fault faultOfNumber(const Type& type, std::uint64_t number);
Fault faultOfCase(const UnionType& type, const Datum& discriminator, const CodecOptions& options);

const Enumerator* findEnumerator(const EnumType& type, std::int64_t number);

/// "wstring is not supported"
std::string unsupported(const Type& type);

} // namespace ovra::plex::idl
