// SPDX-License-Identifier: Apache-2.0
// Names: what may be one, what is declared under one, and what one stands for.
#include "Context.hpp"
#include "Keywords.hpp"
#include "Text.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

const Symbol* findFirst(Context& context, const ScopedName& name)
{
    const std::string_view first = name.parts.front().text;
    return name.absolute ? context.scopes.of(context.builder.root()).find(first)
                         : context.scopes.findFrom(*context.module, first);
}

void reportUnknown(Context& context, const ScopedName& name, const Token& part, const std::string& what)
{
    if (std::ranges::any_of(name.text, isForeign)) {
        return; // that it can not be a name was reported
    }
    const std::string unknown = name.parts.size() > 1 && name.parts.front().text.data() != part.text.data()
                                    ? " (nothing is called \"" + std::string(part.text) + "\" there)"
                                    : "";
    context.reporter.error(name.place, "unknown " + what + " \"" + name.text + "\"" + unknown,
                           hintForUnknown(name.text));
}

} // namespace

bool isAtScopedName(const TokenCursor& tokens)
{
    return tokens.peek().is("::") || tokens.peek().isName();
}

ScopedName readScopedName(Context& context, const std::string& what)
{
    TokenCursor& tokens = context.tokens;
    ScopedName name;
    name.place = tokens.peek().place;
    name.absolute = tokens.accept("::");
    name.text = name.absolute ? "::" : "";
    do {
        if (!tokens.peek().isName()) {
            tokens.missing(what);
        }
        name.text += name.parts.empty() ? "" : "::";
        name.text += tokens.peek().text;
        name.parts.push_back(tokens.take());
    } while (tokens.accept("::"));
    return name;
}

const Symbol* lookUp(Context& context, const ScopedName& name, const std::string& what)
{
    const Symbol* symbol = nullptr;
    for (const Token& part : name.parts) {
        symbol = symbol == nullptr ? findFirst(context, name) : context.scopes.findIn(*symbol, part.text);
        if (symbol == nullptr) {
            reportUnknown(context, name, part, what);
            return nullptr;
        }
        if (symbol->name != part.text) {
            context.reporter.error(
                part.place, "\"" + std::string(part.text) + "\" is declared as \"" + symbol->name + "\"",
                "names are written in the same case everywhere; see " + context.reporter.name(symbol->place));
            return nullptr;
        }
    }
    return symbol;
}

Token readName(Context& context, const std::string& what)
{
    const Token& next = context.tokens.peek();
    if (!next.isName()) {
        context.tokens.missing("the name of " + what);
    }
    const Token name = context.tokens.take();
    const std::string text(name.text);
    if (name.kind == TokenKind::EscapedWord) {
        return name;
    }
    if (isKeyword(text)) {
        context.reporter.error(name.place, "\"" + text + "\" is a keyword",
                               "as a name it is written _" + text);
        if (context.tokens.peek().isName()) {
            throw SyntaxError(); // it was not meant as one
        }
    } else if (context.options.strictCase && isKeywordInAnyCase(text)) {
        context.reporter.error(name.place, "\"" + text + "\" is a keyword, or differs from one in case only",
                               "as a name it is written _" + text);
    } else if (isUnusedKeyword(text)) {
        context.reporter.warn(name.place, "\"" + text + "\" is a keyword elsewhere",
                              "all tools take it as a name that is written _" + text);
    }
    return name;
}

bool declare(Context& context, Scope& scope, const Symbol& symbol)
{
    const Symbol* const other = scope.add(symbol);
    if (other == nullptr) {
        return true;
    }
    const bool differsInCase = other->name != symbol.name;
    context.reporter.error(symbol.place,
                           "\"" + symbol.name + "\" " +
                               (differsInCase ? "differs from \"" + other->name + "\" in case only"
                                              : std::string("is already declared")),
                           "the first one is at " + context.reporter.name(other->place));
    return false;
}

} // namespace ovra::plex::idl
