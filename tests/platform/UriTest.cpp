// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <network/uri.hpp>

#include <array>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace plex::test
{

namespace
{

using network::uri;

/// A part, or nothing where the URI has no such part.
using Part = std::optional<std::string>;

struct Parts {
    std::string text;
    Part scheme;
    Part userInfo;
    Part host;
    Part port;
    Part path;
    Part query;
    Part fragment;
};

/// What both classes of that name hold: cpp-netlib's, and the project's own for where that is not installed.
const std::vector<Parts>& held()
{
    static const std::vector<Parts> all{
        {"dds+ps://0/dome/position", "dds+ps", {}, "0", {}, "/dome/position", {}, {}},
        {"a://u:p@h:80/x/y?q=1&r#f", "a", "u:p", "h", "80", "/x/y", "q=1&r", "f"},
        {"a://h:80?q", "a", {}, "h", "80", "", "q", {}},
        {"a://h:/?#", "a", {}, "h", "", "/", "", ""},
        {"a://u@/x", "a", "u", "", {}, "/x", {}, {}},
        {"a://[::1]:5/x", "a", {}, "[::1]", "5", "/x", {}, {}},
        {"a://u@[::1]?q", "a", "u", "[::1]", {}, "", "q", {}},
        {"dds+ps://0/a%20b%2Fc", "dds+ps", {}, "0", {}, "/a%20b%2Fc", {}, {}},
        {"A1+-.://0/t?/?:@#/?:@", "A1+-.", {}, "0", {}, "/t", "/?:@", "/?:@"},
        // space around it
        {" \t\n\v\f\rdds+ps://0/t \t\n\v\f\r", "dds+ps", {}, "0", {}, "/t", {}, {}},
        // an authority that is empty, and a path that is
        {"dds+ps:///topic", "dds+ps", {}, "", {}, "/topic", {}, {}},
        {"a://?q", "a", {}, "", {}, "", "q", {}},
        {"dds+ps://7", "dds+ps", {}, "7", {}, "", {}, {}},
        // no authority
        {"dds+ps:topic", "dds+ps", {}, {}, {}, "topic", {}, {}},
        {"dds+ps:/topic", "dds+ps", {}, {}, {}, "/topic", {}, {}},
        {"dds+ps:", "dds+ps", {}, {}, {}, {}, {}, {}},
        {"dds+ps:/", "dds+ps", {}, {}, {}, {}, {}, {}},
        // the first character of a path without authority, which may be any
        {"a: b", "a", {}, {}, {}, " b", {}, {}},
        {"a:?q", "a", {}, {}, {}, "?q", {}, {}},
        {"a:/#f?q", "a", {}, {}, {}, "/#f", "q", {}},
        // hosts and ports of any characters
        {"dds+ps://a b/topic", "dds+ps", {}, "a b", {}, "/topic", {}, {}},
        {"dds+ps://%zz\"\xC3\xA4/topic", "dds+ps", {}, "%zz\"\xC3\xA4", {}, "/topic", {}, {}},
        {"dds+ps://0:x/topic", "dds+ps", {}, "0", "x", "/topic", {}, {}},
        {"a://0:1:2/topic", "a", {}, "0:1", "2", "/topic", {}, {}},
        {"a://h:65534", "a", {}, "h", "65534", "", {}, {}},
        // brackets that nothing closes, or that other text follows
        {"dds+ps://[::1/topic", "dds+ps", {}, "[::1/topic", {}, "", {}, {}},
        {"a://[::1]x/y]/z", "a", {}, "[::1]x/y]", {}, "/z", {}, {}}};
    return all;
}

const Parts nothing{"", {}, {}, {}, {}, {}, {}, {}};

template <class View>
Part part(bool present, View view)
{
    return present ? Part(std::string(view.begin(), view.end())) : std::nullopt;
}

std::string withoutSpaceAround(const std::string& text)
{
    constexpr const char* space = " \t\n\v\f\r";
    const auto first = text.find_first_not_of(space);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(space) + 1 - first);
}

void expectParts(const uri& actual, const Parts& expected)
{
    SCOPED_TRACE(expected.text);
    EXPECT_EQ(part(actual.has_scheme(), actual.scheme()), expected.scheme);
    EXPECT_EQ(part(actual.has_user_info(), actual.user_info()), expected.userInfo);
    EXPECT_EQ(part(actual.has_host(), actual.host()), expected.host);
    EXPECT_EQ(part(actual.has_port(), actual.port()), expected.port);
    EXPECT_EQ(part(actual.has_path(), actual.path()), expected.path);
    EXPECT_EQ(part(actual.has_query(), actual.query()), expected.query);
    EXPECT_EQ(part(actual.has_fragment(), actual.fragment()), expected.fragment);
    EXPECT_EQ(actual.has_authority(), expected.host.has_value());
    EXPECT_EQ(actual.string(), withoutSpaceAround(expected.text));
}

} // namespace

TEST(NetworkUri, HasTheParts)
{
    for (const auto& parts : held()) {
        expectParts(uri(parts.text), parts);
    }
}

/// And only the original does so in both classes: cpp-netlib's has other parts once it is copied.
TEST(NetworkUri, ForgetsWhatStandsBeforeABracket)
{
    expectParts(uri("a://0:1[::1]:5/x"), {"a://0:1[::1]:5/x", "a", {}, "[::1]", "5", "/x", {}, {}});
}

