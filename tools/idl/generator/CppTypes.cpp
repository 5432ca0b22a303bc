// SPDX-License-Identifier: Apache-2.0
#include "CppTypes.hpp"

#include "Names.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <ranges>

namespace ovra::plex::idl
{

namespace
{

constexpr std::array<std::string_view, 15> primitives{
    "bool",         "std::uint8_t",  "char",          "wchar_t",      "std::int8_t",
    "std::uint8_t", "std::int16_t",  "std::uint16_t", "std::int32_t", "std::uint32_t",
    "std::int64_t", "std::uint64_t", "float",         "double",       "long double"};

std::string arrayType(const ArrayType& array)
{
    std::string text = cppType(*array.element);
    for (const std::uint32_t size : std::views::reverse(array.dimensions)) {
        text.insert(0, "std::array<").append(", " + std::to_string(size) + ">");
    }
    return text;
}

std::string sequenceType(const SequenceType& sequence)
{
    if (resolved(*sequence.element).kind == TypeKind::Boolean) {
        return "ovra::plex::Booleans";
    }
    return "std::vector<" + cppType(*sequence.element) + ">";
}

/// The plain form of a struct is found in one place whether the struct is a topic or not, which another
/// module's files do not say.
std::string namedType(const NamedType& type)
{
    return type.kind == TypeKind::Struct
               ? "::" + namespaceOf(*type.module) + "::values::" + declaredName(type.name)
               : qualifiedName(type);
}

/// The enum of which an array consists, whose new values are none of 0; null for other arrays.
const EnumType* enumToFillWith(const ArrayType& array)
{
    const Type* element = &resolved(*array.element);
    while (const auto* const inner = as<ArrayType>(*element)) {
        element = &resolved(*inner->element);
    }
    const auto* const enumeration = as<EnumType>(*element);
    const bool startsWithZero =
        enumeration == nullptr ||
        std::ranges::find_if(enumeration->enumerators, &Enumerator::isDefault)->value == 0;
    return startsWithZero ? nullptr : enumeration;
}

/// Zeros, unless the elements start with something else: a call of a function then, whatever the array's
/// size.
std::string initialArray(const ArrayType& array)
{
    const EnumType* const enumeration = enumToFillWith(array);
    if (enumeration == nullptr) {
        return "{}";
    }
    const std::string type = arrayType(array);
    return "ovra::plex::filledArray<" + type + ">(" + initialValue(*enumeration) + ")";
}

/// The digits of a floating-point number, with which C++ reads the same number back.
std::string floatingValue(double value, bool isFloat)
{
    const std::string limits = std::string("std::numeric_limits<") + (isFloat ? "float" : "double") + ">::";
    if (std::isnan(value)) {
        return limits + "quiet_NaN()";
    }
    if (std::isinf(value)) {
        return (value < 0 ? "-" : "") + limits + "infinity()";
    }
    return toString(Value(value)) + (isFloat ? "F" : "");
}

std::string integerValue(std::int64_t value)
{
    // The lowest number has no literal of its own.
    return value == std::numeric_limits<std::int64_t>::min() ? "std::numeric_limits<std::int64_t>::min()"
                                                             : std::to_string(value);
}

std::string characterValue(char value)
{
    const auto code = static_cast<unsigned char>(value);
    const bool isPlain = code >= ' ' && code < 0x7F && value != '\'' && value != '\\';
    return isPlain ? std::string{'\'', value, '\''} : "static_cast<char>(" + std::to_string(code) + ")";
}

} // namespace

Shape shapeOf(const Type& type)
{
    switch (resolved(type).kind) {
    case TypeKind::String:
        return Shape::Text;
    case TypeKind::Sequence:
        return Shape::Sequence;
    case TypeKind::Array:
    case TypeKind::Struct:
    case TypeKind::Union:
        return Shape::Whole;
    default:
        return Shape::Small;
    }
}

std::string underlyingType(const Type& type)
{
    return std::string(type.kind == TypeKind::Bitmask ? "std::uint" : "std::int") +
           std::to_string(storageBits(type)) + "_t";
}

std::string cppType(const Type& type)
{
    const Type& known = resolved(type);
    if (const auto* const array = as<ArrayType>(known)) {
        return arrayType(*array);
    }
    if (const auto* const sequence = as<SequenceType>(known)) {
        return sequenceType(*sequence);
    }
    if (const auto* const named = as<NamedType>(known)) {
        return namedType(*named);
    }
    return known.kind == TypeKind::String ? "std::string"
                                          : std::string(primitives.at(static_cast<std::size_t>(known.kind)));
}

std::string cppType(const Member& member)
{
    const std::string type = cppType(*member.type);
    return member.optional ? "std::optional<" + type + ">" : type;
}

std::string initialValue(const Type& type)
{
    const Type& known = resolved(type);
    if (const auto* const array = as<ArrayType>(known)) {
        return initialArray(*array);
    }
    if (const auto* const enumeration = as<EnumType>(known)) {
        const auto chosen = std::ranges::find_if(enumeration->enumerators, &Enumerator::isDefault);
        return cppValue(known, Value(&*chosen));
    }
    switch (known.kind) {
    case TypeKind::Boolean:
        return "false";
    case TypeKind::Char:
        return "'\\0'";
    case TypeKind::Float:
        return "0.0F";
    case TypeKind::Double:
        return "0.0";
    default:
        break;
    }
    if (isInteger(known.kind)) {
        return "0";
    }
    return shapeOf(known) == Shape::Small ? "{}" : "";
}

std::string initialValue(const Member& member)
{
    if (member.optional) {
        return {};
    }
    return member.defaultValue ? cppValue(*member.type, *member.defaultValue) : initialValue(*member.type);
}

std::string cppValue(const Type& type, const Value& value)
{
    const Type& known = resolved(type);
    if (const auto* const enumerator = std::get_if<const Enumerator*>(&value)) {
        return cppType(known) + "::" + cppName((*enumerator)->name);
    }
    if (const auto* const flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    if (const auto* const character = std::get_if<char>(&value)) {
        return characterValue(*character);
    }
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return quoted(*text);
    }
    if (const auto* const number = std::get_if<double>(&value)) {
        return floatingValue(*number, known.kind == TypeKind::Float);
    }
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return integerValue(*number);
    }
    const std::string number = std::to_string(std::get<std::uint64_t>(value)) +
                               (known.kind == TypeKind::Uint64 || known.kind == TypeKind::Bitmask ? "U" : "");
    return known.kind == TypeKind::Bitmask ? cppType(known) + "{" + number + "}" : number;
}

