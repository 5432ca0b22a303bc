// SPDX-License-Identifier: Apache-2.0
#include "Declarations.hpp"
#include "Types.hpp"

#include <string>

namespace ovra::plex::idl
{

namespace
{

/// The struct behind the colon; null after reporting that there is none.
const StructType* readBase(Context& context)
{
    const ScopedName name = readScopedName(context, "the name of the base");
    if (context.tokens.peek().is(",")) {
        context.reporter.error(context.tokens.peek().place, "a struct has one base at most");
        while (context.tokens.accept(",")) {
            readScopedName(context, "the name of the base");
        }
    }
    const Symbol* const symbol = lookUp(context, name, "struct");
    if (symbol == nullptr) {
        return nullptr;
    }
    auto* const* const type = std::get_if<NamedType*>(&symbol->meaning);
    const auto* const base = type == nullptr ? nullptr : as<StructType>(resolved(**type));
    if (base == nullptr) {
        context.reporter.error(name.place, "the base \"" + name.text + "\" is no struct");
        return nullptr;
    }
    requireComplete(context, *base, name.place);
    return context.incomplete.contains(base) ? nullptr : base;
}

void inherit(Context& context, StructType& type, const Location& place)
{
    deepen(context, type, *type.base, place);
    type.hasKey = type.base->hasKey;
    if (type.extensibility != type.base->extensibility) {
        const std::string wanted(toString(type.base->extensibility));
        context.reporter.error(place,
                               "\"" + type.name + "\" is " + std::string(toString(type.extensibility)) +
                                   ", its base \"" + type.base->scopedName + "\" is " + wanted,
                               "write @" + wanted + " before the struct");
    }
}

void addMember(Context& context, StructType& type, MemberTable& table, Member member,
               const AnnotationList& annotations)
{
    annotate(context, member, annotations, Annotated::Member);
    if (!member.optional && !member.external) {
        requireComplete(context, *member.type, member.location);
    }
    if (member.key && type.base != nullptr && type.base->hasKey) {
        context.reporter.error(annotations.find("key")->written.location,
                               "\"" + type.name + "\" can not add to the key of its base \"" +
                                   type.base->scopedName + "\"",
                               "the key of a struct is declared in its base, or nowhere there");
    }
    deepen(context, type, *member.type, member.location);
    table.add(context, member, annotations);
    type.hasKey = type.hasKey || member.key;
    type.members.push_back(std::move(member));
}

/// Reads the members that are declared up to a semicolon.
void readMembers(Context& context, StructType& type, MemberTable& table)
{
    TokenCursor& tokens = context.tokens;
    const std::size_t first = tokens.position();
    const AnnotationList annotations = AnnotationList::read(context);
    const std::size_t annotated = tokens.position();
    annotations.check(context, Annotated::Member);
    const Type& memberType = readType(context);
    const auto declarators = readDeclarators(context, "the member", memberType);
    const std::size_t last = tokens.position();
    for (const Declarator& declarator : declarators) {
        Member member;
        member.type = declarator.type;
        describe(context, member, declarator.name, first, annotated, last);
        addMember(context, type, table, std::move(member), annotations);
    }
    tokens.expectSemicolon();
}

} // namespace

void readStruct(Context& context, DeclarationTables& tables, const Beginning& beginning)
{
    TokenCursor& tokens = context.tokens;
    const Token name = readName(context, "the struct");
    if (readForward<StructType>(context, tables, name)) {
        return;
    }
    beginning.annotations.check(context, Annotated::Struct);
    auto& type = beginType<StructType>(context, tables, name);
    type.extensibility = extensibilityOf(context, beginning.annotations, name);
    type.topic = beginning.annotations.find("topic") != nullptr;
    type.nested = !type.topic && isNested(context, beginning.annotations);
    context.incomplete.insert(&type);
    if (tokens.accept(":")) {
        const Location place = tokens.peek().place;
        type.base = readBase(context);
        if (type.base != nullptr) {
            inherit(context, type, place);
        }
    }
    auto& table = tables.members[&type];
    const auto* const baseTable = type.base == nullptr ? nullptr : tables.members[type.base].get();
    table = std::make_unique<MemberTable>(baseTable, 0, hashesIds(context, beginning.annotations));
    const std::size_t brace = tokens.position();
    tokens.expectOpeningBrace();
    readBody(context, "the struct", name.place, beginning.first, [&] { readMembers(context, type, *table); });
    finishType(context, type, name, beginning, brace);
}

} // namespace ovra::plex::idl
