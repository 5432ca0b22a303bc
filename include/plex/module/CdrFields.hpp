// SPDX-License-Identifier: Apache-2.0
// How generated code describes a type to the functions that encode and decode it, CdrOutput.hpp and
// CdrInput.hpp.
#pragma once

#include <plex/Booleans.hpp>

#include <fastcdr/Cdr.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace ovra::plex::ps::cdr
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::CdrVersion;
using eprosima::fastcdr::EncodingAlgorithmFlag;

/// Whether members may be added to a type (XTypes 1.3, 7.2.2.4.6), which decides on how it is encoded.
enum class Extensibility : std::uint8_t { Final, Appendable, Mutable };

/// Describes a struct or union T. Its specialisation has
///
///     static constexpr Extensibility extensibility;
///
/// and for a struct, where visit(Field<…>(), member, default…) is called for the members in their order, or
/// for key members only, by ascending member id,
///
///     static void forEach(auto& value, auto&& visit);
///     static void forEachKey(auto& value, auto&& visit);
///
/// or for a union, where select() makes the member of a discriminator, or gives false where it is no label,
/// and visitCase() calls visit() as above for the member that is there,
///
///     static constexpr bool isUnion = true;
///     static auto discriminator(const T& value);
///     static constexpr bool discriminatorIsKey;
///     static bool select(T& value, auto discriminator);
///     static void visitCase(auto& value, auto&& visit);
///
/// A member's default is given where it is another than that of its C++ type. What is in sequences also has
///
///     static constexpr std::array<std::size_t, 2> leastSizes;
///
/// the bytes that a value takes at least in versions 1 and 2, padding apart. For types that take none, rules
/// set a bound.
template <class T>
struct Fields;

// --- What a member's values may be, as far as its C++ type does not say it ---------------------------------

/// Whatever its type allows.
struct Any {
};

/// A string of at most so many characters.
template <std::uint32_t Bound>
struct Text {
};

/// A sequence of at most so many elements (0: any number), of which the same is said.
template <class Element, std::uint32_t Bound>
struct List {
};

/// An array, whose elements are as said.
template <class Element>
struct Each {
};

/// A sequence or array of enums or bitmasks that has a delimiter in version 2, as the standard has it and
/// Fast CDR has not; else it is as said.
template <class Rule>
struct Delimited {
};

/// A member by its id, and what its values may be.
template <std::uint32_t Id, class Rule = Any, bool MustUnderstand = false>
struct Field {
    using RuleType = Rule;
    static constexpr std::uint32_t id = Id;
    static constexpr bool mustUnderstand = MustUnderstand;
};

// --- What kinds of types there are -------------------------------------------------------------------------

/// Encoded as a number.
template <class T>
inline constexpr bool isPrimitive = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <class T>
inline constexpr bool isText = std::is_same_v<T, std::string>;

template <class T>
inline constexpr bool isSequence = std::is_same_v<T, Booleans>;
template <class T>
inline constexpr bool isSequence<std::vector<T>> = true;

template <class T>
inline constexpr bool isArray = false;
template <class T, std::size_t Size>
inline constexpr bool isArray<std::array<T, Size>> = true;

/// Whether sequences and arrays have a delimiter in version 2 (XTypes 1.3, 7.4.3.5, rules 11 to 13). As in
/// Fast CDR, those of enums and bitmasks have none; of arrays of arrays the innermost elements count, and the
/// outermost one has it.
template <class T>
inline constexpr bool isDelimited = false;
template <class T>
inline constexpr bool isDelimited<std::vector<T>> = !isPrimitive<T>;
template <class T, std::size_t Size>
inline constexpr bool isDelimited<std::array<T, Size>> = isArray<T> ? isDelimited<T> : !isPrimitive<T>;

/// The same with what is said of the type.
template <class Rule, class T>
inline constexpr bool isDelimitedBy = isDelimited<T>;
template <class Rule, class T>
inline constexpr bool isDelimitedBy<Delimited<Rule>, T> = true;

template <class T>
concept IsUnion = requires { Fields<T>::isUnion; };

/// What is said of the elements of a sequence or an array.
template <class Rule>
struct ElementRule {
    using Type = Any;
};

template <class Element, std::uint32_t Bound>
struct ElementRule<List<Element, Bound>> {
    using Type = Element;
};

template <class Element>
struct ElementRule<Each<Element>> {
    using Type = Element;
};

template <class Rule>
struct ElementRule<Delimited<Rule>> : ElementRule<Rule> {
};

/// The bound that a rule sets; 0: none.
template <class Rule>
inline constexpr std::uint32_t boundOf = 0;
template <std::uint32_t Bound>
inline constexpr std::uint32_t boundOf<Text<Bound>> = Bound;
template <class Element, std::uint32_t Bound>
inline constexpr std::uint32_t boundOf<List<Element, Bound>> = Bound;
template <class Rule>
inline constexpr std::uint32_t boundOf<Delimited<Rule>> = boundOf<Rule>;

/// How a type is encoded in a version of CDR.
constexpr EncodingAlgorithmFlag encodingOf(Extensibility extensibility, CdrVersion version) noexcept
{
    const bool isVersion2 = version == CdrVersion::XCDRv2;
    switch (extensibility) {
    case Extensibility::Final:
        return isVersion2 ? EncodingAlgorithmFlag::PLAIN_CDR2 : EncodingAlgorithmFlag::PLAIN_CDR;
    case Extensibility::Appendable:
        return isVersion2 ? EncodingAlgorithmFlag::DELIMIT_CDR2 : EncodingAlgorithmFlag::PLAIN_CDR;
    case Extensibility::Mutable:
        break;
    }
    return isVersion2 ? EncodingAlgorithmFlag::PL_CDR2 : EncodingAlgorithmFlag::PL_CDR;
}

/// How a wire type may change, where its CDR functions say more than that it is appendable.
template <class DdsType>
inline constexpr Extensibility extensibilityOf = Extensibility::Appendable;

/// The numbers in headers of members.
namespace header
{

inline constexpr std::uint32_t extended = 0x3F01;    ///< id of a header in version 1 that another one follows
inline constexpr std::uint32_t lastShortId = 0x3F00; ///< that a short header of version 1 holds
inline constexpr std::uint32_t end = 0x3F02;         ///< id behind the last member in version 1
inline constexpr std::uint32_t ignored = 0x3F03;     ///< id of what is skipped in version 1
inline constexpr std::uint32_t shortIdMask = 0x3FFF; ///< in version 1
inline constexpr std::uint32_t shortMustUnderstand = 0x4000;
inline constexpr std::uint32_t idMask = 0x0FFFFFFF;
inline constexpr std::uint32_t mustUnderstand = 0x80000000;
inline constexpr std::uint32_t longestShort = 0xFFFF; ///< length that a short header of version 1 holds
inline constexpr unsigned lengthCodeShift = 28;

} // namespace header

} // namespace ovra::plex::ps::cdr
