// SPDX-License-Identifier: Apache-2.0
#include "CodecJson.hpp"
#include "CodecPath.hpp"
#include "CodecTypes.hpp"
#include "Text.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

using Json = nlohmann::json;

Json parsed(std::string_view text)
{
    try {
        return Json::parse(text);
    } catch (const Json::exception& error) {
        const std::string message = error.what(); // "[json.exception.parse_error.101] parse error at …"
        const std::size_t end = message.find("] ");
        CodecPath().fail("the text is no JSON: " + message.substr(end == std::string::npos ? 0 : end + 2));
    }
}

/// The number whose bits stand in "NaN(0x…)"; the usual one for "NaN".
template <class Number>
std::optional<Number> nanOf(std::string_view text)
{
    using Bits = std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>;
    if (text == "NaN") {
        return std::numeric_limits<Number>::quiet_NaN();
    }
    if (!text.starts_with("NaN(0x") || !text.ends_with(')')) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(6, text.size() - 7);
    Bits bits = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    const auto number = std::bit_cast<Number>(bits);
    const bool isRead = error == std::errc() && end == digits.data() + digits.size();
    return isRead && std::isnan(number) ? std::optional(number) : std::nullopt;
}

template <class Number>
std::optional<Number> specialOf(std::string_view text)
{
    if (text == "Infinity" || text == "-Infinity") {
        return (text[0] == '-' ? -1 : 1) * std::numeric_limits<Number>::infinity();
    }
    return nanOf<Number>(text);
}

class DatumReader
{
public:
    explicit DatumReader(const CodecOptions& options) : options_(options) {}

    Datum read(const Type& declared, const Json& json);

private:
    bool boolean(const Json& json);
    char32_t character(const Json& json, char32_t highest);
    template <class Number>
    Number floating(const Json& json);
    std::int64_t signedNumber(const Type& type, const Json& json);
    std::uint64_t unsignedNumber(const Type& type, const Json& json);
    Datum string(const StringType& type, const Json& json);
    std::string textOf(const Json& json);
    Datum enumeration(const EnumType& type, const Json& json);
    Datum bitmask(const BitmaskType& type, const Json& json);
    std::uint64_t flag(const BitmaskType& type, const Json& json);
    Datum sequence(const SequenceType& type, const Json& json);
    Datum array(const ArrayType& type, const Json& json);
    void dimension(Datum& result, const ArrayShape& shape, const Json& json, std::size_t depth);
    void append(Datum& result, const Type& element, const Json& json);
    Datum structure(const StructType& type, const Json& json);
    Datum choice(const UnionType& type, const Json& json);
    const Json& discriminatorIn(const Json& json);

    [[noreturn]] void expect(const std::string& what, const Json& json) const;
    void check(const Fault& fault) const;

    CodecOptions options_;
    CodecPath path_;
    MemberLists members_;
};

void DatumReader::expect(const std::string& what, const Json& json) const
{
    path_.fail("expects " + what + ", not " +
               (json.is_structured() ? std::string(json.type_name()) : json.dump(-1, ' ', true)));
}

void DatumReader::check(const Fault& fault) const
{
    if (fault) {
        path_.fail(*fault);
    }
}

Datum DatumReader::read(const Type& declared, const Json& json)
{
    const Type& type = resolved(declared);
    switch (type.kind) {
    case TypeKind::Boolean:
        return {boolean(json)};
    case TypeKind::Char:
        return {static_cast<char>(character(json, 0xFF))};
    case TypeKind::WChar:
        return {character(json, 0xFFFF)};
    case TypeKind::Float:
        return {floating<float>(json)};
    case TypeKind::Double:
        return {floating<double>(json)};
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return {signedNumber(type, json)};
    case TypeKind::Octet:
    case TypeKind::Uint8:
    case TypeKind::Uint16:
    case TypeKind::Uint32:
    case TypeKind::Uint64:
        return {unsignedNumber(type, json)};
    case TypeKind::String:
        return string(*as<StringType>(type), json);
    case TypeKind::Enum:
        return enumeration(*as<EnumType>(type), json);
    case TypeKind::Bitmask:
        return bitmask(*as<BitmaskType>(type), json);
    case TypeKind::Sequence:
        return sequence(*as<SequenceType>(type), json);
    case TypeKind::Array:
        return array(*as<ArrayType>(type), json);
    case TypeKind::Struct:
        return structure(*as<StructType>(type), json);
    case TypeKind::Union:
        return choice(*as<UnionType>(type), json);
    default:
        path_.fail(unsupported(type));
    }
}

