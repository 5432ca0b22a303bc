// SPDX-License-Identifier: Apache-2.0
// The parts of the grammar that declare something. Each begins behind the annotations and the keyword, and
// ends before the semicolon. All throw SyntaxError where they do not know how to go on.
#pragma once

#include "Annotations.hpp"
#include "Context.hpp"
#include "Members.hpp"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace ovra::plex::idl
{

/// How a declaration begins.
struct Beginning {
    AnnotationList annotations;
    std::size_t first = 0;     ///< position of its first token
    std::size_t annotated = 0; ///< position of the token behind the annotations
};

/// What the parser knows of declarations beyond the model.
struct DeclarationTables {
    std::unordered_map<const Type*, std::unique_ptr<MemberTable>> members;
    std::unordered_map<const Type*, Location>
        forward; ///< where types were declared forward that are not complete
};

/// The type of a kind that was declared forward under a name; null where there is none.
NamedType* findForward(Context& context, DeclarationTables& tables, const Token& name, TypeKind kind);

/// Gives a new type its name and makes it known. @returns false after saying that the name is taken.
bool declareType(Context& context, NamedType& type, const Token& name);

/// A type under a name that is new, or was declared forward so far. Where the name is taken, that is
/// reported, and the type goes nowhere.
template <class T>
T& beginType(Context& context, DeclarationTables& tables, const Token& name)
{
    if (auto* const known = findForward(context, tables, name, T().kind)) {
        return static_cast<T&>(*known);
    }
    T& type = context.builder.make<T>();
    declareType(context, type, name);
    return type;
}

/// Makes a type that is complete part of the model. @param last position of the token that documentation may
/// stand behind.
void finishType(Context& context, NamedType& type, const Token& name, const Beginning& beginning,
                std::size_t last);

/// Takes the declaration of a name only. @returns false where more comes.
template <class T>
bool readForward(Context& context, DeclarationTables& tables, const Token& name)
{
    if (!context.tokens.peek().is(";")) {
        return false;
    }
    const Symbol* const known = context.scopes.of(*context.module).find(name.text);
    auto* const* const type = known == nullptr ? nullptr : std::get_if<NamedType*>(&known->meaning);
    if (type != nullptr && (*type)->kind == T().kind && known->name == name.text) {
        return true;
    }
    T& forward = context.builder.make<T>();
    context.incomplete.insert(&forward);
    if (declareType(context, forward, name)) {
        tables.forward.emplace(&forward, name.place);
    }
    return true;
}

/// Reads what stands between braces, and goes on behind what makes no sense. @param what it is, @param begin
/// of it. @param first position of its first token, where it can not hold other declarations.
template <class Reader>
void readBody(Context& context, const std::string& what, const Location& begin,
              std::optional<std::size_t> first, const Reader& readPart)
{
    TokenCursor& tokens = context.tokens;
    const auto hint = [&] {
        return what + " begins at " + context.reporter.name(begin);
    };
    while (!tokens.accept("}")) {
        if (tokens.atEnd()) {
            tokens.missing("\"}\"", hint());
        }
        if (first && tokens.isAtNextDeclaration(*first)) {
            tokens.endBody(hint());
            return;
        }
        const std::size_t part = tokens.position();
        try {
            readPart();
        } catch (const SyntaxError&) {
            tokens.skipDeclaration(part);
        }
    }
}

/// What a struct or union says of its extensibility, else what holds for those that say nothing.
Extensibility extensibilityOf(Context& context, const AnnotationList& annotations, const Token& name);

/// Whether a type is nested: @nested, or @default_nested of a module around it.
bool isNested(Context& context, const AnnotationList& annotations);

void readStruct(Context& context, DeclarationTables& tables, const Beginning& beginning);
void readUnion(Context& context, DeclarationTables& tables, const Beginning& beginning);
void readEnum(Context& context, DeclarationTables& tables, const Beginning& beginning);
void readBitmask(Context& context, DeclarationTables& tables, const Beginning& beginning);
void readBitset(Context& context, DeclarationTables& tables, const Beginning& beginning);
void readTypedef(Context& context, DeclarationTables& tables, Beginning beginning);
void readConstant(Context& context, const Beginning& beginning);

} // namespace ovra::plex::idl
