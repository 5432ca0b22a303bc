// SPDX-License-Identifier: Apache-2.0
// Enums, bitmasks and bitsets: what is declared bit by bit or name by name.
#include "Declarations.hpp"
#include "Expressions.hpp"
#include "Keywords.hpp"
#include "Types.hpp"

#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// Says that a name is missing before the closing brace: behind a comma it was forgotten, else there is none
/// at all.
void refuseEmpty(Context& context, const std::string& what)
{
    if (context.tokens.previous().is(",")) {
        context.reporter.warn(context.tokens.previous().place, "nothing follows this comma");
    } else {
        context.tokens.missing(what);
    }
}

/// Takes the comma before a further name. Where another one follows without it, goes on as if it were there.
bool acceptComma(TokenCursor& tokens)
{
    const bool isSemicolon = tokens.peek().is(";");
    const Token& next = tokens.peek(isSemicolon ? 1 : 0);
    const bool isName = next.is("@") || (next.isName() && !isKeyword(next.text));
    if (!isName && !(isSemicolon && next.is("}"))) {
        return tokens.accept(",");
    }
    tokens.reportMissing(R"("," or "}")");
    if (isSemicolon) {
        tokens.take();
    }
    return isName;
}

/// Reads names with commas between them, each with annotations. @param what is named, with "a" before it.
/// @param add what takes one, and the annotations that stand before it.
template <class T, class Adder>
void readNames(Context& context, const std::string& what, Annotated kind, const Token& begin,
               const Adder& add)
{
    TokenCursor& tokens = context.tokens;
    do {
        if (tokens.peek().is("}")) {
            refuseEmpty(context, what);
            break;
        }
        const std::size_t first = tokens.position();
        const AnnotationList annotations = AnnotationList::read(context);
        const std::size_t annotated = tokens.position();
        annotations.check(context, kind);
        T declared;
        const Token name = readName(context, what);
        const std::size_t last = tokens.position() - 1;
        describe(context, declared, name, first, annotated, last);
        if (tokens.peek().is(",")) {
            declared.documentation = joined(declared.documentation, tokens.documentationBehind(last + 1));
        }
        annotations.applyTo(context, declared);
        add(declared, annotations);
        if (tokens.peek().is("=")) {
            const bool isEnum = kind == Annotated::Enumerator;
            context.reporter.error(tokens.peek().place, "a value is not written behind the name",
                                   isEnum ? "write @value(VALUE) before it"
                                          : "write @position(NUMBER) before it");
            throw SyntaxError();
        }
    } while (acceptComma(tokens));
    if (!tokens.accept("}")) {
        tokens.missing(R"("," or "}")",
                       tokens.atEnd() ? "it begins at " + context.reporter.name(begin.place) : "");
    }
}

/// Says so where a number stands for two names.
template <class Number>
void checkUnique(Context& context, std::unordered_map<Number, std::string>& taken, Number number,
                 const Declared& declared, const std::string& what)
{
    const auto [known, isNew] = taken.emplace(number, declared.name);
    if (!isNew) {
        context.reporter.error(declared.location, "\"" + declared.name + "\" has the " + what + " " +
                                                      std::to_string(number) + " of \"" + known->second +
                                                      "\"");
    }
}

/// The numbers that enumerators can have. They are kept signed, but nobody counts from below 0 to fill few
/// bits.
std::pair<std::int64_t, std::int64_t> enumRange(const EnumType& type)
{
    const std::int64_t one = 1;
    const std::int64_t most = (one << (storageBits(type) - 1)) - 1;
    return {-(one << (type.bitBound - 1)), std::min(most, (one << type.bitBound) - 1)};
}

void addEnumerator(Context& context, EnumType& type, Enumerator enumerator, const AnnotationList& annotations,
                   std::unordered_map<std::int64_t, std::string>& taken)
{
    const auto [least, most] = enumRange(type);
    std::int64_t value = type.enumerators.empty() ? 0 : std::int64_t{type.enumerators.back().value} + 1;
    if (annotations.find("value") != nullptr) {
        value = annotations.number(context, "value", least, most).value_or(value);
    }
    if (value < least || value > most) {
        context.reporter.error(enumerator.location, "the value " + std::to_string(value) + " of \"" +
                                                        enumerator.name + "\" is out of the range of " +
                                                        std::to_string(type.bitBound) + " bits");
        value = least; // and the next ones are counted from there
    } else {
        checkUnique(context, taken, value, enumerator, "value");
    }
    enumerator.value = static_cast<std::int32_t>(value);
    enumerator.isDefault = annotations.flag(context, "default_literal").value_or(false);
    type.enumerators.push_back(std::move(enumerator));
}

