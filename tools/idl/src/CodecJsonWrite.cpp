// SPDX-License-Identifier: Apache-2.0
#include "CodecJson.hpp"
#include "CodecPath.hpp"
#include "CodecTypes.hpp"
#include "Text.hpp"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>
#include <type_traits>

namespace ovra::plex::idl
{

namespace
{

using Json = nlohmann::ordered_json;

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        if (size == 0) {
            return false;
        }
        const char32_t character = firstCharacter(text);
        const bool isOverlong = (size == 3 && character < 0x800) || (size == 4 && character < 0x10000);
        if (isOverlong || isSurrogate(character) || character > 0x10FFFF) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

template <class Number>
std::string nanText(Number number)
{
    using Bits = std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>;
    const auto bits = std::bit_cast<Bits>(number);
    if (bits == std::bit_cast<Bits>(std::numeric_limits<Number>::quiet_NaN())) {
        return "NaN";
    }
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    return "NaN(0x" + std::string(digits.data(), end.ptr) + ")";
}

template <class Number>
Json floatingJson(Number number)
{
    if (std::isnan(number)) {
        return nanText(number);
    }
    if (std::isinf(number)) {
        return number < 0 ? "-Infinity" : "Infinity";
    }
    return number;
}

/// The number that is written with fewest digits of those from which this one is read.
Json shortJson(float number)
{
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    double shortest = 0;
    std::from_chars(buffer.data(), end.ptr, shortest);
    return static_cast<float>(shortest) == number ? shortest : double{number};
}

class JsonMaker
{
public:
    Json make(const Type& declared, const Datum& datum);

private:
    Json content(const Type& type, const Datum& datum);
    static Json character(char32_t character);
    static Json string(const std::string& text);
    static Json bitmask(const BitmaskType& type, std::uint64_t bits);
    Json sequence(const SequenceType& type, const Datum& datum);
    Json array(const ArrayType& type, const Datum& datum);
    Json dimension(const ArrayShape& shape, const Datum& datum, std::size_t depth, std::uint64_t& index);
    Json element(const ArrayShape& shape, const Datum& datum, std::uint64_t index);
    Json structure(const StructType& type, const StructDatum& datum);
    Json choice(const UnionType& type, const UnionDatum& datum);
    void count();

    template <class T>
    const T& get(const Type& type, const Datum& datum) const;

