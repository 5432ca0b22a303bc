// SPDX-License-Identifier: Apache-2.0
// Payloads, values and lists; CodecDecodeMembers.cpp has structs and unions.
#include "CodecDecoder.hpp"

#include <string>
#include <string_view>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

std::optional<Encapsulation> encapsulationOf(std::uint8_t identifier)
{
    const std::endian order = identifier % 2 == 1 ? std::endian::little : std::endian::big;
    switch (identifier / 2) {
    case 0:
        return Encapsulation{XcdrVersion::Xcdr1, Layout::Plain, order};
    case 1:
        return Encapsulation{XcdrVersion::Xcdr1, Layout::Parameters, order};
    case 3:
        return Encapsulation{XcdrVersion::Xcdr2, Layout::Plain, order};
    case 4:
        return Encapsulation{XcdrVersion::Xcdr2, Layout::Delimited, order};
    case 5:
        return Encapsulation{XcdrVersion::Xcdr2, Layout::Parameters, order};
    default:
        return std::nullopt;
    }
}

std::string hexadecimal(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

} // namespace

// --- The payload -------------------------------------------------------------------------------------------

std::size_t Decoder::paddingOf(std::span<const std::uint8_t> payload)
{
    if (payload.size() < 4) {
        CodecPath().fail("a payload has a header of 4 bytes, this one has " + std::to_string(payload.size()),
                         payload.size());
    }
    const std::size_t padding = payload[3] & 3U;
    if (padding > payload.size() - 4) {
        CodecPath().fail("the header tells of " + std::to_string(padding) + " bytes of padding, " +
                             std::to_string(payload.size() - 4) + " follow",
                         2);
    }
    return padding;
}

void Decoder::readHeader(std::span<const std::uint8_t> payload)
{
    const auto encapsulation = payload[0] == 0 ? encapsulationOf(payload[1]) : std::nullopt;
    if (!encapsulation) {
        path_.fail("the encoding " + hexadecimal(payload.first(2)) + " is not known", 0);
    }
    encapsulation_ = *encapsulation;
    input_.configure(encapsulation_.order, encapsulation_.version == XcdrVersion::Xcdr1 ? 8 : 4);
}

/// A value of a later version of the type has more at its end, which nothing but the payload's tells.
bool Decoder::mayGoOn(const Type& type) const
{
    return encapsulation_.version == XcdrVersion::Xcdr1 && encapsulation_.layout == Layout::Plain &&
           extensibilityOf(type) == Extensibility::Appendable;
}

void Decoder::checkLayout(const Type& type)
{
    const bool isMutable = extensibilityOf(type) == Extensibility::Mutable;
    const bool isAggregate = as<StructType>(type) != nullptr || as<UnionType>(type) != nullptr;
    if (isMutable != (encapsulation_.layout == Layout::Parameters)) {
        path_.fail(isMutable ? "a mutable type needs a parameter list, the payload is none"
                             : "the payload is a parameter list, the type is not mutable",
                   0);
    }
    if (!isAggregate && encapsulation_.layout == Layout::Delimited) {
        path_.fail("the payload is delimited, the type is neither struct nor union", 0);
    }
}

Datum Decoder::decode(const Type& declared)
{
    const Type& type = resolved(declared);
    checkLayout(type);
    Datum result = content(type, encapsulation_.layout);
    if (input_.remaining() > 3 && !mayGoOn(type)) {
        input_.fail(std::to_string(input_.remaining()) + " bytes follow the value");
    }
    return result;
}

// --- Values ------------------------------------------------------------------------------------------------

Datum Decoder::value(const Type& declared)
{
    const std::size_t begin = input_.position();
    Datum result = content(resolved(declared));
    if (input_.position() == begin && ++emptyValues_ > MaximumEmptyValues) {
        input_.fail("more than " + std::to_string(MaximumEmptyValues) + " values take no bytes");
    }
    return result;
}

Datum Decoder::content(const Type& type)
{
    return content(type, layoutOf(extensibilityOf(type), encapsulation_.version));
}

