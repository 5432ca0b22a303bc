// SPDX-License-Identifier: Apache-2.0
// Decodes values that Fields describes, in both versions of XCDR (XTypes 1.3, 7.4).
//
// Nothing in a payload makes it take more memory than a small multiple of the payload's size: lengths are
// held against what is left of it first.
#pragma once

#include <plex/module/CdrFields.hpp>

#include <fastcdr/exceptions/BadParamException.h>
#include <fastcdr/exceptions/NotEnoughMemoryException.h>

#include <cstddef>
#include <cstring>
#include <optional>

namespace ovra::plex::ps::cdr
{

/// A stream of Fast CDR up to some place in it. All operations throw an
/// eprosima::fastcdr::exception::Exception where the payload is truncated or malformed.
class Input
{
public:
    static constexpr std::size_t mostPadding = 3; ///< bytes that fill something up
    static constexpr std::size_t anything = static_cast<std::size_t>(-1);

    /// Up to the end of the stream.
    explicit Input(Cdr& cdr) : cdr_(cdr) {}

    CdrVersion version() const { return cdr_.get_cdr_version(); }

    bool isAtEnd() const { return end_ != nullptr && position() >= end_; }

    template <class T>
    T take()
    {
        T value{};
        cdr_.deserialize(value);
        return value;
    }

    template <class T>
    void takeAll(T* values, std::size_t count)
    {
        if constexpr (std::is_same_v<T, bool>) { // Fast CDR takes any byte of an array for one
            for (std::size_t i = 0; i < count; ++i) {
                values[i] = take<bool>();
            }
        } else if (count > 0) {
            cdr_.deserialize_array(values, count);
        }
    }

    /// Takes text of so many bytes, the NUL behind it included.
    const char* takeText(std::uint32_t size)
    {
        const char* const text = position();
        check((end_ == nullptr || size <= static_cast<std::size_t>(end_ - text)) && cdr_.jump(size), tooLong);
        check(std::memchr(text, '\0', size) == text + size - 1, "A string does not end with its only NUL");
        return text;
    }

    /// A header of version 1: two numbers of 16 bits, aligned as one of 32.
    struct Header {
        std::uint32_t id;
        std::uint32_t length;
    };

    Header takeHeader()
    {
        const auto both = take<std::uint32_t>();
        const bool isBig = cdr_.endianness() == Cdr::BIG_ENDIANNESS;
        const std::uint32_t high = both >> 16U;
        const std::uint32_t low = both & 0xFFFFU;
        return isBig ? Header{high, low} : Header{low, high};
    }

    /// Looks at the next number of 32 bits.
    std::uint32_t peek()
    {
        const Cdr::state before(cdr_);
        const auto value = take<std::uint32_t>();
        cdr_.set_state(before);
        return value;
    }

    /// Says that so many bytes must be left.
    void require(std::size_t size)
    {
        if (end_ != nullptr) {
            check(position() <= end_ && size <= static_cast<std::size_t>(end_ - position()), tooLong);
            return;
        }
        const Cdr::state before(cdr_);
        check(cdr_.jump(size), tooLong);
        cdr_.set_state(before);
    }

    /// Reads what takes so many bytes, of which the reading may leave some.
    template <class Read>
    void within(std::uint32_t size, std::size_t mayLeave, Read read)
    {
        require(size);
        Input part(cdr_);
        part.end_ = position() + size;
        read(part);
        check(position() <= part.end_, "A value goes beyond the length in front of it");
        const auto left = static_cast<std::size_t>(part.end_ - position());
        check(left <= mayLeave, "A value ends before the length in front of it does");
        cdr_.jump(left);
    }

    /// The same where alignment counts from the beginning, for what comes behind it, too.
    template <class Read>
    void alignedWithin(std::uint32_t size, std::size_t mayLeave, Read read)
    {
        cdr_.reset_alignment();
        within(size, mayLeave, read);
    }

    /// Goes to the end.
    void skip() { cdr_.jump(static_cast<std::size_t>(end_ - position())); }

    /// Says that the payload ends here, but for what fills it up.
    void requireEnd()
    {
        const Cdr::state before(cdr_);
        const bool goesOn = cdr_.jump(mostPadding + 1);
        cdr_.set_state(before);
        check(!goesOn, "The payload goes on behind the value");
    }

