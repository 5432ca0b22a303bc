// SPDX-License-Identifier: Apache-2.0
#include "Declarations.hpp"
#include "Expressions.hpp"
#include "Types.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// The labels of a union so far.
struct LabelTable {
    std::unordered_map<std::uint64_t, Location> labels;
    std::optional<Location> otherwise; ///< of `default`
};

void readDiscriminator(Context& context, UnionType& type)
{
    TokenCursor& tokens = context.tokens;
    tokens.expect("switch");
    tokens.expect("(");
    const AnnotationList annotations = AnnotationList::read(context);
    annotations.check(context, Annotated::Discriminator);
    type.discriminatorIsKey = annotations.flag(context, "key").value_or(false);
    const Location place = tokens.peek().place;
    type.discriminator = &readType(context);
    const TypeKind kind = resolved(*type.discriminator).kind;
    if (!isInteger(kind) && kind != TypeKind::Boolean && kind != TypeKind::Char && kind != TypeKind::WChar &&
        kind != TypeKind::Enum) {
        context.reporter.error(place, "a discriminator can not be " + toString(*type.discriminator),
                               "it is a boolean, a character, an integer or an enum");
        type.discriminator = &context.builder.primitive(TypeKind::Int32);
    }
    tokens.expect(")");
}

void addLabel(Context& context, UnionCase& unionCase, LabelTable& table, Label label, const Location& place)
{
    const auto [known, isNew] = table.labels.emplace(label.bits, place);
    if (!isNew) {
        context.reporter.error(place, "the label " + toString(label.value) + " is used already",
                               "the first one is at " + context.reporter.name(known->second));
    }
    unionCase.labels.push_back(std::move(label));
}

/// Reads `case VALUE:` or `default:`. @returns false where neither comes.
bool readLabel(Context& context, const UnionType& type, UnionCase& unionCase, LabelTable& table)
{
    TokenCursor& tokens = context.tokens;
    const Location place = tokens.peek().place;
    if (tokens.accept("case")) {
        const Location valuePlace = tokens.peek().place;
        auto value = readValue(context, *type.discriminator);
        if (value) {
            const std::uint64_t bits = bitsOf(*value);
            addLabel(context, unionCase, table, {std::move(*value), bits}, valuePlace);
        }
    } else if (tokens.accept("default")) {
        if (table.otherwise) {
            context.reporter.error(place, "a union has one default at most",
                                   "the first one is at " + context.reporter.name(*table.otherwise));
        }
        unionCase.isDefault = true;
        table.otherwise = place;
    } else {
        return false;
    }
    if (tokens.peek().is(";")) {
        tokens.reportMissing("\":\"");
        tokens.take();
    } else {
        tokens.expect(":");
    }
    return true;
}

/// Reads labels and what they select.
void readCase(Context& context, UnionType& type, LabelTable& labels, MemberTable& table)
{
    TokenCursor& tokens = context.tokens;
    const std::size_t first = tokens.position();
    AnnotationList annotations = AnnotationList::read(context); // they may stand before the labels as well
    UnionCase unionCase;
    if (!readLabel(context, type, unionCase, labels)) {
        refuseNestedDeclaration(context);
        context.reporter.error(tokens.peek().place, R"("case" or "default" is expected here)");
        throw SyntaxError();
    }
    std::size_t begin = 0;
    do {
        begin = tokens.position();
        annotations.append(AnnotationList::read(context));
    } while (readLabel(context, type, unionCase, labels));
    const std::size_t annotated = tokens.position();
    annotations.check(context, Annotated::Case);
    const Type& elementType = readType(context);
    const Declarator declarator = readDeclarator(context, "the case", elementType);
    unionCase.type = declarator.type;
    describe(context, unionCase, declarator.name, begin, annotated, tokens.position());
    unionCase.documentation = joined(tokens.documentationBefore(first), unionCase.documentation);
    annotate(context, unionCase, annotations, Annotated::Case);
    if (!unionCase.external) {
        requireComplete(context, *unionCase.type, unionCase.location);
    }
    deepen(context, type, *unionCase.type, unionCase.location);
    table.add(context, unionCase, annotations);
    type.cases.push_back(std::move(unionCase));
    tokens.expectSemicolon();
}

