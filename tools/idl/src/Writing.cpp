// SPDX-License-Identifier: Apache-2.0
// How parts of a model are written.
#include "Text.hpp"

#include <plex/idl/Model.hpp>

#include <algorithm>
#include <array>
#include <charconv>

namespace ovra::plex::idl
{

namespace
{

constexpr std::array<std::string_view, 15> primitiveNames{
    "boolean", "octet",  "char",  "wchar",  "int8",  "uint8",  "int16",      "uint16",
    "int32",   "uint32", "int64", "uint64", "float", "double", "long double"};

std::string boundText(std::string_view name, std::uint32_t bound)
{
    return std::string(name) + (bound == 0 ? "" : "<" + std::to_string(bound) + ">");
}

std::string furtherBound(std::uint32_t bound)
{
    return bound == 0 ? ">" : ", " + std::to_string(bound) + ">";
}

std::string floatingText(double value)
{
    std::array<char, 32> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    std::string text(buffer.data(), error == std::errc() ? end : buffer.data());
    if (text.find_first_of(".e") == std::string::npos) {
        text += ".0";
    }
    return text;
}

/// A byte as an escape where it can not stand for itself.
void appendQuoted(std::string& text, char c, char mark)
{
    constexpr std::string_view digits = "01234567";
    const auto byte = static_cast<unsigned char>(c);
    if (c == mark || c == '\\') {
        text += '\\';
        text += c;
    } else if (byte >= ' ' && byte < 0x7F) {
        text += c;
    } else {
        text += '\\';
        text += digits[byte >> 6U];
        text += digits[byte >> 3U & 7U];
        text += digits[byte & 7U];
    }
}

std::string quotedText(std::string_view value, char mark)
{
    std::string text(1, mark);
    while (!value.empty()) {
        const std::size_t size = characterSize(value);
        if (size > 1) {
            text += value.substr(0, size);
        } else {
            appendQuoted(text, value[0], mark);
        }
        value.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return text + mark;
}

struct ValueWriter {
    std::string operator()(bool value) const { return value ? "TRUE" : "FALSE"; }

    std::string operator()(char value) const { return quotedText({&value, 1}, '\''); }

    std::string operator()(char32_t value) const
    {
        std::string text;
        append(text, value);
        return "L" + quotedText(text, '\'');
    }

    std::string operator()(std::int64_t value) const { return std::to_string(value); }

    std::string operator()(std::uint64_t value) const { return std::to_string(value); }

    std::string operator()(double value) const { return floatingText(value); }

    std::string operator()(const std::string& value) const { return quotedText(value, '"'); }

    std::string operator()(const Enumerator* value) const { return value->name; }
};

} // namespace

std::string toString(const Value& value)
{
    return std::visit(ValueWriter(), value);
}

std::string toString(const Type& type)
{
    if (const auto* const named = as<NamedType>(type)) {
        return named->scopedName;
    }
    if (const auto* const string = as<StringType>(type)) {
        return boundText(type.kind == TypeKind::String ? "string" : "wstring", string->bound);
    }
    if (const auto* const sequence = as<SequenceType>(type)) {
        return "sequence<" + toString(*sequence->element) + furtherBound(sequence->bound);
    }
    if (const auto* const map = as<MapType>(type)) {
        return "map<" + toString(*map->key) + ", " + toString(*map->value) + furtherBound(map->bound);
    }
    if (const auto* const array = as<ArrayType>(type)) {
        std::string text = toString(*array->element);
        for (const std::uint32_t dimension : array->dimensions) {
            text += "[" + std::to_string(dimension) + "]";
        }
        return text;
    }
    return std::string(primitiveNames.at(static_cast<std::size_t>(type.kind)));
}

std::string_view toString(Extensibility extensibility)
{
    switch (extensibility) {
    case Extensibility::Final:
        return "final";
    case Extensibility::Appendable:
        return "appendable";
    case Extensibility::Mutable:
        break;
    }
    return "mutable";
}

} // namespace ovra::plex::idl