    static void check(bool holds, const char* message)
    {
        if (!holds) {
            throw eprosima::fastcdr::exception::BadParamException(message);
        }
    }

private:
    static constexpr const char* tooLong = "A length goes beyond the end of the payload";

    const char* position() const { return cdr_.get_current_position(); }

    Cdr& cdr_;
    const char* end_ = nullptr; ///< null: that of the stream
};

template <class Rule, class T>
void readValue(Input& input, T& value);

/// The bytes that an element takes at least. Where it is none, there is a bound.
template <class T>
constexpr std::size_t leastSize(CdrVersion version)
{
    if constexpr (isPrimitive<T>) {
        return sizeof(T);
    } else if constexpr (isText<T> || isSequence<T>) {
        return sizeof(std::uint32_t);
    } else if constexpr (isArray<T>) {
        return std::tuple_size_v<T> * leastSize<typename T::value_type>(version);
    } else {
        return Fields<T>::leastSizes[version == CdrVersion::XCDRv2 ? 1 : 0];
    }
}

template <class Rule>
void readText(Input& input, std::string& text)
{
    const auto size = input.take<std::uint32_t>();
    if (size == 0) { // as some write an empty string
        text.clear();
        return;
    }
    Input::check(boundOf<Rule> == 0 || size - 1 <= boundOf<Rule>, "A string is longer than its bound");
    text.assign(input.takeText(size), size - 1);
}

template <class Rule, class Elements>
void readElements(Input& input, Elements& elements)
{
    using Element = typename Elements::value_type;
    if constexpr (std::is_arithmetic_v<Element>) {
        input.takeAll(elements.data(), elements.size());
    } else {
        for (Element& element : elements) {
            if constexpr (isArray<Elements> && isArray<Element>) { // it has no delimiter of its own
                readElements<typename ElementRule<Rule>::Type>(input, element);
            } else {
                readValue<typename ElementRule<Rule>::Type>(input, element);
            }
        }
    }
}

/// How many elements follow, of which not more are made than can be there.
template <class Rule, class Elements>
void readSequence(Input& input, Elements& elements)
{
    const auto count = input.take<std::uint32_t>();
    Input::check(boundOf<Rule> == 0 || count <= boundOf<Rule>, "A sequence is longer than its bound");
    input.require(count * leastSize<typename Elements::value_type>(input.version()));
    elements.resize(count);
    readElements<Rule>(input, elements);
}

/// What has its length in front of it where a version of CDR has that.
/// @param mayLeave how much of that the reading may leave: a later version of a type has more.
template <class Read>
void readDelimited(Input& input, bool isDelimited, std::size_t mayLeave, Read read)
{
    if (isDelimited && input.version() == CdrVersion::XCDRv2) {
        input.within(input.take<std::uint32_t>(), mayLeave, read);
    } else {
        read(input);
    }
}

// --- Members -----------------------------------------------------------------------------------------------

template <class T>
void reset(T& member)
{
    if constexpr (isText<T> || isSequence<T>) {
        member.clear(); // keeps its memory
    } else {
        member = T{};
    }
}

template <class T, class Initial>
void reset(T& member, const Initial& initial)
{
    member = static_cast<T>(initial); // a small number is given as an int
}

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

/// The value of an optional member, which is made where it is absent.
template <class T>
T& present(std::optional<T>& member)
{
    return member ? *member : member.emplace();
}

template <class T>
T& present(T& member)
{
    return member;
}

/// What a header of version 1 says.
struct LongHeader {
    std::uint32_t id;
    std::uint32_t length;
    bool mustUnderstand;
};

inline LongHeader takeLongHeader(Input& input)
{
    const Input::Header start = input.takeHeader();
    const bool mustUnderstand = (start.id & header::shortMustUnderstand) != 0;
    const std::uint32_t id = start.id & header::shortIdMask;
    if (id != header::extended) {
        const bool isReserved = id > header::lastShortId && id != header::end && id != header::ignored;
        Input::check(!isReserved, "A member has an id that is reserved");
        return {id, start.length, mustUnderstand};
    }
    Input::check(start.length == 2 * sizeof(std::uint32_t),
                 "A long header of a member is not as long as it is");
    const auto longId = input.take<std::uint32_t>() & header::idMask;
    return {longId, input.take<std::uint32_t>(), mustUnderstand};
}

/// An optional member where members have no headers.
template <class Field, class T>
void readOptional(Input& input, std::optional<T>& member)
{
    using Rule = typename Field::RuleType;
    if (input.version() == CdrVersion::XCDRv2) {
        if (input.take<bool>()) {
            readValue<Rule>(input, present(member));
        } else {
            member.reset();
        }
        return;
    }
    const LongHeader start = takeLongHeader(input);
    Input::check(start.id == Field::id, "An optional member has another one's header");
    input.alignedWithin(start.length, Input::mostPadding, [&](Input& part) {
        if (start.length == 0) {
            member.reset();
        } else {
            readValue<Rule>(part, present(member));
        }
    });
}

template <class Field, class T>
void readPlainMember(Input& input, T& member)
{
    if constexpr (isOptional<T>) {
        readOptional<Field>(input, member);
    } else {
        readValue<typename Field::RuleType>(input, member);
    }
}

/// All members in their order.
/// @param isDelimited whether the value may end before: it has an earlier version of the type, and members
/// that are not
///        there get their defaults.
template <class T>
void readPlain(Input& input, bool isDelimited, T& value)
{
    Fields<T>::forEach(value, [&](auto field, auto& member, const auto&... initial) {
        if (isDelimited && input.isAtEnd()) {
            reset(member, initial...);
        } else {
            readPlainMember<decltype(field)>(input, member);
        }
    });
}

/// A member with a header. An optional one may be there without a value.
template <class Rule, class T>
void readPresent(Input& input, T& member)
{
    if (!isOptional<T> || !input.isAtEnd()) {
        readValue<Rule>(input, present(member));
    }
}

/// The member with an id. @returns false: there is none.
template <class T>
bool readMember(Input& input, std::uint32_t id, T& value)
{
    bool found = false;
    Fields<T>::forEach(value, [&](auto field, auto& member, const auto&... /*initial*/) {
        if (field.id == id) {
            readPresent<typename decltype(field)::RuleType>(input, member);
            found = true;
        }
    });
    return found;
}

/// Reads members that have headers: read(part, id) says whether it knows the one with that id, of which it
/// reads all then.
template <class Read>
void forEachHeader1(Input& input, Read read)
{
    for (LongHeader next = takeLongHeader(input); next.id != header::end; next = takeLongHeader(input)) {
        input.alignedWithin(next.length, Input::mostPadding, [&](Input& part) {
            const bool isIgnored = next.id == header::ignored;
            if (isIgnored || !read(part, next.id)) {
                Input::check(isIgnored || !next.mustUnderstand,
                             "A member that must be understood is not known");
                part.skip();
            }
        });
    }
}

/// The length of a member in version 2, behind the first part of its header.
inline std::uint32_t takeLength(Input& input, std::uint32_t code)
{
    if (code < 4) {
        return 1U << code;
    }
    if (code == 4) {
        return input.take<std::uint32_t>();
    }
    constexpr std::array<std::uint64_t, 3> elementSizes{1, 4, 8};
    const std::uint64_t length = sizeof(std::uint32_t) + elementSizes[code - 5] * input.peek();
    Input::check(length <= 0xFFFFFFFFU, "A length goes beyond the end of the payload");
    return static_cast<std::uint32_t>(length);
}

template <class Read>
void forEachHeader2(Input& input, Read read)
{
    while (!input.isAtEnd()) {
        const auto start = input.take<std::uint32_t>();
        const std::uint32_t length = takeLength(input, start >> header::lengthCodeShift & 7U);
        input.within(length, 0, [&](Input& part) {
            if (!read(part, start & header::idMask)) {
                Input::check((start & header::mustUnderstand) == 0,
                             "A member that must be understood is not known");
                part.skip();
            }
        });
    }
}

template <class Read>
void forEachHeader(Input& input, Read read)
{
    if (input.version() == CdrVersion::XCDRv2) {
        forEachHeader2(input, read);
    } else {
        forEachHeader1(input, read);
    }
}

/// Members with headers, in any order. Those that are not there get their defaults.
template <class T>
void readMutable(Input& input, T& value)
{
    Fields<T>::forEach(
        value, [](auto /*field*/, auto& member, const auto&... initial) { reset(member, initial...); });
    forEachHeader(input, [&](Input& part, std::uint32_t id) { return readMember(part, id, value); });
}

// --- Unions ------------------------------------------------------------------------------------------------

template <class T>
auto readDiscriminator(Input& input, const T& value)
{
    auto discriminator = Fields<T>::discriminator(value);
    readValue<Any>(input, discriminator);
    return discriminator;
}

template <class T>
void select(T& value, decltype(Fields<T>::discriminator(std::declval<const T&>())) discriminator)
{
    Input::check(Fields<T>::select(value, discriminator), "A union has a value that is no label");
}

template <class T>
void readPlainUnion(Input& input, T& value)
{
    select(value, readDiscriminator(input, value));
    Fields<T>::visitCase(value, [&](auto field, auto& member, const auto&... /*initial*/) {
        readValue<typename decltype(field)::RuleType>(input, member);
    });
}

/// The discriminator comes first: it decides on which member there may be.
template <class T>
void readMutableUnion(Input& input, T& value)
{
    bool isSelected = false;
    forEachHeader(input, [&](Input& part, std::uint32_t id) {
        if (id == 0 && !isSelected) {
            select(value, readDiscriminator(part, value));
            isSelected = true;
            return true;
        }
        bool found = false;
        Input::check(isSelected, "A union's member comes before its discriminator");
        Fields<T>::visitCase(value, [&](auto field, auto& member, const auto&... /*initial*/) {
            if (field.id == id) {
                readValue<typename decltype(field)::RuleType>(part, member);
                found = true;
            }
        });
        return found;
    });
    Input::check(isSelected, "A union has no discriminator");
}

// --- All of it ---------------------------------------------------------------------------------------------

/// The members, behind a delimiter.
template <class T>
void readMembers(Input& input, Extensibility extensibility, T& value)
{
    const bool isMutable = extensibility == Extensibility::Mutable;
    if constexpr (IsUnion<T>) {
        isMutable ? readMutableUnion(input, value) : readPlainUnion(input, value);
    } else if (isMutable) {
        readMutable(input, value);
    } else {
        const bool isVersion2 = input.version() == CdrVersion::XCDRv2;
        readPlain(input, isVersion2 && extensibility == Extensibility::Appendable, value);
    }
}

template <class Rule, class T>
void readValue(Input& input, T& value)
{
    if constexpr (std::is_arithmetic_v<T>) {
        value = input.take<T>();
    } else if constexpr (std::is_enum_v<T>) {
        value = static_cast<T>(input.take<std::underlying_type_t<T>>());
        Input::check(isKnown(value), "An enum has a value that is none of its enumerators");
    } else if constexpr (isText<T>) {
        readText<Rule>(input, value);
    } else if constexpr (isSequence<T>) {
        readDelimited(input, isDelimitedBy<Rule, T>, 0,
                      [&](Input& part) { readSequence<Rule>(part, value); });
    } else if constexpr (isArray<T>) {
        readDelimited(input, isDelimitedBy<Rule, T>, 0,
                      [&](Input& part) { readElements<Rule>(part, value); });
    } else {
        constexpr Extensibility extensibility = Fields<T>::extensibility;
        readDelimited(input, extensibility != Extensibility::Final, Input::anything,
                      [&](Input& part) { readMembers(part, extensibility, value); });
    }
}

/// Reads a value from a stream whose encoding may be another than its type's: as its header says.
///
/// The payload must end with the value, up to what fills it up. One in plain CDR of a type that is appendable
/// may go on, as values of its later versions do.
/// @throws eprosima::fastcdr::exception::Exception when the input is truncated or malformed, or goes beyond
/// bounds; some
///         members may then have been written.
template <class T>
void deserializeFields(Cdr& cdr, EncodingAlgorithmFlag encoding, T& value)
{
    Input input(cdr);
    switch (encoding) {
    case EncodingAlgorithmFlag::PLAIN_CDR:
    case EncodingAlgorithmFlag::PLAIN_CDR2:
        readMembers(input, Extensibility::Final, value);
        break;
    case EncodingAlgorithmFlag::DELIMIT_CDR2:
        readDelimited(input, true, Input::anything,
                      [&](Input& part) { readMembers(part, Extensibility::Appendable, value); });
        break;
    case EncodingAlgorithmFlag::PL_CDR:
    case EncodingAlgorithmFlag::PL_CDR2:
        readDelimited(input, true, Input::anything,
                      [&](Input& part) { readMembers(part, Extensibility::Mutable, value); });
        break;
    }
    if (encoding != EncodingAlgorithmFlag::PLAIN_CDR ||
        Fields<T>::extensibility != Extensibility::Appendable) {
        input.requireEnd();
    }
}

} // namespace ovra::plex::ps::cdr