std::string quoted(std::string_view text)
{
    constexpr std::string_view digits = "01234567";
    std::string result = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        const bool isTrigraph = c == '?' && result.ends_with('?'); // or may become one
        if (c == '"' || c == '\\' || isTrigraph) {
            result += {'\\', c};
        } else if (c == '\n') {
            result += "\\n";
        } else if (code >= ' ' && code != 0x7F) {
            result += c;
        } else {
            result += {'\\', digits[code >> 6U], digits[code >> 3U & 7U], digits[code & 7U]};
        }
    }
    return result + "\"";
}

void addHeaders(std::set<std::string>& headers, const Type& type)
{
    const Type& known = resolved(type);
    if (const auto* const array = as<ArrayType>(known)) {
        headers.insert("<array>");
        addHeaders(headers, *array->element);
    } else if (const auto* const sequence = as<SequenceType>(known)) {
        const bool ofBooleans = resolved(*sequence->element).kind == TypeKind::Boolean;
        headers.insert(ofBooleans ? "<plex/Booleans.hpp>" : "<vector>");
        addHeaders(headers, *sequence->element);
    } else if (const auto* const named = as<NamedType>(known)) {
        headers.insert("<" + valuesHeader(*named->module) + ">");
    } else if (known.kind == TypeKind::String) {
        headers.insert("<string>");
    } else if (isInteger(known.kind)) {
        headers.insert("<cstdint>");
    }
}

void addHeaders(std::set<std::string>& headers, const Member& member)
{
    addHeaders(headers, *member.type);
    if (member.optional) {
        headers.insert("<optional>");
    }
    addHeadersOfText(headers, initialValue(member));
}

void addHeadersOfText(std::set<std::string>& headers, const std::string& text)
{
    if (text.find("std::numeric_limits<") != std::string::npos) {
        headers.insert("<limits>");
    }
    if (text.find("ovra::plex::filledArray<") != std::string::npos) {
        headers.insert("<plex/FilledArray.hpp>");
    }
}

std::string valuesHeader(const Module& module)
{
    return modulePath(module).front() + "/Values.hpp";
}

bool holdsFloating(const Type& type)
{
    const Type& known = resolved(type);
    const auto memberHolds = [](const Member* member) {
        return holdsFloating(*member->type);
    };
    if (const auto* const array = as<ArrayType>(known)) {
        return holdsFloating(*array->element);
    }
    if (const auto* const sequence = as<SequenceType>(known)) {
        return holdsFloating(*sequence->element);
    }
    if (const auto* const structure = as<StructType>(known)) {
        return std::ranges::any_of(allMembers(*structure), memberHolds);
    }
    if (const auto* const choice = as<UnionType>(known)) {
        return std::ranges::any_of(choice->cases,
                                   [](const UnionCase& each) { return holdsFloating(*each.type); });
    }
    return isFloating(known.kind);
}

} // namespace ovra::plex::idl