Datum Decoder::content(const Type& type, Layout layout)
{
    switch (type.kind) {
    case TypeKind::Boolean:
        return {boolean()};
    case TypeKind::Char:
        return {input_.number<char>()};
    case TypeKind::WChar:
        return {static_cast<char32_t>(input_.number<std::uint16_t>())};
    case TypeKind::Float:
        return {input_.number<float>()};
    case TypeKind::Double:
        return {input_.number<double>()};
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return {signedNumber(widthOf(type))};
    case TypeKind::Octet:
    case TypeKind::Uint8:
    case TypeKind::Uint16:
    case TypeKind::Uint32:
    case TypeKind::Uint64:
    case TypeKind::Bitmask:
        return {unsignedNumber(widthOf(type))};
    case TypeKind::String:
        return string(*as<StringType>(type));
    case TypeKind::Enum:
        return enumeration(*as<EnumType>(type));
    case TypeKind::Sequence:
        return sequence(*as<SequenceType>(type));
    case TypeKind::Array:
        return array(*as<ArrayType>(type));
    case TypeKind::Struct:
        return structure(*as<StructType>(type), layout);
    case TypeKind::Union:
        return choice(*as<UnionType>(type), layout);
    default:
        input_.fail(unsupported(type));
    }
}

bool Decoder::boolean()
{
    const auto byte = input_.number<std::uint8_t>();
    if (byte > 1) {
        input_.fail(std::to_string(byte) + " is no boolean");
    }
    return byte == 1;
}

std::int64_t Decoder::signedNumber(std::uint32_t width)
{
    switch (width) {
    case 1:
        return input_.number<std::int8_t>();
    case 2:
        return input_.number<std::int16_t>();
    case 4:
        return input_.number<std::int32_t>();
    default:
        return input_.number<std::int64_t>();
    }
}

std::uint64_t Decoder::unsignedNumber(std::uint32_t width)
{
    switch (width) {
    case 1:
        return input_.number<std::uint8_t>();
    case 2:
        return input_.number<std::uint16_t>();
    case 4:
        return input_.number<std::uint32_t>();
    default:
        return input_.number<std::uint64_t>();
    }
}

Datum Decoder::string(const StringType& type)
{
    const auto length = input_.number<std::uint32_t>();
    if (length == 0) {
        return {std::string()};
    }
    const auto bytes = input_.octets(length);
    if (bytes.back() != 0) {
        input_.fail("the text does not end with a NUL");
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), length - 1);
    check(faultOf(type, text));
    return {std::string(text)};
}

Datum Decoder::enumeration(const EnumType& type)
{
    const std::int64_t number = signedNumber(widthOf(type));
    check(faultOf(type, number, options_));
    return {number};
}

// --- Lists -------------------------------------------------------------------------------------------------

Datum Decoder::sequence(const SequenceType& type)
{
    Datum result;
    const auto read = [&] {
        const auto length = input_.number<std::uint32_t>();
        check(faultOfLength(type, length));
        const Type& element = resolved(*type.element);
        checkElements(element, length);
        result = isByte(element) ? octets(length) : elements(element, length, nullptr);
    };
    if (encapsulation_.version == XcdrVersion::Xcdr2 &&
        delimitsListOf(*type.element, options_.delimitsEnumerations)) {
        delimited(read);
    } else {
        read();
    }
    return result;
}

Datum Decoder::array(const ArrayType& type)
{
    const ArrayShape shape(type);
    Datum result;
    const auto read = [&] {
        checkElements(*shape.element, shape.count);
        result = isByte(*shape.element) ? octets(shape.count)
                                        : elements(*shape.element, shape.count, &shape.dimensions);
    };
    if (encapsulation_.version == XcdrVersion::Xcdr2 &&
        delimitsListOf(*shape.element, options_.delimitsEnumerations)) {
        delimited(read);
    } else {
        read();
    }
    return result;
}

void Decoder::checkElements(const Type& element, std::uint64_t count)
{
    const std::uint64_t least = leastSize(element, encapsulation_.version);
    if (least != 0 && count > input_.remaining() / least) {
        input_.fail(std::to_string(count) + " elements do not fit into the " +
                    std::to_string(input_.remaining()) + " bytes that are left");
    }
}

Datum Decoder::octets(std::uint64_t count)
{
    const auto bytes = input_.octets(count);
    return {Datum::Octets(bytes.begin(), bytes.end())};
}

Datum Decoder::elements(const Type& element, std::uint64_t count,
                        const std::vector<std::uint32_t>* dimensions)
{
    Datum::Elements result;
    for (std::uint64_t i = 0; i < count; ++i) {
        const CodecPath::Step step(path_, i, dimensions);
        result.push_back(value(element));
    }
    return {std::move(result)};
}

void Decoder::check(const Fault& fault) const
{
    if (fault) {
        input_.fail(*fault);
    }
}

Datum decode(const Type& type, std::span<const std::uint8_t> payload, const CodecOptions& options)
{
    return Decoder(payload, options).decode(type);
}

} // namespace ovra::plex::idl