/// A label by its number, for a type that is no enum.
Label labelOf(const Type& type, std::uint64_t bits)
{
    switch (type.kind) {
    case TypeKind::Boolean:
        return {bits != 0, bits};
    case TypeKind::Char:
        return {static_cast<char>(bits), bits};
    case TypeKind::WChar:
        return {static_cast<char32_t>(bits), bits};
    case TypeKind::Int8:
    case TypeKind::Int16:
    case TypeKind::Int32:
    case TypeKind::Int64:
        return {static_cast<std::int64_t>(bits), bits};
    default:
        return {bits, bits};
    }
}

/// The highest number from 0 on that a discriminator can have, enums apart.
std::uint64_t highestLabel(const Type& type)
{
    const bool isSigned = type.kind == TypeKind::Int8 || type.kind == TypeKind::Int16 ||
                          type.kind == TypeKind::Int32 || type.kind == TypeKind::Int64;
    std::uint32_t bits = storageBits(type) - (isSigned ? 1 : 0);
    if (type.kind == TypeKind::Boolean) {
        bits = 1;
    } else if (type.kind == TypeKind::Char) {
        bits = 8;
    } else if (type.kind == TypeKind::WChar) {
        bits = 16;
    }
    return ~std::uint64_t{0} >> (64 - bits);
}

std::optional<Label> unusedLabel(const UnionType& type, const LabelTable& table)
{
    const Type& discriminator = resolved(*type.discriminator);
    if (const auto* const enumeration = as<EnumType>(discriminator)) {
        for (const Enumerator& enumerator : enumeration->enumerators) {
            const Value value = &enumerator;
            if (!table.labels.contains(bitsOf(value))) {
                return Label{value, bitsOf(value)};
            }
        }
        return std::nullopt;
    }
    const std::uint64_t highest = highestLabel(discriminator);
    for (std::uint64_t bits = 0;; ++bits) {
        if (!table.labels.contains(bits)) {
            return labelOf(discriminator, bits);
        }
        if (bits == highest) {
            return std::nullopt;
        }
    }
}

void finishCases(Context& context, UnionType& type, const LabelTable& table, const Token& name, bool isSound)
{
    if (type.cases.empty() && isSound) {
        context.reporter.error(name.place, "the union \"" + type.name + "\" has no cases");
    }
    type.unusedLabel = unusedLabel(type, table);
    if (table.otherwise && !type.unusedLabel && isSound) {
        context.reporter.warn(*table.otherwise, "nothing is left for the default: all values are labels");
    }
}

} // namespace

void readUnion(Context& context, DeclarationTables& tables, const Beginning& beginning)
{
    TokenCursor& tokens = context.tokens;
    const Token name = readName(context, "the union");
    if (readForward<UnionType>(context, tables, name)) {
        return;
    }
    beginning.annotations.check(context, Annotated::Union);
    auto& type = beginType<UnionType>(context, tables, name);
    type.extensibility = extensibilityOf(context, beginning.annotations, name);
    type.nested = isNested(context, beginning.annotations);
    context.incomplete.insert(&type);
    readDiscriminator(context, type);
    const std::size_t brace = tokens.position();
    tokens.expectOpeningBrace();
    MemberTable table(nullptr, 1, hashesIds(context, beginning.annotations)); // 0 is the discriminator
    LabelTable labels;
    const std::size_t errors = context.reporter.errors();
    readBody(context, "the union", name.place, beginning.first,
             [&] { readCase(context, type, labels, table); });
    finishCases(context, type, labels, name, context.reporter.errors() == errors);
    finishType(context, type, name, beginning, brace);
}

} // namespace ovra::plex::idl
