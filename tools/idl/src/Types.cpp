// SPDX-License-Identifier: Apache-2.0
#include "Types.hpp"

#include "Annotations.hpp"
#include "Expressions.hpp"
#include "Keywords.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <unordered_map>

namespace ovra::plex::idl
{

namespace
{

std::optional<TypeKind> primitiveOf(const Token& token)
{
    static const std::unordered_map<std::string_view, TypeKind> kinds{
        {"boolean", TypeKind::Boolean}, {"octet", TypeKind::Octet},   {"char", TypeKind::Char},
        {"wchar", TypeKind::WChar},     {"int8", TypeKind::Int8},     {"uint8", TypeKind::Uint8},
        {"int16", TypeKind::Int16},     {"uint16", TypeKind::Uint16}, {"int32", TypeKind::Int32},
        {"uint32", TypeKind::Uint32},   {"int64", TypeKind::Int64},   {"uint64", TypeKind::Uint64},
        {"short", TypeKind::Int16},     {"float", TypeKind::Float},   {"double", TypeKind::Double}};
    const auto found = token.kind == TokenKind::Word ? kinds.find(token.text) : kinds.end();
    return found == kinds.end() ? std::nullopt : std::optional(found->second);
}

/// What follows `long`.
TypeKind readLong(TokenCursor& tokens)
{
    if (tokens.accept("double")) {
        return TypeKind::LongDouble;
    }
    return tokens.accept("long") ? TypeKind::Int64 : TypeKind::Int32;
}

/// What follows `unsigned`.
TypeKind readUnsigned(TokenCursor& tokens)
{
    if (tokens.accept("short")) {
        return TypeKind::Uint16;
    }
    if (!tokens.accept("long")) {
        tokens.missing(R"("short" or "long")");
    }
    return tokens.accept("long") ? TypeKind::Uint64 : TypeKind::Uint32;
}

const Type& readString(Context& context, TypeKind kind)
{
    auto& string = context.builder.make<StringType>(kind);
    if (context.tokens.accept("<")) {
        string.bound = readBound(context, "the bound of a string", Angles::Open);
        context.tokens.expectClosingAngle();
    }
    return string;
}

/// The type of elements, with what may be annotated to them.
const Type& readElement(Context& context)
{
    AnnotationList::read(context).check(context, Annotated::Element);
    return readType(context);
}

const Type& readSequence(Context& context)
{
    TokenCursor& tokens = context.tokens;
    auto& sequence = context.builder.make<SequenceType>();
    tokens.expect("<");
    const Location place = tokens.peek().place;
    sequence.element = &readElement(context);
    deepen(context, sequence, *sequence.element, place);
    if (tokens.accept(",")) {
        sequence.bound = readBound(context, "the bound of a sequence", Angles::Open);
    }
    tokens.expectClosingAngle();
    return sequence;
}

bool isPossibleKey(const Type& type)
{
    const TypeKind kind = resolved(type).kind;
    return isInteger(kind) || kind == TypeKind::Boolean || kind == TypeKind::Char ||
           kind == TypeKind::WChar || kind == TypeKind::String || kind == TypeKind::WString ||
           kind == TypeKind::Enum;
}

const Type& readMap(Context& context)
{
    TokenCursor& tokens = context.tokens;
    auto& map = context.builder.make<MapType>();
    tokens.expect("<");
    const Location place = tokens.peek().place;
    map.key = &readElement(context);
    if (!isPossibleKey(*map.key)) {
        context.reporter.error(place, "the key of a map is an integer, character, boolean, string or enum");
    }
    tokens.expect(",");
    map.value = &readElement(context);
    deepen(context, map, *map.value, place);
    if (tokens.accept(",")) {
        map.bound = readBound(context, "the bound of a map", Angles::Open);
    }
    tokens.expectClosingAngle();
    return map;
}

/// Refuses types that are no data, or none that is supported.
void refuseUnsupported(Context& context)
{
    struct Refusal {
        std::string_view word;
        std::string_view message;
        std::string_view hint;
    };

    constexpr std::array<Refusal, 6> all{
        {{"fixed", "fixed-point numbers are not supported", "use double, or an integer with a unit"},
         {"any", "any is not supported", "use a union of the types that it may be"},
         {"Object", "objects are not supported", "definitions hold data types only"},
         {"ValueBase", "value types are not supported", "definitions hold data types only"},
         {"void", "void is no type of a value", ""},
         {"interface", "interfaces are not supported", "definitions hold data types only"}}};
    const Token& token = context.tokens.peek();
    const auto* const found =
        std::ranges::find_if(all, [&token](const auto& one) { return token.is(one.word); });
    if (found != all.end()) {
        context.reporter.error(token.place, std::string(found->message), std::string(found->hint));
        throw SyntaxError();
    }
}

/// What a type that there is not is taken for, where what follows may follow a type: after other nonsense,
/// nothing good can be read.
const Type& standIn(Context& context)
{
    constexpr std::array<std::string_view, 5> followers{",", ">", ">>", ")", "{"};
    const Token& next = context.tokens.peek();
    const bool isName = next.isName() && (next.kind == TokenKind::EscapedWord || !isKeyword(next.text));
    if (!isName && !std::ranges::any_of(followers, [&next](auto text) { return next.is(text); })) {
        throw SyntaxError();
    }
    return context.builder.primitive(TypeKind::Int32);
}

const Type& readNamedType(Context& context)
{
    const ScopedName name = readScopedName(context, "a type");
    const Symbol* const symbol = lookUp(context, name, "type");
    if (symbol == nullptr) {
        return standIn(context);
    }
    if (auto* const* type = std::get_if<NamedType*>(&symbol->meaning)) {
        return **type;
    }
    context.reporter.error(name.place, "\"" + name.text + "\" is no type",
                           "it is declared at " + context.reporter.name(symbol->place));
    return standIn(context);
}

/// The type that a value of a type consists of, arrays and aliases looked through.
const Type& elementOf(const Type& type)
{
    const Type* result = &resolved(type);
    while (const auto* const array = as<ArrayType>(*result)) {
        result = &resolved(*array->element);
    }
    return *result;
}

/// How deep a type is. An alias or array was made when that was not known yet, if its element was only
/// declared forward.
std::uint32_t depthOf(const Type& type)
{
    std::uint32_t steps = 0;
    for (const Type* part = &type;; ++steps) {
        if (const auto* const alias = as<AliasType>(*part)) {
            part = alias->target;
        } else if (const auto* const array = as<ArrayType>(*part)) {
            part = array->element;
        } else {
            return part->depth + steps;
        }
    }
}

} // namespace

void refuseNestedDeclaration(Context& context)
{
    constexpr std::array<std::string_view, 8> words{"struct", "union",  "enum",    "bitmask",
                                                    "bitset", "module", "typedef", "const"};
    const Token& token = context.tokens.peek();
    if (std::ranges::any_of(words, [&token](auto word) { return token.is(word); })) {
        context.reporter.error(
            token.place, "\"" + std::string(token.text) + "\" can not be declared inside another declaration",
            "declare it before; or is a \"}\" missing above?");
        throw SyntaxError();
    }
}

const Type& readType(Context& context)
{
    const Nesting nesting(context);
    TokenCursor& tokens = context.tokens;
    const Token& token = tokens.peek();
    if (const auto kind = primitiveOf(token)) {
        tokens.take();
        return context.builder.primitive(*kind);
    }
    if (tokens.accept("long")) {
        return context.builder.primitive(readLong(tokens));
    }
    if (tokens.accept("unsigned")) {
        return context.builder.primitive(readUnsigned(tokens));
    }
    if (token.is("string") || token.is("wstring")) {
        return readString(context, tokens.take().is("string") ? TypeKind::String : TypeKind::WString);
    }
    if (tokens.accept("sequence")) {
        return readSequence(context);
    }
    if (tokens.accept("map")) {
        return readMap(context);
    }
    refuseUnsupported(context);
    refuseNestedDeclaration(context);
    if (!isAtScopedName(tokens) || (token.kind == TokenKind::Word && isKeyword(token.text))) {
        context.reporter.error(
            token.place, "a type is expected here" +
                             (tokens.atEnd() ? std::string() : ", not \"" + std::string(token.text) + "\""));
        throw SyntaxError();
    }
    return readNamedType(context);
}

void deepen(Context& context, Type& container, const Type& part, const Location& place)
{
    if (context.incomplete.contains(&elementOf(part))) {
        return; // it is met again while the type is walked
    }
    const std::uint32_t depth = depthOf(part);
    if (depth >= MaximumDepth) {
        context.reporter.error(place, "types are nested more than " + std::to_string(MaximumDepth) + " deep");
        return;
    }
    container.depth = std::max(container.depth, depth + 1);
}

void requireComplete(Context& context, const Type& type, const Location& place)
{
    const Type& element = elementOf(type);
    if (!context.incomplete.contains(&element)) {
        return;
    }
    context.reporter.error(
        place, "\"" + toString(element) + "\" is not complete here",
        "define it before; where it would contain itself, keep the values in a sequence beside "
        "it, and refer to them by their index");
}

Declarator readDeclarator(Context& context, const std::string& what, const Type& type)
{
    TokenCursor& tokens = context.tokens;
    Declarator declarator{readName(context, what), &type};
    if (!tokens.peek().is("[")) {
        return declarator;
    }
    auto& array = context.builder.make<ArrayType>();
    array.element = &type;
    deepen(context, array, type, declarator.name.place);
    std::uint64_t count = 1;
    while (tokens.accept("[")) {
        const Location place = tokens.peek().place;
        const std::uint32_t dimension = readBound(context, "a dimension", Angles::Closed);
        tokens.expect("]");
        count *= dimension;
        if (count > std::numeric_limits<std::uint32_t>::max()) {
            context.reporter.error(place, "the array has more than 4294967295 elements");
            count = 1;
        }
        array.dimensions.push_back(dimension);
    }
    declarator.type = &array;
    return declarator;
}

std::vector<Declarator> readDeclarators(Context& context, const std::string& what, const Type& type)
{
    std::vector<Declarator> all;
    do {
        all.push_back(readDeclarator(context, what, type));
    } while (context.tokens.accept(","));
    return all;
}

} // namespace ovra::plex::idl
