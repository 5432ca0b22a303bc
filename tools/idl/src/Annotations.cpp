// SPDX-License-Identifier: Apache-2.0
#include "Annotations.hpp"

#include "Expressions.hpp"
#include "Keywords.hpp"
#include "Literals.hpp"
#include "Text.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <ranges>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

constexpr std::uint32_t among(std::initializer_list<Annotated> all)
{
    std::uint32_t bits = 0;
    for (const Annotated one : all) {
        bits |= static_cast<std::uint32_t>(one);
    }
    return bits;
}

constexpr std::uint32_t everything = ~0U;

/// The annotations that are known, and what they have an effect on.
const std::unordered_map<std::string_view, std::uint32_t>& known()
{
    using enum Annotated;
    constexpr std::uint32_t members = among({Member, Case});
    constexpr std::uint32_t numbers = among({Member, Case, Alias});
    constexpr std::uint32_t types = among({Struct, Union, Enum, Bitmask, Bitset});
    static const std::unordered_map<std::string_view, std::uint32_t> all{
        {"id", members},
        {"hashid", members},
        {"autoid", among({Module, Struct, Union})},
        {"optional", members},
        {"key", among({Member, Case, Discriminator})},
        {"must_understand", among({Member, Case, Discriminator})},
        {"external", among({Member, Case, Element})},
        {"try_construct", members},
        {"default", members},
        {"default_literal", among({Enumerator})},
        {"value", among({Enumerator})},
        {"unit", numbers | among({Constant, Element})},
        {"min", numbers},
        {"max", numbers},
        {"range", numbers},
        {"bit_bound", among({Enum, Bitmask})},
        {"position", among({Flag})},
        {"extensibility", types},
        {"final", types},
        {"appendable", types},
        {"mutable", types},
        {"topic", among({Struct})},
        {"nested", types},
        {"default_nested", among({Module})},
        {"data_representation", among({Struct, Union})},
        {"ignore_literal_names", among({Enum})},
        {"verbatim", everything}};
    return all;
}

std::string describe(Annotated what)
{
    static const std::vector<std::string> names{"a module",  "a struct",   "a union",         "an enum",
                                                "a bitmask", "a bitset",   "a typedef",       "a constant",
                                                "a member",  "a case",     "a discriminator", "an enumerator",
                                                "a flag",    "an element", "a bit field"};
    std::size_t index = 0;
    while (static_cast<std::uint32_t>(what) >> index != 1) {
        ++index;
    }
    return names[index];
}

const Type& anyString()
{
    static const StringType type(TypeKind::String);
    return type;
}

/// Appends a token to a text, with a blank where it would run into what is there.
void appendToken(std::string& text, const Token& token)
{
    text += !text.empty() && isWordPart(text.back()) && token.isName() ? " " : "";
    text += token.text;
}

/// Reads one value without evaluating it, up to the comma or parenthesis behind it.
std::string skipValue(TokenCursor& tokens)
{
    std::string text;
    for (int depth = 0;;) {
        const Token& token = tokens.peek();
        const bool closes = token.is(")") || token.is("]") || token.is("}");
        if (depth == 0 && (closes || token.is(","))) {
            break;
        }
        if (tokens.atEnd() || token.is(";")) {
            tokens.missing("\")\"");
        }
        const bool opens = token.is("(") || token.is("[") || token.is("{");
        depth += opens ? 1 : 0;
        depth -= closes ? 1 : 0;
        appendToken(text, tokens.take());
    }
    if (text.empty()) {
        tokens.missing("a value");
    }
    return text;
}

void readParameters(TokenCursor& tokens, ReadAnnotation& annotation)
{
    if (!tokens.accept("(") || tokens.accept(")")) {
        return;
    }
    do {
        Annotation::Parameter parameter;
        if (tokens.peek().isName() && tokens.peek(1).is("=")) {
            parameter.name = tokens.take().text;
            tokens.take();
        }
        annotation.values.push_back(tokens.position());
        parameter.text = skipValue(tokens);
        annotation.written.parameters.push_back(std::move(parameter));
    } while (tokens.accept(","));
    tokens.expect(")");
}

