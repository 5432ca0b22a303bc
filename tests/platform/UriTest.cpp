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
    const char* text;
    Part scheme;
    Part userInfo;
    Part host;
    Part port;
    Part path;
    Part query;
    Part fragment;
};

const std::vector<Parts>& references()
{
    static const std::vector<Parts> all{
        {"dds+ps://0/dome/position", "dds+ps", {}, "0", {}, "/dome/position", {}, {}},
        {"dds+ps:///topic", "dds+ps", {}, "", {}, "/topic", {}, {}},
        {"dds+ps://7", "dds+ps", {}, "7", {}, {}, {}, {}},
        {"dds+ps:topic", "dds+ps", {}, {}, {}, "topic", {}, {}},
        {"dds+ps:/topic", "dds+ps", {}, {}, {}, "/topic", {}, {}},
        {"a://u:p@h:80/x/y?q=1&r#f", "a", "u:p", "h", "80", "/x/y", "q=1&r", "f"},
        {"a://@h:/?#", "a", "", "h", "", "/", "", ""},
        {"a://[::1]:5/x", "a", {}, "[::1]", "5", "/x", {}, {}},
        {"dds+ps://0/a%20b%2Fc", "dds+ps", {}, "0", {}, "/a%20b%2Fc", {}, {}},
        {"//h/x", {}, {}, "h", {}, "/x", {}, {}},
        {"x/y", {}, {}, {}, {}, "x/y", {}, {}},
        {"", {}, {}, {}, {}, {}, {}, {}}};
    return all;
}

template <class View>
Part part(bool present, View view)
{
    return present ? Part(std::string(view.begin(), view.end())) : std::nullopt;
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
    EXPECT_EQ(actual.string(), expected.text);
}

} // namespace

TEST(NetworkUri, HasTheParts)
{
    for (const auto& reference : references()) {
        expectParts(uri(reference.text), reference);
    }
}

TEST(NetworkUri, HasAnAuthorityOfUserInfoHostAndPort)
{
    const uri address("a://u:p@h:80/x");
    EXPECT_EQ(part(address.has_authority(), address.authority()), "u:p@h:80");
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
    const uri nothing;
    EXPECT_TRUE(nothing.empty());
    expectParts(nothing, references().back());
    EXPECT_FALSE(uri("x").empty());
}

TEST(NetworkUri, KeepsItsPartsWhenCopied)
{
    for (const auto& reference : references()) {
        auto original = std::make_optional<uri>(reference.text);
        const uri constructed(*original);
        uri assigned("other://1/text");
        assigned = *original;
        expectParts(*original, reference);
        original.reset();
        expectParts(constructed, reference);
        expectParts(assigned, reference);
    }
}

TEST(NetworkUri, KeepsItsPartsWhenMoved)
{
    for (const auto& reference : references()) {
        uri original(reference.text);
        uri constructed(std::move(original));
        expectParts(constructed, reference);
        uri assigned("other://1/text");
        assigned = std::move(constructed);
        expectParts(assigned, reference);
    }
}

TEST(NetworkUri, IsEmptyOnceMovedFrom)
{
    const Parts& reference = references().front();
    uri original(reference.text);
    uri moved(std::move(original));
    expectParts(original, references().back());
    original = std::move(moved);
    expectParts(moved, references().back());
    expectParts(original, reference);
}

TEST(NetworkUri, SurvivesBeingMovedToItself)
{
    const Parts& reference = references().front();
    uri address(reference.text);
    uri& same = address;
    address = std::move(same);
    expectParts(address, reference);
}

TEST(NetworkUri, SwapsTextAndParts)
{
    uri first(references()[0].text);
    uri second(references()[5].text);
    first.swap(second);
    expectParts(first, references()[5]);
    expectParts(second, references()[0]);
}

TEST(NetworkUri, IsEqualToOneOfTheSameText)
{
    const uri address("dds+ps://0/topic");
    EXPECT_TRUE(address == uri("dds+ps://0/topic"));
    EXPECT_FALSE(address != uri("dds+ps://0/topic"));
    for (const char* const other : {"dds+ps://1/topic", "dds+ps://0/topics", "dds+rpc://0/topic", ""}) {
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

TEST(NetworkUri, RefusesTextThatIsNoReference)
{
    for (const char* const text : {"dds+ps://0/a topic",
                                   "dds ps://0/topic",
                                   "dds+ps://0/%",
                                   "dds+ps://0/%4",
                                   "dds+ps://0/%zz",
                                   "dds+ps://[::1/topic",
                                   "dds+ps://0:x/topic",
                                   "dds+ps://0/a\"b",
                                   "dds+ps://0/\x01",
                                   "dds+ps://0/\xC3\xA4",
                                   "1dds://0/topic",
                                   "://0/topic",
                                   "dds+ps://a b/topic",
                                   "dds+ps://0/t#f#g",
                                   "##",
                                   "#%23#",
                                   "//h:x",
                                   "//h:12x",
                                   "//u@h:1x",
                                   "//[::1]x",
                                   "//[::1]:8x/y"}) {
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
        EXPECT_NE(std::string(error.what()), "");
    }
}

} // namespace plex::test
