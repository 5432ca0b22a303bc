// SPDX-License-Identifier: Apache-2.0
#include "Lexer.hpp"

#include "Text.hpp"

#include <algorithm>
#include <array>

namespace ovra::plex::idl
{

namespace
{

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

constexpr std::string_view symbols = ";{}()[]<>,:=+-*/%&|^~@!?.#";
constexpr const char* const noSuchCharacter = "a definition has no such character outside of comments";

bool isInWord(char c)
{
    return isWordPart(c) || isForeign(c);
}

bool isNowhere(char c)
{
    return !isInWord(c) && !isSpace(c) && c != '"' && c != '\'' && symbols.find(c) == std::string_view::npos;
}

bool isInLine(char c)
{
    return c != '\n';
}

/// What a number is by its letters; invalid where it is none.
TokenKind kindOfNumber(std::string_view text)
{
    if (text.empty()) {
        return TokenKind::Invalid;
    }
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        return !text.empty() && std::ranges::all_of(text, isHexadecimal) ? TokenKind::Integer
                                                                         : TokenKind::Invalid;
    }
    if (std::ranges::all_of(text, isDigit)) {
        return TokenKind::Integer;
    }
    const bool fixed = text.ends_with('d') || text.ends_with('D');
    const std::string_view mantissa = text.substr(0, text.find_first_of("eEdD"));
    const auto isMantissaPart = [](char c) {
        return isDigit(c) || c == '.';
    };
    if (!std::ranges::all_of(mantissa, isMantissaPart) || std::ranges::count(mantissa, '.') > 1) {
        return TokenKind::Invalid;
    }
    std::string_view exponent = text.substr(mantissa.size());
    if (fixed) {
        return exponent.size() == 1 ? TokenKind::Fixed : TokenKind::Invalid;
    }
    if (!exponent.empty()) {
        exponent.remove_prefix(1);
        exponent.remove_prefix(exponent.starts_with('+') || exponent.starts_with('-') ? 1 : 0);
        if (exponent.empty() || !std::ranges::all_of(exponent, isDigit)) {
            return TokenKind::Invalid;
        }
    }
    return TokenKind::Floating;
}

} // namespace

char Lexer::peek(std::size_t ahead) const
{
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0';
}

void Lexer::skip(std::size_t bytes)
{
    const std::size_t end = std::min(position_ + bytes, text_.size());
    for (; position_ < end; ++position_) {
        const char c = text_[position_];
        if (c == '\n') {
            ++place_.line;
            place_.column = 1;
        } else if (!isContinuation(c)) {
            ++place_.column;
        }
    }
}

void Lexer::skipWhile(bool (*holds)(char))
{
    while (position_ < text_.size() && holds(text_[position_])) {
        skip(1);
    }
}

/// Blanks, ends of line and a backslash before one.
void Lexer::skipSpace()
{
    for (;;) {
        if (isSpace(peek()) && position_ < text_.size()) {
            atLineStart_ = atLineStart_ || peek() == '\n';
            skip(1);
        } else if (startsWith("\\\n")) {
            skip(2);
        } else if (startsWith("\\\r\n")) {
            skip(3);
        } else {
            return;
        }
    }
}

Token Lexer::finish(TokenKind kind, const char* fault)
{
    Token token;
    token.kind = kind;
    token.text = text_.substr(begin_, position_ - begin_);
    token.place = beginPlace_;
    token.width = place_.line == beginPlace_.line ? place_.column - beginPlace_.column : 1;
    token.fault = fault;
    return token;
}

/// What a comment is for the model; the end of the text stands for one that is for nobody.
Token Lexer::comment()
{
    skipWhile(isInLine);
    const std::string_view text = text_.substr(begin_, position_ - begin_);
    if (text.starts_with("///<") || text.starts_with("//!<")) {
        return finish(TokenKind::TrailingComment);
    }
    if ((text.starts_with("///") && !text.starts_with("////")) || text.starts_with("//!")) {
        return finish(TokenKind::Comment);
    }
    return finish(text.starts_with("//@") ? TokenKind::CommentAnnotation : TokenKind::End);
}

Token Lexer::blockComment()
{
    const std::size_t end = text_.find("*/", position_ + 2);
    if (end == std::string_view::npos) {
        skip(2);
        const Token token = finish(TokenKind::Invalid, "this comment is never closed");
        skip(text_.size());
        return token;
    }
    skip(end + 2 - position_);
    const std::string_view text = text_.substr(begin_, position_ - begin_);
    if (text.starts_with("/**<") || text.starts_with("/*!<")) {
        return finish(TokenKind::TrailingComment);
    }
    const bool documents =
        (text.starts_with("/**") && !text.starts_with("/***") && text.size() > 4) || text.starts_with("/*!");
    return finish(documents ? TokenKind::Comment : TokenKind::End);
}

