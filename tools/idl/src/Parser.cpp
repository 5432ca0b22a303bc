// SPDX-License-Identifier: Apache-2.0
#include "Parser.hpp"

#include "Keywords.hpp"

#include <algorithm>
#include <vector>

namespace ovra::plex::idl
{

void Parser::parse()
{
    context_.module = &context_.builder.root();
    try {
        while (!context_.tokens.atEnd()) {
            const std::size_t first = context_.tokens.position();
            try {
                readDefinition();
            } catch (const SyntaxError&) {
                context_.tokens.skipDeclaration(first);
                if (context_.tokens.accept("}")) {
                    context_.tokens.accept(";");
                }
            }
        }
        checkForward();
    } catch (const EndOfText&) {
        return; // what follows from that is of no interest
    }
}

/// Reads one declaration with its semicolon.
void Parser::readDefinition()
{
    TokenCursor& tokens = context_.tokens;
    const Token token = tokens.peek();
    if (token.is("@") && tokens.peek(1).is("annotation")) {
        readAnnotationDeclaration(context_);
        return;
    }
    if (token.is(";")) {
        context_.reporter.warn(token.place, "this \";\" ends nothing");
        tokens.take();
        return;
    }
    if (token.is("}")) {
        context_.reporter.error(token.place, "this \"}\" closes nothing");
        tokens.take();
        tokens.accept(";");
        return;
    }
    Beginning beginning;
    beginning.first = tokens.position();
    beginning.annotations = AnnotationList::read(context_);
    beginning.annotated = tokens.position();
    readDeclaration(beginning);
    tokens.expectSemicolon();
}

void Parser::readDeclaration(const Beginning& beginning)
{
    TokenCursor& tokens = context_.tokens;
    const Token token = tokens.peek();
    const std::string_view unsupported = token.kind == TokenKind::Word ? unsupportedBehind(token.text) : "";
    if (!unsupported.empty()) {
        context_.reporter.error(token.place, std::string(unsupported) + " not supported",
                                "definitions hold data types only");
        throw SyntaxError();
    }
    if (tokens.accept("module")) {
        readModule(beginning);
    } else if (tokens.accept("struct")) {
        readStruct(context_, tables_, beginning);
    } else if (tokens.accept("union")) {
        readUnion(context_, tables_, beginning);
    } else if (tokens.accept("enum")) {
        readEnum(context_, tables_, beginning);
    } else if (tokens.accept("bitmask")) {
        readBitmask(context_, tables_, beginning);
    } else if (tokens.accept("bitset")) {
        readBitset(context_, tables_, beginning);
    } else if (tokens.accept("typedef")) {
        readTypedef(context_, tables_, beginning);
    } else if (tokens.accept("const")) {
        readConstant(context_, beginning);
    } else if (tokens.atEnd()) {
        tokens.missing("a declaration");
    } else {
        context_.reporter.error(token.place,
                                "a declaration is expected here, not \"" + std::string(token.text) + "\"",
                                "such as module, struct, union, enum, bitmask, typedef or const");
        throw SyntaxError();
    }
}

/// The module of a name, new or opened again.
Module& Parser::openModule(const Token& name)
{
    Scope& scope = context_.scopes.of(*context_.module);
    const Symbol* const known = scope.find(name.text);
    auto* const* const module = known == nullptr ? nullptr : std::get_if<Module*>(&known->meaning);
    if (module != nullptr && known->name == name.text) {
        return **module;
    }
    const std::string text(name.text);
    Module& added = context_.builder.makeModule(*context_.module, text);
    added.location = name.place;
    declare(context_, scope, {&added, text, name.place});
    return added;
}

void Parser::readModule(const Beginning& beginning)
{
    const Nesting nesting(context_);
    TokenCursor& tokens = context_.tokens;
    beginning.annotations.check(context_, Annotated::Module);
    const Token name = readName(context_, "the module");
    if (tokens.peek().is("<")) {
        context_.reporter.error(tokens.peek().place, "template modules are not supported",
                                "write the module once for each type that it is for");
        throw SyntaxError();
    }
    Module& module = openModule(name);
    Declared described;
    describe(context_, described, name, beginning.first, beginning.annotated, tokens.position());
    module.documentation = joined(std::move(module.documentation), described.documentation);
    beginning.annotations.applyTo(context_, module);
    tokens.expectOpeningBrace();
    Module* const outer = context_.module;
    context_.module = &module;
    readBody(context_, "the module", name.place, {}, [this] { readDefinition(); });
    context_.module = outer;
}

/// Says which types are known by name only.
void Parser::checkForward()
{
    std::vector<std::pair<Location, const Type*>> left;
    left.reserve(tables_.forward.size());
    for (const auto& [type, place] : tables_.forward) {
        left.emplace_back(place, type);
    }
    std::ranges::sort(left, [](const auto& a, const auto& b) {
        return std::pair(a.first.line, a.first.column) < std::pair(b.first.line, b.first.column);
    });
    for (const auto& [place, type] : left) {
        context_.reporter.error(place, "\"" + toString(*type) + "\" is declared here, but never defined");
    }
}

} // namespace ovra::plex::idl
