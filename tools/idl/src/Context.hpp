// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ModelBuilder.hpp"
#include "Reporter.hpp"
#include "Scopes.hpp"
#include "TokenCursor.hpp"

#include <plex/idl/Parse.hpp>

#include <string>
#include <unordered_set>
#include <vector>

namespace ovra::plex::idl
{

/// What all parts of the parser share.
struct Context {
    TokenCursor& tokens;
    Reporter& reporter;
    ModelBuilder& builder;
    const ParseOptions& options;
    Scopes scopes;
    Module* module = nullptr;                         ///< in which declarations go
    std::unordered_set<const Type*> incomplete;       ///< declared forward, or under way
    std::unordered_set<std::string> knownAnnotations; ///< declared in the text, or complained about once
    int depth = 0;                                    ///< of the grammar's nesting
};

/// Counts the nesting of what is read.
class Nesting
{
public:
    static constexpr int Deepest = 120;

    /// @throws SyntaxError where it is too deep, after reporting that.
    explicit Nesting(Context& context) : context_(context)
    {
        if (context.depth == Deepest) {
            context.reporter.error(context.tokens.peek().place,
                                   "this is nested more than " + std::to_string(Deepest) + " deep");
            throw SyntaxError();
        }
        ++context.depth;
    }

    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

    ~Nesting() { --context_.depth; }

private:
    Context& context_;
};

/// A name as a path: `A::B` or `::A::B`.
struct ScopedName {
    std::vector<Token> parts;
    bool absolute = false;
    Location place;
    std::string text;
};

/// Whether a name may begin here.
bool isAtScopedName(const TokenCursor& tokens);

/// Reads a path. @throws SyntaxError where there is none. @param what it should be, for the message.
ScopedName readScopedName(Context& context, const std::string& what);

/// What a path stands for. @returns null after reporting that it stands for nothing.
const Symbol* lookUp(Context& context, const ScopedName& name, const std::string& what);

/// Reads the name of something that is declared; says so where it is a keyword. @param what is named.
Token readName(Context& context, const std::string& what);

/// Makes a symbol known in a scope; says so where its name is taken.
bool declare(Context& context, Scope& scope, const Symbol& symbol);

} // namespace ovra::plex::idl
