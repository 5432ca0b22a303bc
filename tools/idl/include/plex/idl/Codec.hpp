// SPDX-License-Identifier: Apache-2.0
// Values of a model's types as payloads (DDS-XTypes 1.3, 7.4; RTPS 2.5, 10.2) and as JSON (RFC 8259), without
// code that was generated for them. Meant for tools and tests: generated code is faster.
//
// Any thread may call these at any time. All of them throw CodecError, for whatever is wrong with their
// input, and recurse at most MaximumNesting deep. wstring, map, bitset and long double are not supported:
// values that have one are refused.
//
// As JSON:
//
// - boolean: `true` or `false`
// - octet and integers: a number, exact in 64 bits, without fraction and exponent
// - float and double: a number from which the same value is read, or `"NaN"`, `"Infinity"`, `"-Infinity"`;
//   other NaNs than the usual one have their bits, as in `"NaN(0x7fc00001)"`
// - char and wchar: a text of one character; a char beyond ASCII is that of ISO 8859-1; half of a surrogate
//   pair is a number
// - string: a text, or the array of its bytes where they are not UTF-8
// - enum: the name of the enumerator, or its number where it is not known
// - bitmask: the array of the names of the flags that are set, and the positions of those without a name
// - sequence and array: an array, which has an array in it for each further dimension
// - struct: an object with the members by name; an optional one that is absent is `null`
// - union: `{"discriminator": 1, "member": 0.5}`, without the member where no case is selected
#pragma once

#include <plex/idl/Datum.hpp>
#include <plex/idl/Encoding.hpp>
#include <plex/idl/Model.hpp>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::idl
{

/// So deep may values lie within one another: members, elements and cases.
inline constexpr std::size_t MaximumNesting = 512;

/// So many values that take no bytes, such as structs without members, may a payload have.
inline constexpr std::size_t MaximumEmptyValues = 4096;

/// So many values may stand in one JSON text, and so many bytes in one payload.
inline constexpr std::size_t MaximumJsonValues = std::size_t{1} << 22U;
inline constexpr std::size_t MaximumPayload = std::size_t{1} << 26U;

/// What is wrong: `path: text (offset N)`.
class CodecError : public std::runtime_error
{
public:
    /// @param path the member, as "list[3].name"; empty: the whole value. @param offset in bytes from the
    /// start of the payload, with its header; nothing where there is no payload.
    CodecError(std::string path, const std::string& text, std::optional<std::size_t> offset);

    const std::string& path() const { return path_; }

    std::optional<std::size_t> offset() const { return offset_; }

private:
    std::string path_;
    std::optional<std::size_t> offset_;
};

/// Where implementations differ, and how strict a reader is.
struct CodecOptions {
    /// In XCDR version 2 a delimiter header stands before sequences and arrays of enums and bitmasks, as the
    /// standard has it. Fast CDR has none.
    bool delimitsEnumerations = false;
    /// Numbers that no enumerator has are values of an enum. Else they are refused.
    bool keepsUnknownEnumerators = false;
    /// Discriminators that a union does not take are values of it, without a member. Else they are refused.
    bool keepsUnselected = false;
};

/// How a payload is written.
struct Encoding {
    XcdrVersion version = XcdrVersion::Xcdr1;
    std::endian order = std::endian::native;
    /// The payload has a length that is a multiple of 4; its options tell how many bytes were added.
    bool padded = false;
};

/// Reads a payload; its header decides how.
///
/// Plain CDR, versions 1 and 2, is read for final and appendable types, delimited CDR2 for these as well,
/// parameter lists for mutable ones. The payload may end with up to 3 bytes more, and one in plain CDR
/// version 1 of an appendable type with any number, as values of its later versions do. Members that a
/// delimited or mutable value lacks are left out, and members that it has beyond those of the type are
/// skipped unless they must be understood. Text without a terminating NUL is refused, a text of length 0 is
/// empty.
///
/// Values that do not fit their types are refused, whatever @try_construct says of them.
///
/// Allocates at most in proportion to the payload: 1 MB for 20 bytes.
Datum decode(const Type& type, std::span<const std::uint8_t> payload, const CodecOptions& options = {});

/// Writes a payload, with its header. Where the standard leaves a choice, the bytes are those of Fast CDR:
/// the shortest header that a member can have. Members that are left out are written with their defaults.
///
/// In XCDR version 1 alignment counts from the last parameter's value on, behind that parameter as well.
std::vector<std::uint8_t> encode(const Type& type, const Datum& value, const Encoding& encoding = {},
                                 const CodecOptions& options = {});

/// What identifies an instance (RTPS 2.5, 9.6.4.8): the key members, sorted by id, as big-endian CDR, with
/// zeros behind them where that never takes more than 16 bytes, and their MD5 otherwise.
/// @returns nothing for a type without a key.
std::optional<std::array<std::uint8_t, 16>> keyHash(const Type& type, const Datum& value,
                                                    XcdrVersion version = XcdrVersion::Xcdr1,
                                                    const CodecOptions& options = {});

/// @param indent blanks a level; negative: all on one line.
std::string toJson(const Type& type, const Datum& value, int indent = -1);

/// Reads JSON. Members that are left out have their defaults; what is beyond the type is refused: unknown
/// members and names, numbers out of range, lists and texts beyond their bounds.
Datum fromJson(const Type& type, std::string_view text, const CodecOptions& options = {});

} // namespace ovra::plex::idl