void chooseDefault(Context& context, EnumType& type)
{
    const Enumerator* chosen = nullptr;
    for (const Enumerator& enumerator : type.enumerators) {
        if (enumerator.isDefault && chosen != nullptr) {
            context.reporter.error(enumerator.location, "an enum has one default at most",
                                   "the first one is \"" + chosen->name + "\"");
        }
        chosen = enumerator.isDefault ? &enumerator : chosen;
    }
    if (chosen == nullptr) {
        type.enumerators.front().isDefault = true;
    }
}

void addFlag(Context& context, BitmaskType& type, BitFlag flag, const AnnotationList& annotations,
             std::unordered_map<std::int64_t, std::string>& taken)
{
    const std::int64_t most = std::int64_t{type.bitBound} - 1;
    std::int64_t position = type.flags.empty() ? 0 : std::int64_t{type.flags.back().position} + 1;
    if (annotations.find("position") != nullptr) {
        position = annotations.number(context, "position", 0, most).value_or(0);
    }
    if (position > most) {
        context.reporter.error(flag.location,
                               "\"" + flag.name + "\" lies beyond the " + std::to_string(type.bitBound) +
                                   " bits of the bitmask",
                               "write @bit_bound(NUMBER) before the bitmask, up to 64");
        position = 0;
    } else {
        checkUnique(context, taken, position, flag, "position");
    }
    flag.position = static_cast<std::uint32_t>(position);
    type.flags.push_back(std::move(flag));
}

/// The smallest type that holds so many bits.
TypeKind holderOf(std::uint32_t bits)
{
    if (bits == 1) {
        return TypeKind::Boolean;
    }
    if (bits <= 8) {
        return TypeKind::Uint8;
    }
    if (bits <= 16) {
        return TypeKind::Uint16;
    }
    return bits <= 32 ? TypeKind::Uint32 : TypeKind::Uint64;
}

/// Reads `bitfield<3>` or `bitfield<16, unsigned long>` into a field.
void readBitFieldType(Context& context, BitField& field)
{
    TokenCursor& tokens = context.tokens;
    if (!tokens.accept("bitfield")) {
        refuseNestedDeclaration(context);
        tokens.missing("\"bitfield\"");
    }
    tokens.expect("<");
    const Location place = tokens.peek().place;
    field.bits = readBound(context, "the width of a bit field", Angles::Open);
    if (field.bits > 64) {
        context.reporter.error(place, "a bit field has 64 bits at most");
        field.bits = 64;
    }
    field.type = &context.builder.primitive(holderOf(field.bits));
    if (tokens.accept(",")) {
        const Location typePlace = tokens.peek().place;
        field.type = &readType(context);
        const TypeKind kind = resolved(*field.type).kind;
        const std::uint32_t most = kind == TypeKind::Boolean ? 1 : storageBits(resolved(*field.type));
        if ((!isInteger(kind) && kind != TypeKind::Boolean) || most < field.bits) {
            context.reporter.error(typePlace, toString(*field.type) + " does not hold " +
                                                  std::to_string(field.bits) + " bits");
        }
    }
    tokens.expectClosingAngle();
}

/// Reads one width and the names of fields that have it; without a name it is only room.
void readBitFields(Context& context, BitsetType& type, Scope& scope)
{
    TokenCursor& tokens = context.tokens;
    const std::size_t first = tokens.position();
    const AnnotationList annotations = AnnotationList::read(context);
    const std::size_t annotated = tokens.position();
    annotations.check(context, Annotated::Field);
    BitField field;
    readBitFieldType(context, field);
    type.bits += tokens.peek().isName() ? 0 : field.bits;
    while (tokens.peek().isName()) {
        BitField named = field;
        const Token name = readName(context, "the bit field");
        describe(context, named, name, first, annotated, tokens.position());
        annotations.applyTo(context, named);
        declare(context, scope, {static_cast<const BitFlag*>(nullptr), named.name, named.location});
        named.position = type.bits;
        type.bits += field.bits;
        type.fields.push_back(std::move(named));
    }
    if (type.bits > 64) {
        context.reporter.error(tokens.behind(), "a bitset has 64 bits at most");
        type.bits = 0;
    }
    tokens.expectSemicolon();
}

