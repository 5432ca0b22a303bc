// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Model.hpp>

#include <string_view>

namespace ovra::plex::idl
{

enum class TokenKind : std::uint8_t {
    Word,        ///< identifier or keyword
    EscapedWord, ///< an identifier with an underscore before it, which is not in the text
    Integer,
    Floating,
    Fixed,
    Character,
    WideCharacter,
    String,
    WideString,
    Symbol,            ///< punctuation
    Comment,           ///< documentation of what follows
    TrailingComment,   ///< documentation of what stands before
    CommentAnnotation, ///< `//@…`, which other tools once took for an annotation
    Directive,         ///< all of a preprocessor's line, from # on
    Invalid,
    End
};

/// A piece of a text, which it views.
struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view text;
    Location place;
    std::uint32_t width =
        0; ///< in characters, where it stands: a macro's name is not as wide as what it means
    const char* fault = nullptr; ///< what is wrong with it, if it is

    bool is(std::string_view symbolOrWord) const
    {
        return (kind == TokenKind::Symbol || kind == TokenKind::Word) && text == symbolOrWord;
    }

    bool isName() const { return kind == TokenKind::Word || kind == TokenKind::EscapedWord; }

    /// The place right behind it.
    Location end() const { return {place.file, place.line, place.column + width}; }
};

} // namespace ovra::plex::idl
