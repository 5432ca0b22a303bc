// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Token.hpp"

#include <vector>

namespace ovra::plex::idl
{

/// Cuts a text into tokens. Faults are noted in them, so that nobody is told of those in parts that a
/// condition leaves out.
class Lexer
{
public:
    /// @param text outlives the tokens. @param start of it in its file.
    Lexer(std::string_view text, const Location& start) : text_(text), place_(start) {}

    /// All tokens; the last one is the end.
    std::vector<Token> tokens();

    /// Those of a directive's line: without directives in it.
    std::vector<Token> tokensOfLine();

private:
    char peek(std::size_t ahead = 0) const;

    bool startsWith(std::string_view text) const { return text_.substr(position_).starts_with(text); }

    void skip(std::size_t bytes);
    void skipWhile(bool (*holds)(char));
    void skipSpace();
    void skipQuoted();
    Token next();
    Token finish(TokenKind kind, const char* fault = nullptr);
    Token comment();
    Token blockComment();
    Token word();
    Token number();
    Token quoted(TokenKind kind);
    Token symbol();
    Token directive();

    std::string_view text_;
    std::size_t position_ = 0;
    Location place_;
    bool atLineStart_ = true;
    bool takesDirectives_ = true;
    std::size_t begin_ = 0; ///< of the token under way
    Location beginPlace_;
};

} // namespace ovra::plex::idl
