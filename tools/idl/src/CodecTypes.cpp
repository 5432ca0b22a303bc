// SPDX-License-Identifier: Apache-2.0
#include "CodecTypes.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace ovra::plex::idl
{

const Datum* StructDatum::find(const Member& member) const
{
    const auto found = std::ranges::find(members, &member, &MemberDatum::member);
    return found == members.end() ? nullptr : &found->value;
}

// --- Layout ------------------------------------------------------------------------------------------------

Layout layoutOf(Extensibility extensibility, XcdrVersion version)
{
    if (extensibility == Extensibility::Mutable) {
        return Layout::Parameters;
    }
    return extensibility == Extensibility::Appendable && version == XcdrVersion::Xcdr2 ? Layout::Delimited
                                                                                       : Layout::Plain;
}

Extensibility extensibilityOf(const Type& type)
{
    if (const auto* const structure = as<StructType>(type)) {
        return structure->extensibility;
    }
    const auto* const choice = as<UnionType>(type);
    return choice == nullptr ? Extensibility::Final : choice->extensibility;
}

bool isByte(const Type& type)
{
    return type.kind == TypeKind::Octet || type.kind == TypeKind::Uint8;
}

namespace
{

std::uint64_t leastSizeOfStruct(const StructType& type, XcdrVersion version)
{
    if (layoutOf(type.extensibility, version) != Layout::Plain) {
        return 4; // a delimiter header, or the end of the list
    }
    std::uint64_t size = 0;
    for (const StructType* part = &type; part != nullptr; part = part->base) {
        const auto takesSome = [version](const Member& member) {
            return member.optional || member.external || leastSize(*member.type, version) > 0;
        };
        size += std::ranges::any_of(part->members, takesSome) ? 1U : 0U;
    }
    return size;
}

} // namespace

std::uint64_t leastSize(const Type& declared, XcdrVersion version)
{
    const Type& type = resolved(declared);
    if (const auto* const array = as<ArrayType>(type)) {
        const ArrayShape shape(*array);
        const std::uint64_t element = leastSize(*shape.element, version);
        return element == 0 ? 0 : std::max(shape.count, element); // not their product, which may be too large
    }
    if (const auto* const structure = as<StructType>(type)) {
        return leastSizeOfStruct(*structure, version);
    }
    if (const auto* const choice = as<UnionType>(type)) {
        return widthOf(resolved(*choice->discriminator));
    }
    const std::uint32_t width = widthOf(type);
    return width == 0 ? 4 : width;
}

std::uint32_t sharedLengthCode(const Type& declared, const CodecOptions& options)
{
    const Type& type = resolved(declared);
    if (const auto* const array = as<ArrayType>(type)) {
        return delimitsListOf(*ArrayShape(*array).element, options.delimitsEnumerations) ? 5 : 0;
    }
    if (const auto* const sequence = as<SequenceType>(type)) {
        constexpr std::array<std::uint32_t, 9> codes{0, 5, 0, 0, 6, 0, 0, 0, 7};
        return delimitsListOf(*sequence->element, options.delimitsEnumerations)
                   ? 5
                   : codes.at(widthOf(resolved(*sequence->element)));
    }
    const bool beginsWithLength =
        type.kind == TypeKind::String || extensibilityOf(type) != Extensibility::Final;
    return beginsWithLength ? 5 : 0;
}

const std::vector<const Member*>& MemberLists::of(const StructType& type)
{
    const auto [entry, isNew] = all_.try_emplace(&type);
    if (isNew) {
        entry->second = allMembers(type);
    }
    return entry->second;
}

const std::vector<const Member*>& MemberLists::keysOf(const StructType& type)
{
    const auto [entry, isNew] = keys_.try_emplace(&type);
    if (isNew) {
        std::vector<const Member*> members = allMembers(type);
        std::erase_if(members, [&type](const Member* member) { return type.hasKey && !member->key; });
        std::ranges::stable_sort(members, {}, &Member::id);
        entry->second = std::move(members);
    }
    return entry->second;
}

// --- Defaults ----------------------------------------------------------------------------------------------

namespace
{

/// A value as the model has it.
struct DatumMaker {
    const Type& type;

    template <class T>
    Datum operator()(const T& value) const
    {
        return {value};
    }

    Datum operator()(double value) const
    {
        return type.kind == TypeKind::Float ? Datum{static_cast<float>(value)} : Datum{value};
    }

    Datum operator()(const Enumerator* value) const { return {std::int64_t{value->value}}; }
};

Datum defaultOf(const EnumType& type)
{
    const auto found = std::ranges::find(type.enumerators, true, &Enumerator::isDefault);
    return {std::int64_t{found == type.enumerators.end() ? type.enumerators.front().value : found->value}};
}

/// Of the first case that has a label.
std::uint64_t firstLabel(const UnionType& type)
{
    const auto found =
        std::ranges::find_if(type.cases, [](const UnionCase& one) { return !one.labels.empty(); });
    return found == type.cases.end() ? 0 : found->labels.front().bits;
}

Datum defaultOf(const UnionType& type)
{
    UnionDatum result;
    result.discriminator = discriminatorBits(defaultOf(resolved(*type.discriminator)));
    if (!type.takes(result.discriminator)) {
        result.discriminator = firstLabel(type);
    }
    if (type.caseOf(result.discriminator) != nullptr) {
        result.member.emplace_back();
    }
    return {result};
}

Datum defaultNumber(TypeKind kind)
{
    switch (kind) {
    case TypeKind::Boolean:
        return {false};
    case TypeKind::Char:
        return {'\0'};
    case TypeKind::WChar:
        return {U'\0'};
    case TypeKind::Float:
        return {0.0F};
    case TypeKind::Double:
        return {0.0};
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return {std::int64_t{0}};
    default:
        return {std::uint64_t{0}};
    }
}

} // namespace

Datum defaultOf(const Type& type)
{
    switch (type.kind) {
    case TypeKind::String:
        return {std::string()};
    case TypeKind::Sequence:
        return isByte(resolved(*as<SequenceType>(type)->element)) ? Datum{Datum::Octets()}
                                                                  : Datum{Datum::Elements()};
    case TypeKind::Enum:
        return defaultOf(*as<EnumType>(type));
    case TypeKind::Struct:
        return {StructDatum()};
    case TypeKind::Union:
        return defaultOf(*as<UnionType>(type));
    case TypeKind::Array:
        return {};
    default:
        return defaultNumber(type.kind);
    }
}

Datum defaultOf(const Member& member)
{
    return member.defaultValue ? std::visit(DatumMaker{resolved(*member.type)}, *member.defaultValue)
                               : Datum();
}

Datum discriminatorDatum(const Type& declared, std::uint64_t bits)
{
    const Type& type = resolved(declared);
    switch (type.kind) {
    case TypeKind::Boolean:
        return {bits != 0};
    case TypeKind::Char:
        return {static_cast<char>(bits)};
    case TypeKind::WChar:
        return {static_cast<char32_t>(bits)};
    case TypeKind::Enum:
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return {static_cast<std::int64_t>(bits)};
    default:
        return {bits};
    }
}

std::uint64_t discriminatorBits(const Datum& value)
{
    if (const auto* const boolean = std::get_if<bool>(&value.content)) {
        return *boolean ? 1 : 0;
    }
    if (const auto* const character = std::get_if<char>(&value.content)) {
        return static_cast<unsigned char>(*character);
    }
    if (const auto* const character = std::get_if<char32_t>(&value.content)) {
        return *character;
    }
    if (const auto* const number = std::get_if<std::int64_t>(&value.content)) {
        return static_cast<std::uint64_t>(*number);
    }
    return std::get<std::uint64_t>(value.content);
}

// --- Faults ------------------------------------------------------------------------------------------------

Fault faultOf(const StringType& type, std::string_view text)
{
    if (type.bound != 0 && text.size() > type.bound) {
        return "the text has " + std::to_string(text.size()) + " bytes, at most " +
               std::to_string(type.bound) + " are allowed";
    }
    if (text.find('\0') != std::string_view::npos) {
        return "the text has a NUL in it";
    }
    return std::nullopt;
}

const Enumerator* findEnumerator(const EnumType& type, std::int64_t number)
{
    const auto found = std::ranges::find(type.enumerators, number, &Enumerator::value);
    return found == type.enumerators.end() ? nullptr : &*found;
}

Fault faultOf(const EnumType& type, std::int64_t number, const CodecOptions& options)
{
    if (findEnumerator(type, number) != nullptr) {
        return std::nullopt;
    }
    if (options.keepsUnknownEnumerators) {
        return faultOfNumber(type, number);
    }
    return std::to_string(number) + " is no value of " + type.scopedName;
}

Fault faultOfLength(const SequenceType& type, std::uint64_t length)
{
    const std::uint32_t bound = boundOf(type);
    if (bound == 0 || length <= bound) {
        return std::nullopt;
    }
    return "the sequence has " + std::to_string(length) + " elements, at most " + std::to_string(bound) +
           " are allowed";
}

Fault faultOfNumber(const Type& type, std::int64_t number)
{
    const std::int64_t highest = std::numeric_limits<std::int64_t>::max() >> (64 - storageBits(type));
    if (number >= -highest - 1 && number <= highest) {
        return std::nullopt;
    }
    return std::to_string(number) + " is out of the range of " + toString(type);
}

Fault faultOfNumber(const Type& type, std::uint64_t number)
{
    if (number <= std::numeric_limits<std::uint64_t>::max() >> (64 - storageBits(type))) {
        return std::nullopt;
    }
    return std::to_string(number) + " is out of the range of " + toString(type);
}

Fault faultOfCase(const UnionType& type, const Datum& discriminator, const CodecOptions& options)
{
    const std::uint64_t bits = discriminatorBits(discriminator);
    if (options.keepsUnselected || type.takes(bits)) {
        return std::nullopt;
    }
    return "the discriminator " + std::to_string(static_cast<std::int64_t>(bits)) + " selects no case of " +
           type.scopedName;
}

std::string unsupported(const Type& type)
{
    return toString(type) + " is not supported";
}

} // namespace ovra::plex::idl
