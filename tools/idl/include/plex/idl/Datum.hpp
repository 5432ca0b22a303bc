// SPDX-License-Identifier: Apache-2.0
// A value of any type of a model. What it means depends on the type, which goes along with it wherever it is
// used.
//
// Plain values: any thread may use its own. They point into the model, which must outlive them.
#pragma once

#include <plex/idl/Model.hpp>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace ovra::plex::idl
{

struct Datum;
struct MemberDatum;

/// A struct: those members that are there, in any order. Of the others an optional one is absent, any other
/// one has its default.
struct StructDatum {
    std::vector<MemberDatum> members;

    /// @returns null: it is not there.
    const Datum* find(const Member& member) const;
};

/// A union.
struct UnionDatum {
    std::uint64_t discriminator = 0; ///< its number in two's complement, as in Label
    std::vector<Datum> member;       ///< one element; none where the discriminator selects no case
};

/// A value of any type:
///
/// - boolean, char, wchar, float, double and string: the alternative of that name; text is bytes without the
///   terminating NUL
/// - int8 to int64 and enum: `std::int64_t`
/// - octet, uint8 to uint64 and bitmask: `std::uint64_t`
/// - sequence and array of octet or uint8: `Octets`
/// - other sequences and arrays: `Elements`; an array has those of all its dimensions, the last one fastest
/// - struct and union: `StructDatum` and `UnionDatum`
/// - any: `std::monostate` is the default of the member, else of the type, which is zero, empty or the
///   default enumerator
///
/// The default of a union has the default of its discriminator, or where the union does not take that, its
/// first label, and the default of the member that this selects.
struct Datum {
    using Octets = std::vector<std::uint8_t>;
    using Elements = std::vector<Datum>;
    using Content = std::variant<std::monostate, bool, char, char32_t, std::int64_t, std::uint64_t, float,
                                 double, std::string, Octets, Elements, StructDatum, UnionDatum>;

    Content content;
};

/// A member of a struct that is there.
struct MemberDatum {
    const Member* member = nullptr;
    Datum value;
};

} // namespace ovra::plex::idl