    CodecPath path_;
    MemberLists members_;
    std::size_t values_ = 0;
};

template <class T>
const T& JsonMaker::get(const Type& type, const Datum& datum) const
{
    const T* const value = std::get_if<T>(&datum.content);
    if (value == nullptr) {
        path_.fail("the value is none of " + toString(type));
    }
    return *value;
}

void JsonMaker::count()
{
    if (++values_ > MaximumJsonValues) {
        path_.fail("the text takes more than " + std::to_string(MaximumJsonValues) + " values");
    }
}

Json JsonMaker::make(const Type& declared, const Datum& datum)
{
    count();
    const Type& type = resolved(declared);
    const bool isDefault = std::holds_alternative<std::monostate>(datum.content);
    return isDefault ? content(type, defaultOf(type)) : content(type, datum);
}

Json JsonMaker::content(const Type& type, const Datum& datum)
{
    switch (type.kind) {
    case TypeKind::Boolean:
        return get<bool>(type, datum);
    case TypeKind::Char:
        return character(static_cast<unsigned char>(get<char>(type, datum)));
    case TypeKind::WChar:
        return character(get<char32_t>(type, datum));
    case TypeKind::Float: {
        const float number = get<float>(type, datum);
        return std::isfinite(number) ? shortJson(number) : floatingJson(number);
    }
    case TypeKind::Double:
        return floatingJson(get<double>(type, datum));
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return get<std::int64_t>(type, datum);
    case TypeKind::Octet:
    case TypeKind::Uint8:
    case TypeKind::Uint16:
    case TypeKind::Uint32:
    case TypeKind::Uint64:
        return get<std::uint64_t>(type, datum);
    case TypeKind::String:
        return string(get<std::string>(type, datum));
    case TypeKind::Enum: {
        const auto number = get<std::int64_t>(type, datum);
        const Enumerator* const enumerator = findEnumerator(*as<EnumType>(type), number);
        return enumerator == nullptr ? Json(number) : Json(enumerator->name);
    }
    case TypeKind::Bitmask:
        return bitmask(*as<BitmaskType>(type), get<std::uint64_t>(type, datum));
    case TypeKind::Sequence:
        return sequence(*as<SequenceType>(type), datum);
    case TypeKind::Array:
        return array(*as<ArrayType>(type), datum);
    case TypeKind::Struct:
        return structure(*as<StructType>(type), get<StructDatum>(type, datum));
    case TypeKind::Union:
        return choice(*as<UnionType>(type), get<UnionDatum>(type, datum));
    default:
        path_.fail(unsupported(type));
    }
}

/// Half of a pair of UTF-16 is no character by itself, and stands as its number.
Json JsonMaker::character(char32_t character)
{
    if (isSurrogate(character)) {
        return static_cast<std::uint32_t>(character);
    }
    std::string text;
    append(text, character);
    return text;
}

Json JsonMaker::string(const std::string& text)
{
    if (isUtf8(text)) {
        return text;
    }
    Json bytes = Json::array();
    for (const char c : text) {
        bytes.push_back(static_cast<unsigned char>(c));
    }
    return bytes;
}

Json JsonMaker::bitmask(const BitmaskType& type, std::uint64_t bits)
{
    Json flags = Json::array();
    for (const BitFlag& flag : type.flags) {
        const std::uint64_t bit = std::uint64_t{1} << flag.position;
        if ((bits & bit) != 0) {
            flags.push_back(flag.name);
        }
        bits &= ~bit;
    }
    for (; bits != 0; bits &= bits - 1) {
        flags.push_back(std::countr_zero(bits));
    }
    return flags;
}

Json JsonMaker::sequence(const SequenceType& type, const Datum& datum)
{
    Json list = Json::array();
    if (const auto* const octets = std::get_if<Datum::Octets>(&datum.content)) {
        for (const std::uint8_t octet : *octets) {
            count();
            list.push_back(octet);
        }
        return list;
    }
    const auto& elements = get<Datum::Elements>(type, datum);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const CodecPath::Step step(path_, i);
        list.push_back(make(*type.element, elements[i]));
    }
    return list;
}

Json JsonMaker::array(const ArrayType& type, const Datum& datum)
{
    const ArrayShape shape(type);
    if (!std::holds_alternative<std::monostate>(datum.content)) {
        const std::size_t count = isByte(*shape.element) ? get<Datum::Octets>(type, datum).size()
                                                         : get<Datum::Elements>(type, datum).size();
        if (count != shape.count) {
            path_.fail("the array has " + std::to_string(count) + " elements, not " +
                       std::to_string(shape.count));
        }
    }
    std::uint64_t index = 0;
    return dimension(shape, datum, 0, index);
}

Json JsonMaker::dimension(const ArrayShape& shape, const Datum& datum, std::size_t depth,
                          std::uint64_t& index)
{
    Json list = Json::array();
    for (std::uint32_t i = 0; i < shape.dimensions[depth]; ++i) {
        list.push_back(depth + 1 < shape.dimensions.size() ? dimension(shape, datum, depth + 1, index)
                                                           : element(shape, datum, index++));
    }
    return list;
}

Json JsonMaker::element(const ArrayShape& shape, const Datum& datum, std::uint64_t index)
{
    const CodecPath::Step step(path_, index, &shape.dimensions);
    if (const auto* const octets = std::get_if<Datum::Octets>(&datum.content)) {
        count();
        return (*octets)[index];
    }
    const auto* const elements = std::get_if<Datum::Elements>(&datum.content);
    return make(*shape.element, elements == nullptr ? Datum() : (*elements)[index]);
}

Json JsonMaker::structure(const StructType& type, const StructDatum& datum)
{
    Json object = Json::object();
    auto& members = object.get_ref<Json::object_t&>();
    for (const Member* const member : members_.of(type)) {
        const CodecPath::Step step(path_, member->name);
        const Datum* const value = datum.find(*member);
        if (value == nullptr && member->optional) {
            count();
            members.emplace_back(member->name, nullptr);
        } else {
            members.emplace_back(member->name,
                                 make(*member->type, value == nullptr ? defaultOf(*member) : *value));
        }
    }
    return object;
}

Json JsonMaker::choice(const UnionType& type, const UnionDatum& datum)
{
    Json object = Json::object();
    object["discriminator"] =
        make(*type.discriminator, discriminatorDatum(*type.discriminator, datum.discriminator));
    const UnionCase* const one = type.caseOf(datum.discriminator);
    if (one != nullptr && !datum.member.empty()) {
        const CodecPath::Step step(path_, one->name);
        const Datum& value = datum.member.front();
        const bool isDefault = std::holds_alternative<std::monostate>(value.content);
        object["member"] = make(*one->type, isDefault ? defaultOf(*one) : value);
    }
    return object;
}

} // namespace

std::string toJson(const Type& type, const Datum& value, int indent)
{
    return JsonMaker().make(type, value).dump(indent);
}

} // namespace ovra::plex::idl
