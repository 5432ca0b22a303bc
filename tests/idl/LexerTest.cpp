// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <Lexer.hpp>
#include <Literals.hpp>

namespace plex::test
{

namespace
{

using testing::ElementsAre;

std::vector<std::string> textsOf(const std::string& text)
{
    std::vector<std::string> texts;
    for (const Token& token : Lexer(text, {0, 1, 1}).tokens()) {
        texts.emplace_back(token.text);
    }
    return texts;
}

std::vector<Token> tokensOf(const std::string& text)
{
    return Lexer(text, {0, 1, 1}).tokens();
}

TEST(Lexer, TakesTheLongestSymbol)
{
    EXPECT_THAT(textsOf("a::b:c>>>d<<e"),
                ElementsAre("a", "::", "b", ":", "c", ">>", ">", "d", "<<", "e", ""));
}

TEST(Lexer, LeavesOutTheUnderscoreOfAnEscapedName)
{
    const std::string text = "_module __x _";
    const auto tokens = tokensOf(text);
    EXPECT_EQ(tokens[0].kind, TokenKind::EscapedWord);
    EXPECT_EQ(tokens[0].text, "module");
    EXPECT_EQ(tokens[0].width, 7U);
    EXPECT_EQ(tokens[1].text, "_x");
    EXPECT_EQ(tokens[2].kind, TokenKind::Word);
}

TEST(Lexer, TellsNumbersApart)
{
    const std::string text = "1 017 0xFf 1.5 .5 1e3 1E-3 2.d 0x 1.2.3 1e 12a";
    const std::vector<TokenKind> kinds{TokenKind::Integer,  TokenKind::Integer,  TokenKind::Integer,
                                       TokenKind::Floating, TokenKind::Floating, TokenKind::Floating,
                                       TokenKind::Floating, TokenKind::Fixed};
    const auto tokens = tokensOf(text);
    ASSERT_EQ(tokens.size(), 13U);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(tokens[i].fault != nullptr, i >= kinds.size()) << tokens[i].text;
        EXPECT_TRUE(i >= kinds.size() || tokens[i].kind == kinds[i]) << tokens[i].text;
    }
}

TEST(Lexer, CountsColumnsInCharacters)
{
    const std::string text = "/* \u00e4\u00f6 */ a\n\t\"\u00fc\" b";
    const auto tokens = tokensOf(text);
    EXPECT_EQ(tokens[0].place.column, 10U);
    EXPECT_EQ(tokens[1].place.line, 2U);
    EXPECT_EQ(tokens[1].place.column, 2U);
    EXPECT_EQ(tokens[2].place.column, 6U);
}

TEST(Lexer, KeepsDocumentationAndDropsOtherComments)
{
    const std::string text = "/// a\n//// b\n// c\n/** d */ /**/ /* e */ /*** f */ ///< g\n/**< h */ //! i\n";
    EXPECT_THAT(textsOf(text), ElementsAre("/// a", "/** d */", "///< g", "/**< h */", "//! i", ""));
}

TEST(Lexer, TakesADirectiveWithTheLinesThatABackslashAdds)
{
    const std::string text = "a # b\n  #define X \\\n 1 // end\nc";
    EXPECT_THAT(textsOf(text), ElementsAre("a", "#", "b", "#define X \\\n 1 // end", "c", ""));
}

TEST(Lexer, TakesALiteralWithTheLinesThatABackslashAdds)
{
    for (const std::string text : {"\"a\\\nb\" c", "\"a\\\r\nb\" c"}) {
        const auto tokens = tokensOf(text);
        EXPECT_EQ(tokens[0].fault, nullptr);
        EXPECT_EQ(tokens[1].text, "c");
        EXPECT_EQ(tokens[1].place.line, 2U);
        EXPECT_EQ(unquoted(tokens[0].text).text, "ab");
    }
}

TEST(Lexer, NotesWhatIsNotClosed)
{
    for (const std::string text : {"\"abc", "'a", "/* abc", "\"abc\\"}) {
        EXPECT_NE(tokensOf(text).front().fault, nullptr) << text;
    }
}

} // namespace

} // namespace plex::test