// --- Numbers and texts -------------------------------------------------------------------------------------

bool DatumReader::boolean(const Json& json)
{
    if (!json.is_boolean()) {
        expect("true or false", json);
    }
    return json.get<bool>();
}

char32_t DatumReader::character(const Json& json, char32_t highest)
{
    if (json.is_number_unsigned() && highest > 0xFF && json.get<std::uint64_t>() <= highest) {
        return static_cast<char32_t>(json.get<std::uint64_t>());
    }
    const auto* const text = json.get_ptr<const std::string*>();
    if (text == nullptr || text->empty() || characterSize(*text) != text->size() ||
        firstCharacter(*text) > highest) {
        expect("one character up to " + std::to_string(highest), json);
    }
    return firstCharacter(*text);
}

template <class Number>
Number DatumReader::floating(const Json& json)
{
    if (const auto* const text = json.get_ptr<const std::string*>()) {
        const auto special = specialOf<Number>(*text);
        return special ? *special : (expect("a number", json), Number());
    }
    if (!json.is_number()) {
        expect("a number", json);
    }
    const auto wide = json.get<double>();
    const auto number = static_cast<Number>(wide);
    if (std::isinf(number)) {
        path_.fail(json.dump() + " is out of the range of float");
    }
    return number;
}

std::int64_t DatumReader::signedNumber(const Type& type, const Json& json)
{
    if (!json.is_number_integer()) {
        expect("an integer", json);
    }
    if (json.is_number_unsigned() &&
        json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        path_.fail(json.dump() + " is out of the range of " + toString(type));
    }
    const auto number = json.get<std::int64_t>();
    check(faultOfNumber(type, number));
    return number;
}

std::uint64_t DatumReader::unsignedNumber(const Type& type, const Json& json)
{
    if (!json.is_number_integer()) {
        expect("an integer", json);
    }
    if (!json.is_number_unsigned()) {
        path_.fail(json.dump() + " is out of the range of " + toString(type));
    }
    const auto number = json.get<std::uint64_t>();
    check(faultOfNumber(type, number));
    return number;
}

/// A text, or the bytes that it consists of.
std::string DatumReader::textOf(const Json& json)
{
    if (const auto* const text = json.get_ptr<const std::string*>()) {
        return *text;
    }
    if (!json.is_array()) {
        expect("a text", json);
    }
    std::string text;
    for (const Json& byte : json) {
        const CodecPath::Step step(path_, text.size());
        if (!byte.is_number_unsigned() || byte.get<std::uint64_t>() > 0xFF) {
            expect("a byte of a text", byte);
        }
        text += static_cast<char>(byte.get<std::uint64_t>());
    }
    return text;
}

Datum DatumReader::string(const StringType& type, const Json& json)
{
    std::string text = textOf(json);
    check(faultOf(type, text));
    return {std::move(text)};
}

// --- Names -------------------------------------------------------------------------------------------------

Datum DatumReader::enumeration(const EnumType& type, const Json& json)
{
    if (json.is_number_integer()) {
        const std::int64_t number = signedNumber(type, json);
        check(faultOf(type, number, options_));
        return {number};
    }
    const auto* const name = json.get_ptr<const std::string*>();
    if (name == nullptr) {
        expect("the name of an enumerator", json);
    }
    const auto found = std::ranges::find(type.enumerators, *name, &Enumerator::name);
    if (found == type.enumerators.end()) {
        path_.fail("\"" + *name + "\" is no enumerator of " + type.scopedName);
    }
    return {std::int64_t{found->value}};
}

std::uint64_t DatumReader::flag(const BitmaskType& type, const Json& json)
{
    if (json.is_number_unsigned() && json.get<std::uint64_t>() < storageBits(type)) {
        return std::uint64_t{1} << json.get<std::uint64_t>();
    }
    const auto* const name = json.get_ptr<const std::string*>();
    if (name == nullptr) {
        expect("the name of a flag", json);
    }
    const auto found = std::ranges::find(type.flags, *name, &BitFlag::name);
    if (found == type.flags.end()) {
        path_.fail("\"" + *name + "\" is no flag of " + type.scopedName);
    }
    return std::uint64_t{1} << found->position;
}