/// Says once that an annotation is unknown.
void warnOfUnknown(Context& context, const Annotation& annotation)
{
    const std::size_t colons = annotation.name.rfind(':');
    const std::string last =
        colons == std::string::npos ? annotation.name : annotation.name.substr(colons + 1);
    if (context.knownAnnotations.contains(last) || !context.knownAnnotations.insert(annotation.name).second) {
        return;
    }
    const std::string lower = lowerCase(annotation.name);
    context.reporter.warn(annotation.location, "unknown annotation @" + annotation.name + " has no effect",
                          known().contains(lower) ? "write @" + lower : "");
}

} // namespace

std::optional<std::size_t> ReadAnnotation::find(std::string_view parameter, std::size_t position) const
{
    const auto isIt = [parameter](const auto& candidate) {
        return candidate.name == parameter;
    };
    const auto found = std::ranges::find_if(written.parameters, isIt);
    if (found != written.parameters.end()) {
        return static_cast<std::size_t>(found - written.parameters.begin());
    }
    const bool isPositional =
        position < written.parameters.size() && written.parameters[position].name.empty();
    return isPositional ? std::optional(position) : std::nullopt;
}

AnnotationList AnnotationList::read(Context& context)
{
    TokenCursor& tokens = context.tokens;
    AnnotationList list;
    while (tokens.peek().is("@")) {
        ReadAnnotation annotation;
        annotation.written.location = tokens.take().place;
        if (isKeyword(tokens.peek().text) && !known().contains(tokens.peek().text)) {
            tokens.missing("the name of the annotation");
        }
        annotation.written.name = readScopedName(context, "the name of the annotation").text;
        readParameters(tokens, annotation);
        list.all_.push_back(std::move(annotation));
    }
    return list;
}

void AnnotationList::append(AnnotationList others)
{
    std::ranges::move(others.all_, std::back_inserter(all_));
}

const ReadAnnotation* AnnotationList::find(std::string_view name) const
{
    const auto isIt = [name](const ReadAnnotation& annotation) {
        return annotation.written.name == name;
    };
    const auto found = std::ranges::find_if(all_, isIt);
    return found == all_.end() ? nullptr : &*found;
}

void AnnotationList::check(Context& context, Annotated what) const
{
    std::unordered_set<std::string_view> seen;
    for (const ReadAnnotation& annotation : all_) {
        const Annotation& written = annotation.written;
        const auto found = known().find(written.name);
        if (found == known().end()) {
            warnOfUnknown(context, written);
        } else if ((found->second & static_cast<std::uint32_t>(what)) == 0) {
            context.reporter.warn(written.location,
                                  "@" + written.name + " has no effect on " + describe(what));
        } else if (!seen.insert(found->first).second && written.name != "verbatim") {
            context.reporter.error(written.location, "@" + written.name + " is given twice");
        }
    }
}

void AnnotationList::applyTo(Context& context, Declared& declared) const
{
    for (const ReadAnnotation& annotation : all_) {
        declared.annotations.push_back(annotation.written);
        const auto text = annotation.find("text");
        if (annotation.written.name != "verbatim" || !text) {
            continue;
        }
        Verbatim verbatim{"*", "BEFORE_DECLARATION", {}};
        if (const auto value = valueOf(context, annotation, *text, anyString())) {
            verbatim.text = std::get<std::string>(*value);
        }
        const auto language = annotation.find("language", 1);
        const auto value = language ? valueOf(context, annotation, *language, anyString()) : std::nullopt;
        verbatim.language = value ? lowerCase(std::get<std::string>(*value)) : "*";
        if (const auto placement = annotation.find("placement", 2)) {
            verbatim.placement = annotation.written.parameters[*placement].text;
        }
        declared.verbatim.push_back(std::move(verbatim));
    }
}

std::optional<bool> AnnotationList::flag(Context& context, std::string_view name) const
{
    const ReadAnnotation* const annotation = find(name);
    if (annotation == nullptr) {
        return std::nullopt;
    }
    const auto index = annotation->find("value");
    if (!index) {
        return true;
    }
    const auto value = valueOf(context, *annotation, *index, context.builder.primitive(TypeKind::Boolean));
    return !value || std::get<bool>(*value);
}

std::optional<std::string> AnnotationList::text(Context& context, std::string_view name) const
{
    const ReadAnnotation* const annotation = find(name);
    if (annotation == nullptr) {
        return std::nullopt;
    }
    const auto index = annotation->find("value");
    if (!index) {
        return std::string();
    }
    const auto value = valueOf(context, *annotation, *index, anyString());
    return value ? std::get<std::string>(*value) : std::string();
}