TEST(NetworkUri, HasAnAuthorityOfUserInfoHostAndPort)
{
    for (const std::string text : {"u:p@h:80", "h", "h:80", "h:", "", "u@", "u@h", "[::1]:5", "u@[::1]"}) {
        const uri address("a://" + text + "/x");
        EXPECT_EQ(part(address.has_authority(), address.authority()), text);
    }
}

TEST(NetworkUri, IsMadeFromAnyText)
{
    const std::string text = "dds+ps://0/topic";
    EXPECT_EQ(uri(text).string(), text);
    EXPECT_EQ(uri(text.c_str()).string(), text);
    EXPECT_EQ(uri(text.begin(), text.end()).string(), text);
}

TEST(NetworkUri, IsEmptyByDefault)
{
    const uri address;
    EXPECT_TRUE(address.empty());
    expectParts(address, nothing);
    EXPECT_FALSE(uri("x:").empty());
}

TEST(NetworkUri, IsEmptyOfNothingButSpace)
{
    for (const char* const text : {"", " ", "\t \n"}) {
        EXPECT_TRUE(uri(text).empty());
        expectParts(uri(text), nothing);
    }
}

TEST(NetworkUri, KeepsItsPartsWhenCopied)
{
    for (const auto& parts : held()) {
        auto original = std::make_optional<uri>(parts.text);
        const uri constructed(*original);
        uri assigned("other://1/text");
        assigned = *original;
        expectParts(*original, parts);
        original.reset();
        expectParts(constructed, parts);
        expectParts(assigned, parts);
    }
}

TEST(NetworkUri, KeepsItsPartsWhenMoved)
{
    for (const auto& parts : held()) {
        uri original(parts.text);
        uri constructed(std::move(original));
        expectParts(constructed, parts);
        uri assigned("other://1/text");
        assigned = std::move(constructed);
        expectParts(assigned, parts);
    }
}

TEST(NetworkUri, IsEmptyOnceMovedFrom)
{
    const Parts& parts = held().front();
    uri original(parts.text);
    uri moved(std::move(original));
    expectParts(original, nothing); // NOLINT(bugprone-use-after-move): that is asked here
    original = std::move(moved);
    expectParts(moved, nothing); // NOLINT(bugprone-use-after-move): likewise
    expectParts(original, parts);
}

TEST(NetworkUri, SurvivesBeingMovedToItself)
{
    const Parts& parts = held().front();
    uri address(parts.text);
    uri& same = address;
    address = std::move(same);
    expectParts(address, parts);
}

TEST(NetworkUri, SwapsTextAndParts)
{
    uri first(held()[0].text);
    uri second(held()[1].text);
    first.swap(second);
    expectParts(first, held()[1]);
    expectParts(second, held()[0]);
}

TEST(NetworkUri, IsEqualToOneOfTheSameText)
{
    const uri address("dds+ps://0/topic");
    EXPECT_TRUE(address == uri("dds+ps://0/topic"));
    EXPECT_FALSE(address != uri("dds+ps://0/topic"));
    for (const char* const other : {"dds+ps://1/topic", "dds+ps://0/topics", "dds+rpc://0/topic"}) {
        EXPECT_FALSE(address == uri(other)) << other;
        EXPECT_TRUE(address != uri(other)) << other;
    }
}

TEST(NetworkUri, IsOrdered)
{
    const uri first("dds+ps://0/a");
    const uri second("dds+ps://0/b");
    EXPECT_TRUE(first < second);
    EXPECT_FALSE(second < first);
    EXPECT_FALSE(first < uri(first));
}

TEST(NetworkUri, RefusesTextThatIsNoUri)
{
    for (const char* const text :
         {// no scheme
          "dome/position", "//0/topic", "://0/topic", "1dds://0/topic", "dds ps://0/topic", "##",
          // characters that a path, a query, a fragment or user info cannot have
          "dds+ps://0/a topic", "dds+ps://0/a\"b", "dds+ps://0/\x01", "dds+ps://0/\xC3\xA4", "dds+ps://0/[",
          "dds+ps://0/%", "dds+ps://0/%4", "dds+ps://0/%zz", "dds+ps:a b", "a://h?[", "a://h#[", "a:x#f#g",
          "dds+ps://0/t#f#g", "a://u\"@h", "a://u%@h",
          // an authority that is none, or begins or ends where it cannot
          "dds+ps://", "dds+ps://@0/t", "dds+ps://:80/t", "a://u@", "a://u@:80/t",
          // ports that are too great, or no numbers behind user info and brackets
          "a://h:65535", "a://h:99999999999999999999", "a://h:-1", "a://u@h:65535/x", "a://u@h:x",
          "a://u@h:80?q", "a://[::1]:x", "a://[::1]:80#f"}) {
        EXPECT_THROW(uri{text}, network::uri_syntax_error) << text;
    }
}

TEST(NetworkUri, RefusesWithASystemError)
{
    try {
        const uri address("not a uri");
        FAIL() << address.string();
    } catch (const std::system_error& error) {
        EXPECT_NE(dynamic_cast<const network::uri_syntax_error*>(&error), nullptr);
        EXPECT_STREQ(error.what(), "Unable to parse URI string.");
        EXPECT_STREQ(error.code().category().name(), "uri_error");
        EXPECT_EQ(error.code().value(), 1);
    }
}

} // namespace plex::test