const BitsetType* readBitsetBase(Context& context)
{
    const ScopedName name = readScopedName(context, "the name of the base");
    const Symbol* const symbol = lookUp(context, name, "bitset");
    auto* const* const type = symbol == nullptr ? nullptr : std::get_if<NamedType*>(&symbol->meaning);
    const auto* const base = type == nullptr ? nullptr : as<BitsetType>(resolved(**type));
    if (symbol != nullptr && base == nullptr) {
        context.reporter.error(name.place, "the base \"" + name.text + "\" is no bitset");
    }
    return base;
}

} // namespace

void readEnum(Context& context, DeclarationTables& tables, const Beginning& beginning)
{
    const Token name = readName(context, "the enum");
    beginning.annotations.check(context, Annotated::Enum);
    auto& type = beginType<EnumType>(context, tables, name);
    type.extensibility = beginning.annotations.extensibility(context).value_or(context.options.extensibility);
    type.bitBound =
        static_cast<std::uint32_t>(beginning.annotations.number(context, "bit_bound", 1, 32).value_or(32));
    const std::size_t brace = context.tokens.position();
    context.tokens.expectOpeningBrace();
    std::unordered_map<std::int64_t, std::string> taken;
    readNames<Enumerator>(context, "an enumerator", Annotated::Enumerator, name,
                          [&](const Enumerator& enumerator, const AnnotationList& annotations) {
                              addEnumerator(context, type, enumerator, annotations, taken);
                          });
    chooseDefault(context, type);
    for (const Enumerator& enumerator : type.enumerators) {
        const Symbol symbol{EnumeratorSymbol{&type, &enumerator}, enumerator.name, enumerator.location};
        context.scopes.of(type).add(symbol);
        declare(context, context.scopes.of(*context.module), symbol);
    }
    finishType(context, type, name, beginning, brace);
}

void readBitmask(Context& context, DeclarationTables& tables, const Beginning& beginning)
{
    const Token name = readName(context, "the bitmask");
    beginning.annotations.check(context, Annotated::Bitmask);
    auto& type = beginType<BitmaskType>(context, tables, name);
    type.extensibility = beginning.annotations.extensibility(context).value_or(context.options.extensibility);
    type.bitBound =
        static_cast<std::uint32_t>(beginning.annotations.number(context, "bit_bound", 1, 64).value_or(32));
    const std::size_t brace = context.tokens.position();
    context.tokens.expectOpeningBrace();
    std::unordered_map<std::int64_t, std::string> taken;
    readNames<BitFlag>(context, "a flag", Annotated::Flag, name,
                       [&](const BitFlag& flag, const AnnotationList& annotations) {
                           addFlag(context, type, flag, annotations, taken);
                       });
    for (const BitFlag& flag : type.flags) {
        declare(context, context.scopes.of(type), {&flag, flag.name, flag.location});
    }
    finishType(context, type, name, beginning, brace);
}

void readBitset(Context& context, DeclarationTables& tables, const Beginning& beginning)
{
    TokenCursor& tokens = context.tokens;
    const Token name = readName(context, "the bitset");
    beginning.annotations.check(context, Annotated::Bitset);
    auto& type = beginType<BitsetType>(context, tables, name);
    const Location place = tokens.peek().place;
    if (tokens.accept(":")) {
        type.base = readBitsetBase(context);
    }
    if (type.base != nullptr) {
        type.bits = type.base->bits;
        deepen(context, type, *type.base, place);
    }
    const std::size_t brace = tokens.position();
    tokens.expectOpeningBrace();
    Scope scope;
    readBody(context, "the bitset", name.place, beginning.first,
             [&] { readBitFields(context, type, scope); });
    finishType(context, type, name, beginning, brace);
}

} // namespace ovra::plex::idl
