// SPDX-License-Identifier: Apache-2.0
#include "TokenCursor.hpp"

#include "Documentation.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// Whether a word begins a declaration and nothing else.
bool beginsDeclaration(const Token& token)
{
    constexpr std::array<std::string_view, 8> words{"module", "struct",  "union",   "enum",
                                                    "const",  "typedef", "bitmask", "bitset"};
    return std::ranges::any_of(words, [&token](auto word) { return token.is(word); });
}

} // namespace

const Token& TokenCursor::peek(std::size_t ahead) const
{
    return text_.tokens[std::min(position_ + ahead, text_.tokens.size() - 1)];
}

const Token& TokenCursor::take()
{
    const Token& token = peek();
    position_ = std::min(position_ + 1, text_.tokens.size() - 1);
    return token;
}

const Token& TokenCursor::previous() const
{
    return text_.tokens[position_ == 0 ? 0 : position_ - 1];
}

bool TokenCursor::accept(std::string_view symbolOrWord)
{
    const bool found = peek().is(symbolOrWord);
    if (found) {
        take();
    }
    return found;
}

bool TokenCursor::acceptClosingAngle()
{
    Token& token = text_.tokens[position_];
    if (!token.is(">>")) {
        return accept(">");
    }
    token.text.remove_prefix(1);
    if (token.width == 2) {
        ++token.place.column;
        --token.width;
    }
    return true;
}

Location TokenCursor::behind() const
{
    return position_ == 0 ? peek().place : previous().end();
}

void TokenCursor::reportMissing(const std::string& what, const std::string& hint)
{
    const Location place = behind();
    const bool isHidden = atEnd() && !text_.isWhole;
    if (!isHidden && !text_.faultyLines.contains({place.file, place.line})) {
        reporter_.error(place, what + " is missing", hint);
    }
}

void TokenCursor::missing(const std::string& what, const std::string& hint)
{
    reportMissing(what, hint);
    if (atEnd()) {
        throw EndOfText();
    }
    throw SyntaxError();
}

void TokenCursor::expect(std::string_view symbol)
{
    if (!accept(symbol)) {
        missing("\"" + std::string(symbol) + "\"");
    }
}

void TokenCursor::expectClosingAngle()
{
    if (!acceptClosingAngle()) {
        missing("\">\"");
    }
}

void TokenCursor::expectOpeningBrace()
{
    if (accept("{")) {
        return;
    }
    if (!peek().isName() && !peek().is("@")) {
        missing("\"{\"");
    }
    reportMissing("\"{\"");
}

bool TokenCursor::isAtNextDeclaration(std::size_t begin) const
{
    const Location place = peek().place;
    std::size_t ahead = 0;
    while (peek(ahead).is("@")) { // annotations, by their shape
        ahead += 2;
        while (peek(ahead).is("::")) {
            ahead += 2;
        }
        for (int depth = peek(ahead).is("(") ? 1 : 0; depth > 0 && peek(ahead).kind != TokenKind::End;) {
            ++ahead;
            depth += peek(ahead).is("(") ? 1 : 0;
            depth -= peek(ahead).is(")") ? 1 : 0;
            ahead += depth == 0 ? 1 : 0;
        }
    }
    return place.line != previous().place.line && place.column <= text_.tokens[begin].place.column &&
           beginsDeclaration(peek(ahead));
}

void TokenCursor::endBody(const std::string& hint)
{
    reportMissing("\"}\"", hint);
    isEnded_ = true;
}

void TokenCursor::expectSemicolon()
{
    if (std::exchange(isEnded_, false) || accept(";")) {
        return;
    }
    const bool isDefault = peek().is("=");
    reportMissing("\";\"", isDefault ? "a default is written before the member: @default(VALUE)" : "");
    const bool isNextLine =
        atEnd() || peek().place.line != behind().line || peek().place.file != behind().file;
    if (!isNextLine && !peek().is("}")) {
        throw SyntaxError();
    }
}

void TokenCursor::skipDeclaration(std::size_t begin)
{
    std::size_t depth = 0;
    while (!atEnd()) {
        const Token& token = peek();
        const bool startsLine = token.place.line != previous().place.line;
        if (depth == 0 && (token.is("}") || (position_ > begin && startsLine && beginsDeclaration(token)))) {
            return;
        }
        take();
        depth += token.is("{") ? 1U : 0U;
        depth -= token.is("}") ? 1U : 0U;
        const bool endsHere =
            token.is(";") || (token.is("}") && !peek().is(";") && peek().place.line != token.place.line);
        if (depth == 0 && endsHere) {
            return;
        }
    }
}

std::string TokenCursor::documentation(std::size_t before, bool trailing) const
{
    std::string result;
    auto comment = std::ranges::lower_bound(text_.comments, before, {}, &DocumentationComment::before);
    for (; comment != text_.comments.end() && comment->before == before; ++comment) {
        if (comment->trailing == trailing) {
            result = joined(std::move(result), documentationOf(comment->text));
        }
    }
    return result;
}

std::string TokenCursor::documentationBefore(std::size_t position) const
{
    return documentation(position, false);
}

std::string TokenCursor::documentationBehind(std::size_t position) const
{
    return documentation(position + 1, true);
}

std::string joined(std::string first, const std::string& second)
{
    first += !first.empty() && !second.empty() ? "\n" : "";
    return first + second;
}

} // namespace ovra::plex::idl