std::optional<std::int64_t> AnnotationList::number(Context& context, std::string_view name,
                                                   std::int64_t least, std::int64_t most) const
{
    const ReadAnnotation* const annotation = find(name);
    if (annotation == nullptr) {
        return std::nullopt;
    }
    const Location& place = annotation->written.location;
    const auto index = annotation->find("value");
    if (!index) {
        context.reporter.error(place, "@" + std::string(name) + " needs a number",
                               "write @" + std::string(name) + "(NUMBER)");
        return std::nullopt;
    }
    const auto value = valueOf(context, *annotation, *index, context.builder.primitive(TypeKind::Int64));
    if (!value) {
        return std::nullopt;
    }
    const auto number = std::get<std::int64_t>(*value);
    if (number < least || number > most) {
        context.reporter.error(place, "@" + std::string(name) + " takes " + std::to_string(least) + " to " +
                                          std::to_string(most) + ", not " + std::to_string(number));
        return std::nullopt;
    }
    return number;
}

std::optional<std::size_t> AnnotationList::choice(Context& context, std::string_view name,
                                                  const std::vector<std::string_view>& words) const
{
    const ReadAnnotation* const annotation = find(name);
    const auto index = annotation == nullptr ? std::nullopt : annotation->find("value");
    if (!index) {
        return std::nullopt;
    }
    const std::string& text = annotation->written.parameters[*index].text;
    const auto found = std::ranges::find(words, text);
    if (found != words.end()) {
        return static_cast<std::size_t>(found - words.begin());
    }
    std::string hint = "it takes " + std::string(words.front());
    for (const auto word : words | std::views::drop(1)) {
        hint += word == words.back() ? " or " : ", ";
        hint += word;
    }
    context.reporter.error(annotation->written.location,
                           "@" + std::string(name) + " does not take \"" + text + "\"", hint);
    return std::nullopt;
}

std::optional<Extensibility> AnnotationList::extensibility(Context& context) const
{
    constexpr std::array<std::pair<std::string_view, Extensibility>, 3> all{
        {{"final", Extensibility::Final},
         {"appendable", Extensibility::Appendable},
         {"mutable", Extensibility::Mutable}}};
    std::optional<Extensibility> result;
    const auto take = [&](Extensibility extensibility, std::string_view name) {
        if (result && *result != extensibility) {
            context.reporter.error(find(name)->written.location,
                                   "the type is " + std::string(toString(*result)) + " already");
        }
        result = extensibility;
    };
    for (const auto& [name, extensibility] : all) {
        if (flag(context, name).value_or(false)) {
            take(extensibility, name);
        }
    }
    if (const auto index = choice(context, "extensibility", {"FINAL", "APPENDABLE", "MUTABLE"})) {
        take(static_cast<Extensibility>(*index), "extensibility");
    }
    return result;
}

void readAnnotationDeclaration(Context& context)
{
    TokenCursor& tokens = context.tokens;
    tokens.take(); // @
    tokens.take(); // annotation
    context.knownAnnotations.emplace(readName(context, "the annotation").text);
    if (!tokens.peek().is("{")) {
        tokens.missing("\"{\"");
    }
    std::size_t depth = 0;
    do {
        if (tokens.atEnd()) {
            tokens.missing("\"}\"");
        }
        const Token& token = tokens.take();
        depth += token.is("{") ? 1U : 0U;
        depth -= token.is("}") ? 1U : 0U;
    } while (depth > 0);
    tokens.expectSemicolon();
}

std::optional<Value> valueOf(Context& context, const ReadAnnotation& annotation, std::size_t index,
                             const Type& type)
{
    TokenCursor& tokens = context.tokens;
    const std::size_t position = tokens.position();
    tokens.seek(annotation.values[index]);
    std::optional<Value> value;
    try {
        value = readValue(context, type);
        if (value && !tokens.peek().is(",") && !tokens.peek().is(")")) {
            context.reporter.error(tokens.peek().place, "\")\" is missing");
        }
    } catch (const SyntaxError&) {
        value.reset(); // it was reported
    }
    tokens.seek(position);
    return value;
}

} // namespace ovra::plex::idl
