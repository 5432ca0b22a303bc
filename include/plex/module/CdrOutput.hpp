// SPDX-License-Identifier: Apache-2.0
// Encodes values that Fields describes, in both versions of XCDR (XTypes 1.3, 7.4).
#pragma once

#include <plex/module/CdrFields.hpp>

#include <fastcdr/exceptions/BadParamException.h>

#include <cstddef>
#include <optional>

namespace ovra::plex::ps::cdr
{

/// Counts bytes.
class SizeSink
{
public:
    SizeSink(CdrVersion version, std::size_t position) : version_(version), position_(position) {}

    CdrVersion version() const { return version_; }

    std::size_t position() const { return position_; }

    template <class T>
    void put(T /*value*/)
    {
        align(sizeof(T));
        position_ += sizeof(T);
    }

    template <class T>
    void putAll(const T* /*values*/, std::size_t count)
    {
        if (count > 0) {
            align(sizeof(T));
            position_ += count * sizeof(T);
        }
    }

    void putHeader(std::uint32_t /*id*/, std::uint32_t /*length*/) { put(std::uint32_t{}); }

    /// Writes something that is preceded by its length.
    template <class Write>
    void delimited(Write write)
    {
        put(std::uint32_t{});
        write();
    }

    /// Has alignment count from here on.
    void beginAlignment() { origin_ = position_; }

    static void check(bool /*holds*/, const char* /*message*/) {}

private:
    void align(std::size_t size)
    {
        const std::size_t most = version_ == CdrVersion::XCDRv2 ? 4 : 8;
        const std::size_t step = size < most ? size : most;
        position_ += (step - (position_ - origin_) % step) % step;
    }

    CdrVersion version_;
    std::size_t position_;
    std::size_t origin_ = 0;
};

/// Writes into a stream of Fast CDR.
class CdrSink
{
public:
    explicit CdrSink(Cdr& cdr) : cdr_(cdr) {}

    CdrVersion version() const { return cdr_.get_cdr_version(); }

    template <class T>
    void put(T value)
    {
        cdr_.serialize(value);
    }

    template <class T>
    void putAll(const T* values, std::size_t count)
    {
        if (count > 0) {
            cdr_.serialize_array(values, count);
        }
    }

    /// A header of version 1: two numbers of 16 bits, aligned as one of 32.
    void putHeader(std::uint32_t id, std::uint32_t length)
    {
        const bool isBig = cdr_.endianness() == Cdr::BIG_ENDIANNESS;
        put(isBig ? id << 16U | length : length << 16U | id);
    }

    template <class Write>
    void delimited(Write write)
    {
        const Cdr::state before(cdr_);
        put(std::uint32_t{0});
        const std::size_t begin = cdr_.get_serialized_data_length();
        write();
        const auto length = static_cast<std::uint32_t>(cdr_.get_serialized_data_length() - begin);
        const Cdr::state after(cdr_);
        cdr_.set_state(before);
        put(length);
        cdr_.set_state(after);
    }

    void beginAlignment() { cdr_.reset_alignment(); }

