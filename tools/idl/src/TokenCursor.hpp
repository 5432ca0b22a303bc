// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Preprocessor.hpp"
#include "Reporter.hpp"
#include "Token.hpp"

#include <string>
#include <string_view>

namespace ovra::plex::idl
{

/// Thrown when a declaration makes no sense from some place on, and that was reported.
struct SyntaxError {
};

/// Thrown where the text ends too early, and that was reported.
struct EndOfText {
};

/// A walk through the tokens, with what all parts of the grammar say when something is missing.
class TokenCursor
{
public:
    TokenCursor(PreprocessedText text, Reporter& reporter) : text_(std::move(text)), reporter_(reporter) {}

    const Token& peek(std::size_t ahead = 0) const;
    const Token& take();

    /// What was taken last; what comes, where that is nothing.
    const Token& previous() const;

    bool accept(std::string_view symbolOrWord);

    bool atEnd() const { return peek().kind == TokenKind::End; }

    /// Takes one `>`, of `>>` too.
    bool acceptClosingAngle();

    /// @throws SyntaxError where something else comes.
    void expect(std::string_view symbol);
    void expectClosingAngle();

    /// Takes the brace behind the head of a declaration. Where it is missing before a name or the like, goes
    /// on as if it were there.
    void expectOpeningBrace();

    /// Whether a declaration begins here, on a line that is indented no more than the one that was begun at a
    /// position. So it is meant to stand behind that one, whose brace is missing.
    bool isAtNextDeclaration(std::size_t begin) const;

    /// Says that the brace behind a body is missing, and goes on as if it and the semicolon were there.
    void endBody(const std::string& hint);

    /// Takes the semicolon behind a declaration. Where it is missing at the end of a line, goes on as if it
    /// were there.
    void expectSemicolon();

    /// Says that something is missing behind what was taken last. @throws SyntaxError, or EndOfText where
    /// nothing follows
    [[noreturn]] void missing(const std::string& what, const std::string& hint = {});

    /// The same, to go on. Says nothing where that may follow from what was reported already.
    void reportMissing(const std::string& what, const std::string& hint = {});

    /// Goes behind the semicolon of a declaration, or before the next one, or before the brace that closes
    /// what is around it. @param begin where it begins.
    void skipDeclaration(std::size_t begin);

    std::size_t position() const { return position_; }

    void seek(std::size_t position) { position_ = position; }

    /// The place right behind what was taken last.
    Location behind() const;

    /// What documentation comments say before a token, or right behind it. @param position of the token.
    std::string documentationBefore(std::size_t position) const;
    std::string documentationBehind(std::size_t position) const;

private:
    std::string documentation(std::size_t before, bool trailing) const;

    PreprocessedText text_;
    Reporter& reporter_;
    std::size_t position_ = 0;
    bool isEnded_ = false; ///< a semicolon was missed already
};

/// The lines of two pieces of documentation.
std::string joined(std::string first, const std::string& second);

} // namespace ovra::plex::idl