Token Lexer::word()
{
    skipWhile(isInWord);
    const std::string_view text = text_.substr(begin_, position_ - begin_);
    const char* const fault = std::ranges::any_of(text, isForeign) ? noSuchCharacter : nullptr;
    if (text.front() == '_' && text.size() > 1) {
        Token token = finish(TokenKind::EscapedWord, fault);
        token.text.remove_prefix(1);
        return token;
    }
    return finish(TokenKind::Word, fault);
}

Token Lexer::number()
{
    const bool hexadecimal = startsWith("0x") || startsWith("0X");
    while (isWordPart(peek()) || peek() == '.') {
        const bool exponent = !hexadecimal && (peek() == 'e' || peek() == 'E');
        skip(exponent && (peek(1) == '+' || peek(1) == '-') ? 2 : 1);
    }
    const std::string_view text = text_.substr(begin_, position_ - begin_);
    const TokenKind kind = kindOfNumber(text);
    if (kind != TokenKind::Invalid) {
        return finish(kind);
    }
    const bool hasSuffix =
        kindOfNumber(text.substr(0, text.find_last_not_of("uUlLfF") + 1)) != TokenKind::Invalid;
    return finish(TokenKind::Integer, hasSuffix ? "a number has no suffix" : "this is no number");
}

/// A literal in quotation marks, from the first one on. It ends on its line, or on one that a backslash adds.
Token Lexer::quoted(TokenKind kind)
{
    const char mark = peek();
    skip(1);
    while (position_ < text_.size() && peek() != mark && peek() != '\n') {
        const std::size_t escape = startsWith("\\\r\n") ? 3 : 2;
        skip(peek() == '\\' ? escape : 1);
    }
    if (peek() != mark) {
        return finish(kind, "the closing quotation mark is missing");
    }
    skip(1);
    return finish(kind);
}

Token Lexer::symbol()
{
    constexpr std::array<std::string_view, 11> longOnes{
        "::", "<<", ">>", "&&", "||", "==", "!=", "<=", ">=", "->", "..."};
    const auto* const found = std::ranges::find_if(longOnes, [this](auto text) { return startsWith(text); });
    if (found != longOnes.end()) {
        skip(found->size());
        return finish(TokenKind::Symbol);
    }
    if (isNowhere(peek())) {
        skipWhile(isNowhere);
        return finish(TokenKind::Invalid, noSuchCharacter);
    }
    skip(1);
    return finish(TokenKind::Symbol);
}

/// Goes behind a literal in quotation marks; behind its first one only where the line has no other.
void Lexer::skipQuoted()
{
    std::size_t end = position_ + 1;
    while (end < text_.size() && text_[end] != peek() && isInLine(text_[end])) {
        end += text_[end] == '\\' && end + 1 < text_.size() && isInLine(text_[end + 1]) ? 2U : 1U;
    }
    skip(end < text_.size() && text_[end] == peek() ? end + 1 - position_ : 1);
}

/// All of the line from # on, and of those that a backslash or a comment adds to it.
Token Lexer::directive()
{
    while (position_ < text_.size() && peek() != '\n') {
        if (peek() == '"' || peek() == '\'') {
            skipQuoted();
        } else if (startsWith("//")) {
            skipWhile(isInLine);
        } else if (startsWith("/*")) {
            const std::size_t end = text_.find("*/", position_ + 2);
            skip(end == std::string_view::npos ? text_.size() : end + 2 - position_);
        } else if (startsWith("\\\r\n")) {
            skip(3);
        } else {
            skip(startsWith("\\\n") ? 2 : 1);
        }
    }
    return finish(TokenKind::Directive);
}

Token Lexer::next()
{
    begin_ = position_;
    beginPlace_ = place_;
    if (position_ == text_.size()) {
        return finish(TokenKind::End);
    }
    const char c = peek();
    if (startsWith("//")) {
        return comment();
    }
    if (startsWith("/*")) {
        return blockComment();
    }
    if (c == '#' && atLineStart_ && takesDirectives_) {
        return directive();
    }
    if (c == 'L' && (peek(1) == '\'' || peek(1) == '"')) {
        skip(1);
        return quoted(peek() == '"' ? TokenKind::WideString : TokenKind::WideCharacter);
    }
    if (c == '"' || c == '\'') {
        return quoted(c == '"' ? TokenKind::String : TokenKind::Character);
    }
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
        return number();
    }
    return isWordStart(c) || isForeign(c) ? word() : symbol();
}

std::vector<Token> Lexer::tokens()
{
    std::vector<Token> tokens;
    for (;;) {
        skipSpace();
        const Token token = next();
        const bool isComment = token.text.starts_with("//") || token.text.starts_with("/*");
        atLineStart_ = atLineStart_ && isComment;
        if (token.kind != TokenKind::End || !isComment) {
            tokens.push_back(token);
        }
        if (token.kind == TokenKind::End && !isComment) {
            return tokens;
        }
    }
}

std::vector<Token> Lexer::tokensOfLine()
{
    takesDirectives_ = false;
    return tokens();
}

} // namespace ovra::plex::idl
