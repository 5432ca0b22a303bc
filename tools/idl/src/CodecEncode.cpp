// SPDX-License-Identifier: Apache-2.0
#include "CodecEncoder.hpp"

#include <limits>
#include <utility>

namespace ovra::plex::idl
{

Encoder::Encoder(const Encoding& encoding, const CodecOptions& options, Part part, std::size_t origin)
    : options_(options)
    , version_(encoding.version)
    , part_(part)
    , output_(path_, encoding.order, version_ == XcdrVersion::Xcdr1 ? 8 : 4, origin)
{
}

Layout Encoder::layoutOf(Extensibility extensibility) const
{
    return part_ == Part::Key ? Layout::Plain : idl::layoutOf(extensibility, version_);
}

void Encoder::check(const Fault& fault) const
{
    if (fault) {
        path_.fail(*fault);
    }
}

/// What a value holds, which must fit its type.
template <class T>
const T& Encoder::get(const Type& type, const Datum& datum) const
{
    const T* const value = std::get_if<T>(&datum.content);
    if (value == nullptr) {
        path_.fail("the value is none of " + toString(type));
    }
    return *value;
}

// --- Values ------------------------------------------------------------------------------------------------

void Encoder::write(const Type& declared, const Datum& datum)
{
    const Type& type = resolved(declared);
    const std::size_t begin = output_.position();
    if (std::holds_alternative<std::monostate>(datum.content)) {
        content(type, defaultOf(type));
    } else {
        content(type, datum);
    }
    if (output_.position() == begin && ++emptyValues_ > MaximumEmptyValues) {
        path_.fail("more than " + std::to_string(MaximumEmptyValues) + " values take no bytes");
    }
}

void Encoder::content(const Type& type, const Datum& datum)
{
    switch (type.kind) {
    case TypeKind::Boolean:
        boolean(get<bool>(type, datum));
        break;
    case TypeKind::Char:
        output_.number(get<char>(type, datum));
        break;
    case TypeKind::WChar:
        wideCharacter(get<char32_t>(type, datum));
        break;
    case TypeKind::Float:
        output_.number(get<float>(type, datum));
        break;
    case TypeKind::Double:
        output_.number(get<double>(type, datum));
        break;
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        signedNumber(type, get<std::int64_t>(type, datum));
        break;
    case TypeKind::Octet:
    case TypeKind::Uint8:
    case TypeKind::Uint16:
    case TypeKind::Uint32:
    case TypeKind::Uint64:
    case TypeKind::Bitmask:
        unsignedNumber(type, get<std::uint64_t>(type, datum));
        break;
    case TypeKind::String:
        string(*as<StringType>(type), get<std::string>(type, datum));
        break;
    case TypeKind::Enum:
        enumeration(*as<EnumType>(type), get<std::int64_t>(type, datum));
        break;
    case TypeKind::Sequence:
        sequence(*as<SequenceType>(type), datum);
        break;
    case TypeKind::Array:
        array(*as<ArrayType>(type), datum);
        break;
    case TypeKind::Struct:
        structure(*as<StructType>(type), get<StructDatum>(type, datum));
        break;
    case TypeKind::Union:
        choice(*as<UnionType>(type), get<UnionDatum>(type, datum));
        break;
    default:
        path_.fail(unsupported(type));
    }
}

void Encoder::boolean(bool boolean)
{
    output_.number(static_cast<std::uint8_t>(boolean ? 1 : 0));
}

void Encoder::wideCharacter(char32_t character)
{
    if (character > std::numeric_limits<std::uint16_t>::max()) {
        path_.fail("the character takes more than 16 bits");
    }
    output_.number(static_cast<std::uint16_t>(character));
}

void Encoder::signedNumber(const Type& type, std::int64_t number)
{
    check(faultOfNumber(type, number));
    switch (widthOf(type)) {
    case 1:
        output_.number(static_cast<std::int8_t>(number));
        break;
    case 2:
        output_.number(static_cast<std::int16_t>(number));
        break;
    case 4:
        output_.number(static_cast<std::int32_t>(number));
        break;
    default:
        output_.number(number);
        break;
    }
}

void Encoder::unsignedNumber(const Type& type, std::uint64_t number)
{
    check(faultOfNumber(type, number));
    switch (widthOf(type)) {
    case 1:
        output_.number(static_cast<std::uint8_t>(number));
        break;
    case 2:
        output_.number(static_cast<std::uint16_t>(number));
        break;
    case 4:
        output_.number(static_cast<std::uint32_t>(number));
        break;
    default:
        output_.number(number);
        break;
    }
}

void Encoder::string(const StringType& type, const std::string& text)
{
    check(faultOf(type, text));
    output_.number(static_cast<std::uint32_t>(text.size() + 1));
    output_.octets({reinterpret_cast<const std::uint8_t*>(text.c_str()), text.size() + 1});
}

void Encoder::enumeration(const EnumType& type, std::int64_t number)
{
    check(faultOf(type, number, options_));
    signedNumber(type, number);
}

// --- Lists -------------------------------------------------------------------------------------------------

/// Writes the number of bytes that follow before them.
template <class Write>
void Encoder::delimited(const Write& write)
{
    output_.number(std::uint32_t{0});
    const std::size_t begin = output_.position();
    write();
    output_.overwrite(begin - 4, static_cast<std::uint32_t>(output_.position() - begin));
}

template <class Write>
void Encoder::list(const Type& element, const Write& write)
{
    if (version_ == XcdrVersion::Xcdr2 && delimitsListOf(element, options_.delimitsEnumerations)) {
        delimited(write);
    } else {
        write();
    }
}

void Encoder::sequence(const SequenceType& type, const Datum& datum)
{
    const auto writeLength = [&](std::size_t length) {
        check(faultOfLength(type, length));
        output_.number(static_cast<std::uint32_t>(length));
    };
    if (isByte(resolved(*type.element))) {
        const auto& octets = get<Datum::Octets>(type, datum);
        writeLength(octets.size());
        output_.octets(octets);
        return;
    }
    const auto& elements = get<Datum::Elements>(type, datum);
    list(*type.element, [&] {
        writeLength(elements.size());
        for (std::size_t i = 0; i < elements.size(); ++i) {
            const CodecPath::Step step(path_, i);
            write(*type.element, elements[i]);
        }
    });
}

void Encoder::array(const ArrayType& type, const Datum& datum)
{
    const ArrayShape shape(type);
    const bool isDefault = std::holds_alternative<std::monostate>(datum.content);
    if (!isDefault) {
        const std::size_t count = isByte(*shape.element) ? get<Datum::Octets>(type, datum).size()
                                                         : get<Datum::Elements>(type, datum).size();
        if (count != shape.count) {
            path_.fail("the array has " + std::to_string(count) + " elements, not " +
                       std::to_string(shape.count));
        }
    }
    list(*shape.element, [&] { elements(shape, datum); });
}

void Encoder::elements(const ArrayShape& shape, const Datum& datum)
{
    if (const auto* const octets = std::get_if<Datum::Octets>(&datum.content)) {
        output_.octets(*octets);
        return;
    }
    const auto* const elements = std::get_if<Datum::Elements>(&datum.content);
    const Datum otherwise = elements == nullptr ? defaultOf(*shape.element) : Datum();
    for (std::uint64_t i = 0; i < shape.count; ++i) {
        const CodecPath::Step step(path_, i, &shape.dimensions);
        write(*shape.element, elements == nullptr ? otherwise : (*elements)[i]);
    }
}

// --- Parameters --------------------------------------------------------------------------------------------

template <class Write>
void Encoder::parameter(std::uint32_t id, bool mustUnderstand, const Type& type, const Write& write)
{
    if (version_ == XcdrVersion::Xcdr1) {
        parameterOfVersion1(id, mustUnderstand, write);
    } else {
        parameterOfVersion2(id, mustUnderstand, type, write);
    }
}

/// The header of a parameter in version 1. Alignment begins anew behind it, and is not taken back behind the
/// value.
void Encoder::parameterHeader(std::uint32_t id, std::uint16_t flags, std::uint32_t size)
{
    output_.align(4);
    if (id > HighestShortId) {
        output_.number(static_cast<std::uint16_t>(flags | ExtendedParameter));
        output_.number(std::uint16_t{8});
        output_.number(id);
        output_.number(size);
    } else {
        output_.number(static_cast<std::uint16_t>(flags | id));
        output_.number(static_cast<std::uint16_t>(size));
    }
    output_.beginAlignment();
}

template <class Write>
void Encoder::parameterOfVersion1(std::uint32_t id, bool mustUnderstand, const Write& write)
{
    const auto flags = static_cast<std::uint16_t>(mustUnderstand ? 0x4000 : 0);
    parameterHeader(id, flags, 0);
    const std::size_t begin = output_.position();
    write();
    const auto size = static_cast<std::uint32_t>(output_.position() - begin);
    if (id > HighestShortId) {
        output_.overwrite(begin - 4, size);
    } else if (size <= std::numeric_limits<std::uint16_t>::max()) {
        output_.overwrite(begin - 2, static_cast<std::uint16_t>(size));
    } else {
        output_.insert(begin, 8);
        output_.overwrite(begin - 4, static_cast<std::uint16_t>(flags | ExtendedParameter));
        output_.overwrite(begin - 2, std::uint16_t{8});
        output_.overwrite(begin, id);
        output_.overwrite(begin + 4, size);
    }
}

template <class Write>
void Encoder::parameterOfVersion2(std::uint32_t id, bool mustUnderstand, const Type& type, const Write& write)
{
    const std::uint32_t flagsAndId = (mustUnderstand ? 0x80000000U : 0U) | id;
    output_.number(flagsAndId);
    const std::size_t begin = output_.position();
    write();
    const auto size = static_cast<std::uint32_t>(output_.position() - begin);
    std::uint32_t code = sharedLengthCode(type, options_);
    if (code == 0 && std::has_single_bit(size) && size <= 8) {
        code = static_cast<std::uint32_t>(std::countr_zero(size));
    } else if (code == 0) {
        code = 4;
        output_.insert(begin, 4);
        output_.overwrite(begin, size);
    }
    output_.overwrite(begin - 4, flagsAndId | code << 28U);
}

// --- Structs and unions ------------------------------------------------------------------------------------

/// Members of a struct or union, with what stands around them.
template <class Write>
void Encoder::laidOut(Layout layout, const Write& write)
{
    if (layout != Layout::Plain && version_ == XcdrVersion::Xcdr2) {
        delimited(write);
        return;
    }
    write();
    if (layout == Layout::Parameters) {
        output_.align(4);
        output_.number(static_cast<std::uint16_t>(EndOfParameters));
        output_.number(std::uint16_t{0});
    }
}

void Encoder::structure(const StructType& type, const StructDatum& datum)
{
    const Layout layout = layoutOf(type.extensibility);
    laidOut(layout, [&] {
        for (const Member* const member : part_ == Part::Key ? members_.keysOf(type) : members_.of(type)) {
            const CodecPath::Step step(path_, member->name);
            const Datum* const found = datum.find(*member);
            const Datum otherwise = found == nullptr ? defaultOf(*member) : Datum();
            const Datum* const value = found != nullptr || member->optional ? found : &otherwise;
            if (layout != Layout::Parameters) {
                memberInPlace(*member, value);
            } else if (value != nullptr) {
                parameter(member->id, member->mustUnderstand, *member->type,
                          [&] { write(*member->type, *value); });
            }
        }
    });
}

void Encoder::memberInPlace(const Member& member, const Datum* datum)
{
    if (member.optional) {
        optionalInPlace(member, datum);
    } else {
        write(*member.type, *datum);
    }
}

void Encoder::optionalInPlace(const Member& member, const Datum* datum)
{
    const auto writeValue = [&] {
        if (datum != nullptr) {
            write(*member.type, *datum);
        }
    };
    if (version_ == XcdrVersion::Xcdr1) {
        parameterOfVersion1(member.id, member.mustUnderstand, writeValue);
    } else {
        boolean(datum != nullptr);
        writeValue();
    }
}

void Encoder::choice(const UnionType& type, const UnionDatum& datum)
{
    const Datum discriminator = discriminatorDatum(*type.discriminator, datum.discriminator);
    const auto writeDiscriminator = [&] {
        const CodecPath::Step step(path_, "discriminator");
        write(*type.discriminator, discriminator);
    };
    const Layout layout = layoutOf(type.extensibility);
    laidOut(layout, [&] {
        if (layout == Layout::Parameters) {
            parameter(DiscriminatorId, false, *type.discriminator, writeDiscriminator);
        } else {
            writeDiscriminator();
        }
        if (part_ == Part::All || !type.discriminatorIsKey) {
            selected(type, datum);
        }
    });
}

void Encoder::selected(const UnionType& type, const UnionDatum& datum)
{
    const UnionCase* const one = type.caseOf(datum.discriminator);
    if ((one == nullptr) != datum.member.empty()) {
        path_.fail(one == nullptr ? "the discriminator selects no case, and there is a member"
                                  : "the member \"" + one->name + "\" is missing");
    }
    const Datum discriminator = discriminatorDatum(*type.discriminator, datum.discriminator);
    if (const Fault fault = faultOfCase(type, discriminator, options_)) {
        path_.fail(*fault);
    }
    if (one != nullptr) {
        const CodecPath::Step step(path_, one->name);
        if (layoutOf(type.extensibility) == Layout::Parameters) {
            parameter(one->id, one->mustUnderstand, *one->type, [&] { selectedCase(*one, datum); });
        } else {
            selectedCase(*one, datum);
        }
    }
}

void Encoder::selectedCase(const UnionCase& one, const UnionDatum& datum)
{
    const Datum& value = datum.member.front();
    const bool isDefault = std::holds_alternative<std::monostate>(value.content);
    write(*one.type, isDefault ? defaultOf(one) : value);
}

// --- Payloads ----------------------------------------------------------------------------------------------

namespace
{

std::uint8_t identifierOf(const Type& type, const Encoding& encoding)
{
    const Layout layout = layoutOf(extensibilityOf(type), encoding.version);
    const int endianness = encoding.order == std::endian::little ? 1 : 0;
    if (encoding.version == XcdrVersion::Xcdr2) {
        return static_cast<std::uint8_t>(6 + 2 * static_cast<int>(layout) + endianness);
    }
    return static_cast<std::uint8_t>((layout == Layout::Parameters ? 2 : 0) + endianness);
}

} // namespace

std::vector<std::uint8_t> encode(const Type& type, const Datum& value, const Encoding& encoding,
                                 const CodecOptions& options)
{
    Encoder encoder(encoding, options, Encoder::Part::All, 4);
    encoder.write(type, value);
    std::vector<std::uint8_t> payload = encoder.take();
    payload[1] = identifierOf(resolved(type), encoding);
    if (encoding.padded) {
        const std::size_t padding = (4 - payload.size() % 4) % 4;
        payload[3] = static_cast<std::uint8_t>(padding);
        payload.resize(payload.size() + padding);
    }
    return payload;
}

} // namespace ovra::plex::idl
