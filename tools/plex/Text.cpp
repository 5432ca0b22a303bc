// SPDX-License-Identifier: Apache-2.0
#include "Text.hpp"

#include "Failure.hpp"
#include "Path.hpp"
#include "Printable.hpp"
#include "Words.hpp"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace ovra::plex::tool
{

namespace
{

bool isOneWord(const std::string& text)
{
    constexpr std::string_view others = "_-.:/+";
    return !text.empty() && std::ranges::all_of(text, [&](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               others.find(c) != std::string_view::npos;
    });
}

/// A member's value. @param whole whether it is all that a line shows: texts have no quotes then.
std::string memberInWords(const Json& value, bool whole)
{
    if (value.is_object()) {
        return "{" + inOneLine(value) + "}";
    }
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        if (whole) {
            return printable(text);
        }
        return isOneWord(text) ? text : value.dump();
    }
    if (!value.is_array()) {
        return value.dump();
    }
    std::string list;
    for (const auto& element : value) {
        list += (list.empty() ? "" : ", ") + memberInWords(element, false);
    }
    return "[" + list + "]";
}

Template fieldOf(const std::string& name, const idl::StructType* type)
{
    if (name.starts_with('.')) {
        const auto path = Path::parse(std::string_view(name).substr(1));
        if (type != nullptr) {
            path.typeIn(*type);
        }
        return [path](const Fields& fields) {
            const auto* const found = path.find(fields.value);
            return found == nullptr ? std::string() : memberInWords(*found, true);
        };
    }
    if (name == "value") {
        return [](const Fields& fields) {
            return fields.value.is_null() ? std::string() : inOneLine(fields.value);
        };
    }
    if (name == "key") {
        return [](const Fields& fields) {
            return fields.key.is_null() ? std::string() : inOneLine(fields.key);
        };
    }
    const std::vector<std::pair<std::string, std::string Fields::*>> texts{{"topic", &Fields::topic},
                                                                           {"time", &Fields::time},
                                                                           {"age", &Fields::age},
                                                                           {"publisher", &Fields::publisher}};
    const auto found = std::ranges::find(texts, name, [](const auto& each) { return each.first; });
    if (found == texts.end()) {
        throw Failure(ExitCode::Usage,
                      "the template has \"{" + name +
                          "}\": there are {topic}, {time}, {age}, {publisher}, {value}, {key} and "
                          "{.member}");
    }
    return [member = found->second](const Fields& fields) {
        return fields.*member;
    };
}

Template constantOf(std::string text)
{
    return [text = std::move(text)](const Fields& /*fields*/) {
        return text;
    };
}

} // namespace

std::string inOneLine(const Json& value)
{
    if (!value.is_object()) {
        return memberInWords(value, false);
    }
    std::string line;
    for (const auto& [name, member] : value.items()) {
        line += (line.empty() ? "" : " ") + name + "=" + memberInWords(member, false);
    }
    return line;
}

Template parseTemplate(const std::string& text, const idl::StructType* type)
{
    static const std::map<std::string, char> escapes{
        {"{{", '{'}, {"}}", '}'}, {R"(\n)", '\n'}, {R"(\t)", '\t'}};
    std::vector<Template> parts;
    std::string constant;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto escape = escapes.find(text.substr(i, 2));
        if (escape != escapes.end()) {
            constant += escape->second;
            ++i;
        } else if (text[i] == '{') {
            const auto end = text.find('}', i);
            if (end == std::string::npos) {
                throw Failure(ExitCode::Usage,
                              R"(the template has a "{" without a "}"; {{ stands for a brace)");
            }
            parts.push_back(constantOf(std::exchange(constant, {})));
            parts.push_back(fieldOf(text.substr(i + 1, end - i - 1), type));
            i = end;
        } else {
            constant += text[i];
        }
    }
    parts.push_back(constantOf(constant));
    return [parts](const Fields& fields) {
        std::string line;
        for (const auto& part : parts) {
            line += part(fields);
        }
        return line;
    };
}

} // namespace ovra::plex::tool