    /// @throws eprosima::fastcdr::exception::BadParamException where it does not hold.
    static void check(bool holds, const char* message)
    {
        if (!holds) {
            throw eprosima::fastcdr::exception::BadParamException(message);
        }
    }

private:
    Cdr& cdr_;
};

template <class Rule, class Sink, class T>
void writeValue(Sink& sink, const T& value);

/// The bytes that a value takes in a member whose alignment counts from its beginning.
template <class Rule, class T>
std::uint32_t sizeInMember(CdrVersion version, const T& value)
{
    SizeSink sink(version, 0);
    writeValue<Rule>(sink, value);
    return static_cast<std::uint32_t>(sink.position());
}

/// The length code (XTypes 1.3, 7.4.3.4.2) for a value that begins with its own length, in bytes or in
/// elements of so many bytes; 0 where there is none.
constexpr std::uint32_t sharedLengthCode(std::size_t elementSize)
{
    switch (elementSize) {
    case 1:
        return 5;
    case 4:
        return 6;
    case 8:
        return 7;
    default:
        return 0;
    }
}

/// The same for a type.
template <class Rule, class T>
constexpr std::uint32_t sharedLengthCodeOf()
{
    if constexpr (isText<T> || isDelimitedBy<Rule, T>) {
        return sharedLengthCode(1);
    } else if constexpr (isSequence<T>) {
        return sharedLengthCode(sizeof(typename T::value_type));
    } else if constexpr (isPrimitive<T> || isArray<T>) {
        return 0;
    } else {
        return Fields<T>::extensibility == Extensibility::Final ? 0 : sharedLengthCode(1);
    }
}

/// The length code for a length: 4, which it follows, where it is not 1, 2, 4 or 8.
constexpr std::uint32_t lengthCodeOf(std::uint32_t length)
{
    constexpr std::array<std::uint32_t, 9> codes{4, 0, 1, 4, 2, 4, 4, 4, 3};
    return length < codes.size() ? codes[length] : 4;
}

// --- Values ------------------------------------------------------------------------------------------------

template <class Rule, class Sink>
void writeText(Sink& sink, const std::string& text)
{
    sink.check(boundOf<Rule> == 0 || text.size() <= boundOf<Rule>, "A string is longer than its bound");
    sink.check(text.find('\0') == std::string::npos, "A string holds a NUL, at which readers would end it");
    sink.put(static_cast<std::uint32_t>(text.size() + 1));
    sink.putAll(text.c_str(), text.size() + 1);
}

template <class Rule, class Sink, class Elements>
void writeElements(Sink& sink, const Elements& elements)
{
    using Element = typename Elements::value_type;
    if constexpr (std::is_arithmetic_v<Element>) {
        sink.putAll(elements.data(), elements.size());
    } else {
        for (const Element& element : elements) {
            if constexpr (isArray<Elements> && isArray<Element>) { // it has no delimiter of its own
                writeElements<typename ElementRule<Rule>::Type>(sink, element);
            } else {
                writeValue<typename ElementRule<Rule>::Type>(sink, element);
            }
        }
    }
}

template <class Rule, class Sink, class Elements>
void writeSequence(Sink& sink, const Elements& elements)
{
    sink.check(boundOf<Rule> == 0 || elements.size() <= boundOf<Rule>, "A sequence is longer than its bound");
    sink.put(static_cast<std::uint32_t>(elements.size()));
    writeElements<Rule>(sink, elements);
}

/// With the length in front of it where a version of CDR has that.
template <class Sink, class Write>
void writeDelimited(Sink& sink, bool isDelimited, Write write)
{
    if (isDelimited && sink.version() == CdrVersion::XCDRv2) {
        sink.delimited(write);
    } else {
        write();
    }
}

// --- Members -----------------------------------------------------------------------------------------------

/// A member with a header, version 1.
template <class Field, class Sink, class T>
void writeWithHeader1(Sink& sink, const T* value)
{
    using Rule = typename Field::RuleType;
    const std::uint32_t length = value == nullptr ? 0 : sizeInMember<Rule>(CdrVersion::XCDRv1, *value);
    const std::uint32_t flags = Field::mustUnderstand ? header::shortMustUnderstand : 0;
    if (Field::id > header::lastShortId || length > header::longestShort) {
        sink.putHeader(header::extended | flags, 8);
        sink.put(std::uint32_t{Field::id});
        sink.put(length);
    } else {
        sink.putHeader(Field::id | flags, length);
    }
    sink.beginAlignment(); // for what comes behind the member, too, as in Fast CDR
    if (value != nullptr) {
        writeValue<Rule>(sink, *value);
    }
}

/// A member with a header, version 2.
template <class Field, class Sink, class T>
void writeWithHeader2(Sink& sink, const T& value)
{
    using Rule = typename Field::RuleType;
    constexpr std::uint32_t id = Field::id | (Field::mustUnderstand ? header::mustUnderstand : 0);
    constexpr std::uint32_t shared = sharedLengthCodeOf<Rule, T>();
    if constexpr (shared != 0) {
        sink.put(id | shared << header::lengthCodeShift);
    } else {
        const std::uint32_t length = sizeInMember<Rule>(CdrVersion::XCDRv2, value);
        sink.put(id | lengthCodeOf(length) << header::lengthCodeShift);
        if (lengthCodeOf(length) == 4) {
            sink.put(length);
        }
    }
    writeValue<Rule>(sink, value);
}

template <class Field, class Sink, class T>
void writeMemberWithHeader(Sink& sink, const T& value)
{
    if (sink.version() == CdrVersion::XCDRv2) {
        writeWithHeader2<Field>(sink, value);
    } else {
        writeWithHeader1<Field>(sink, &value);
    }
}

template <class Field, class Sink, class T>
void writeMember(Sink& sink, Extensibility extensibility, const T& value)
{
    if (extensibility == Extensibility::Mutable) {
        writeMemberWithHeader<Field>(sink, value);
    } else {
        writeValue<typename Field::RuleType>(sink, value);
    }
}

template <class Field, class Sink, class T>
void writeMember(Sink& sink, Extensibility extensibility, const std::optional<T>& value)
{
    if (extensibility == Extensibility::Mutable) {
        if (value) {
            writeMemberWithHeader<Field>(sink, *value);
        }
    } else if (sink.version() == CdrVersion::XCDRv1) {
        writeWithHeader1<Field>(sink, value ? &*value : nullptr);
    } else {
        sink.put(value.has_value());
        if (value) {
            writeValue<typename Field::RuleType>(sink, *value);
        }
    }
}

template <class Sink, class T>
void writeMembers(Sink& sink, const T& value)
{
    constexpr Extensibility extensibility = Fields<T>::extensibility;
    const auto write = [&](auto field, const auto& member, const auto&... /*initial*/) {
        writeMember<decltype(field)>(sink, extensibility, member);
    };
    if constexpr (IsUnion<T>) {
        writeMember<Field<0>>(sink, extensibility, Fields<T>::discriminator(value));
        Fields<T>::visitCase(value, write);
    } else {
        Fields<T>::forEach(value, write);
    }
    if (extensibility == Extensibility::Mutable && sink.version() == CdrVersion::XCDRv1) {
        sink.putHeader(header::end, 0);
    }
}

/// Writes any value.
template <class Rule, class Sink, class T>
void writeValue(Sink& sink, const T& value)
{
    if constexpr (std::is_arithmetic_v<T>) {
        sink.put(value);
    } else if constexpr (std::is_enum_v<T>) {
        sink.check(isKnown(value), "An enum has a value that is none of its enumerators");
        sink.put(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (isText<T>) {
        writeText<Rule>(sink, value);
    } else if constexpr (isSequence<T>) {
        writeDelimited(sink, isDelimitedBy<Rule, T>, [&] { writeSequence<Rule>(sink, value); });
    } else if constexpr (isArray<T>) {
        writeDelimited(sink, isDelimitedBy<Rule, T>, [&] { writeElements<Rule>(sink, value); });
    } else {
        writeDelimited(sink, Fields<T>::extensibility != Extensibility::Final,
                       [&] { writeMembers(sink, value); });
    }
}

// --- What generated code calls -----------------------------------------------------------------------------

/// The bytes that serializeFields() will write from the current alignment, which is moved past them.
template <class T>
std::size_t fieldsSize(CdrVersion version, const T& value, std::size_t& currentAlignment)
{
    SizeSink sink(version, currentAlignment);
    writeValue<Any>(sink, value);
    const std::size_t size = sink.position() - currentAlignment;
    currentAlignment = sink.position();
    return size;
}

// Writes the key members as those of final types, whatever the type's extensibility.
template <class Sink, class T>
void writeKey(Sink& sink, const T& value);

template <class Rule, class Sink, class T>
void writeKeyValue(Sink& sink, const T& value);

template <class Rule, class Sink, class Elements>
void writeKeyElements(Sink& sink, const Elements& elements)
{
    using Next = typename ElementRule<Rule>::Type;
    for (const auto& element : elements) {
        if constexpr (isArray<Elements> &&
                      isArray<typename Elements::value_type>) { // it has no delimiter of its own
            writeKeyElements<Next>(sink, element);
        } else {
            writeKeyValue<Next>(sink, element);
        }
    }
}

template <class Rule, class Sink, class T>
void writeKeyValue(Sink& sink, const T& value)
{
    if constexpr (isPrimitive<T> || isText<T>) {
        writeValue<Rule>(sink, value);
    } else if constexpr (isSequence<T> || isArray<T>) {
        writeDelimited(sink, isDelimitedBy<Rule, T>, [&] {
            if constexpr (isSequence<T>) {
                sink.check(boundOf<Rule> == 0 || value.size() <= boundOf<Rule>,
                           "A sequence is longer than its bound");
                sink.put(static_cast<std::uint32_t>(value.size()));
            }
            writeKeyElements<Rule>(sink, value);
        });
    } else {
        writeKey(sink, value);
    }
}

template <class Sink, class T>
void writeKey(Sink& sink, const T& value)
{
    const auto write = [&](auto field, const auto& member, const auto&... /*initial*/) {
        writeKeyValue<typename decltype(field)::RuleType>(sink, member);
    };
    if constexpr (IsUnion<T>) {
        write(Field<0>(), Fields<T>::discriminator(value));
        if constexpr (!Fields<T>::discriminatorIsKey) {
            Fields<T>::visitCase(value, write);
        }
    } else {
        Fields<T>::forEachKey(value, write);
    }
}

/// Writes the key members of a value, by ascending member id, as RTPS 2.5, 9.6.4.8 has them hashed; throws as
/// below.
template <class T>
void serializeKeyFields(Cdr& cdr, const T& value)
{
    CdrSink sink(cdr);
    writeKey(sink, value);
}

/// @throws eprosima::fastcdr::exception::NotEnoughMemoryException when the stream's buffer is too small,
///         eprosima::fastcdr::exception::BadParamException for a value beyond its bounds.
template <class T>
void serializeFields(Cdr& cdr, const T& value)
{
    CdrSink sink(cdr);
    writeValue<Any>(sink, value);
}

} // namespace ovra::plex::ps::cdr