Datum DatumReader::bitmask(const BitmaskType& type, const Json& json)
{
    if (!json.is_array()) {
        expect("an array of names", json);
    }
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const CodecPath::Step step(path_, i);
        bits |= flag(type, json[i]);
    }
    return {bits};
}

// --- Lists -------------------------------------------------------------------------------------------------

void DatumReader::append(Datum& result, const Type& element, const Json& json)
{
    if (auto* const octets = std::get_if<Datum::Octets>(&result.content)) {
        octets->push_back(static_cast<std::uint8_t>(unsignedNumber(element, json)));
    } else {
        std::get<Datum::Elements>(result.content).push_back(read(element, json));
    }
}

Datum DatumReader::sequence(const SequenceType& type, const Json& json)
{
    if (!json.is_array()) {
        expect("an array", json);
    }
    check(faultOfLength(type, json.size()));
    Datum result = defaultOf(type);
    for (std::size_t i = 0; i < json.size(); ++i) {
        const CodecPath::Step step(path_, i);
        append(result, resolved(*type.element), json[i]);
    }
    return result;
}

Datum DatumReader::array(const ArrayType& type, const Json& json)
{
    const ArrayShape shape(type);
    Datum result = isByte(*shape.element) ? Datum{Datum::Octets()} : Datum{Datum::Elements()};
    dimension(result, shape, json, 0);
    return result;
}

void DatumReader::dimension(Datum& result, const ArrayShape& shape, const Json& json, std::size_t depth)
{
    if (!json.is_array() || json.size() != shape.dimensions[depth]) {
        expect("an array of " + std::to_string(shape.dimensions[depth]) + " elements", json);
    }
    for (std::size_t i = 0; i < json.size(); ++i) {
        const CodecPath::Step step(path_, i);
        if (depth + 1 < shape.dimensions.size()) {
            dimension(result, shape, json[i], depth + 1);
        } else {
            append(result, *shape.element, json[i]);
        }
    }
}

// --- Structs and unions ------------------------------------------------------------------------------------

Datum DatumReader::structure(const StructType& type, const Json& json)
{
    if (!json.is_object()) {
        expect("an object", json);
    }
    const auto& members = members_.of(type);
    StructDatum result;
    for (const auto& [name, value] : json.items()) {
        const auto found = std::ranges::find(members, name, &Member::name);
        if (found == members.end()) {
            path_.fail("\"" + name + "\" is no member of " + type.scopedName);
        }
        const CodecPath::Step step(path_, (*found)->name);
        if (!value.is_null() || !(*found)->optional) {
            result.members.push_back({*found, read(*(*found)->type, value)});
        }
    }
    return {std::move(result)};
}

/// The discriminator of a union, which has nothing but that and the member.
const Json& DatumReader::discriminatorIn(const Json& json)
{
    if (!json.is_object() || !json.contains("discriminator")) {
        expect(R"(an object with "discriminator" and "member")", json);
    }
    for (const auto& [name, value] : json.items()) {
        if (name != "discriminator" && name != "member") {
            path_.fail("\"" + name + R"(" is neither "discriminator" nor "member")");
        }
    }
    return json["discriminator"];
}

Datum DatumReader::choice(const UnionType& type, const Json& json)
{
    const Json& discriminator = discriminatorIn(json);
    UnionDatum result;
    {
        const CodecPath::Step step(path_, "discriminator");
        result.discriminator = discriminatorBits(read(*type.discriminator, discriminator));
    }
    const UnionCase* const one = type.caseOf(result.discriminator);
    if (one == nullptr && json.contains("member")) {
        path_.fail("the discriminator selects no case, and there is a member");
    }
    const Datum number = discriminatorDatum(*type.discriminator, result.discriminator);
    if (const Fault fault = faultOfCase(type, number, options_)) {
        path_.fail(*fault);
    }
    if (one != nullptr) {
        const CodecPath::Step step(path_, one->name);
        result.member.push_back(json.contains("member") ? read(*one->type, json["member"]) : Datum());
    }
    return {std::move(result)};
}

} // namespace

Datum fromJson(const Type& type, std::string_view text, const CodecOptions& options)
{
    return DatumReader(options).read(type, parsed(text));
}

} // namespace ovra::plex::idl
