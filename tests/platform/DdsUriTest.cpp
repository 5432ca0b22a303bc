// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"

#include <plex/Uri.hpp>
#include <plex/dds/DdsUriHelper.hpp>

#include <gtest/gtest.h>

#include <LogCapture.hpp>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

using ovra::plex::DdsUriHelper;
using ovra::plex::Plex;
using ovra::plex::PlexException;
using ovra::plex::Uri;

struct WellFormed {
    std::string text;
    std::uint32_t domain;
    std::string topic;
    std::string decodedTopic;
    bool pubSub = true;
};

std::string repeated(const std::string& piece, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += piece;
    }
    return result;
}

const std::vector<WellFormed>& wellFormed()
{
    static const std::vector<WellFormed> all{
        {"dds+ps://0/dome/position", 0, "dome/position", "dome/position"},
        {"dds+ps://232/t", 232, "t", "t"},
        {"dds+ps://007/t", 7, "t", "t"},
        {"dds+ps://0000000000000232/t", 232, "t", "t"},
        {"dds+ps:///t", 0, "t", "t"},
        {"DDS+PS://1/t", 1, "t", "t"},
        {"Dds+pS://1/t", 1, "t", "t"},
        {"dds+rpc://1/t", 1, "t", "t", false},
        {"dds+psx://1/t", 1, "t", "t", false},
        {"dds+p://1/t", 1, "t", "t", false},
        {"dds+ps+x://1/t", 1, "t", "t", false},
        {"dds+ps://1//t", 1, "/t", "/t"},
        {"dds+ps://1/t/", 1, "t/", "t/"},
        {"dds+ps://1//", 1, "/", "/"},
        {"dds+ps://1/./a/../b", 1, "./a/../b", "./a/../b"},
        {"dds+ps://1/a+b:c@d;e=f", 1, "a+b:c@d;e=f", "a+b:c@d;e=f"},
        {"dds+ps://1/a%20b", 1, "a%20b", "a b"},
        {"dds+ps://1/a%2fb%2Fc", 1, "a%2fb%2Fc", "a/b/c"},
        {"dds+ps://1/%2525", 1, "%2525", "%25"},
        {"dds+ps://1/%3Fa%23b", 1, "%3Fa%23b", "?a#b"},
        {"dds+ps://1/%E2%82%AC", 1, "%E2%82%AC", "\xE2\x82\xAC"},
        {"dds+ps://1/" + repeated("x", 255), 1, repeated("x", 255), repeated("x", 255)},
        {"dds+ps://1/" + repeated("%41", 255), 1, repeated("%41", 255), repeated("A", 255)}};
    return all;
}

struct IllFormed {
    std::vector<std::string> texts;
    std::string rule;
};

const std::vector<IllFormed>& illFormed()
{
    static const std::vector<IllFormed> all{
        {{"http://0/t", "dds://0/t", "dds+://0/t", "ddsx+ps://0/t", "dd://0/t", "xdds+ps://0/t"},
         "its scheme does not begin with \"dds+\" and a profile"},
        {{"dds+ps:t", "dds+ps:/t", "dds+ps:", "dds+ps:/", "dds+ps:?q", "dds+ps:%zz"},
         "it has no authority (the part after \"//\", which may be empty)"},
        {{"dds+ps://user@0/t", "dds+ps://user:secret@0/t", "dds+ps://user@[::1]/t"}, "it has user info"},
        {{"dds+ps://0:7400/t", "dds+ps://0:/t", "dds+ps://0:x/t", "dds+ps://0:1:2/t", "dds+ps://[::1]:5/t"},
         "it has a port"},
        {{"dds+ps://0/t?q=1", "dds+ps://0/t?"}, "it has a query"},
        {{"dds+ps://0/t#f", "dds+ps://0/t#"}, "it has a fragment"},
        {{"dds+ps://233/t", "dds+ps://-1/t", "dds+ps://-0/t", "dds+ps://+1/t", "dds+ps://1.0/t",
          "dds+ps://0x1/t", "dds+ps://1e1/t", "dds+ps://host/t", "dds+ps://4294967296/t",
          "dds+ps://18446744073709551616/t", "dds+ps://[::1]/t", "dds+ps://[::1/t", "dds+ps://[0]1/t",
          "dds+ps://127.0.0.1/t", "dds+ps://a b/t", "dds+ps:// 0/t", "dds+ps://%zz/t", "dds+ps://%31/t",
          "dds+ps://1,2/t"},
         "its domain is not a whole number from 0 to 232"},
        {{"dds+ps://0", "dds+ps://0/", "dds+ps:///"}, "its topic is empty"},
        {{"dds+ps://0/" + repeated("x", 256), "dds+ps://0/" + repeated("%41", 256)},
         "its topic is longer than 255 bytes"},
        {{"dds+ps://0/%00", "dds+ps://0/a%00", "dds+ps://0/a%00b"}, "its topic holds a NUL character"}};
    return all;
}

constexpr const char* domainRule = "Property dds.domain is not a whole number from 0 to 232: ";

} // namespace

TEST(DdsUri, WellFormedIsAccepted)
{
    for (const auto& [text, domain, topic, decodedTopic, pubSub] : wellFormed()) {
        SCOPED_TRACE(text);
        const Uri uri(text);
        EXPECT_NO_THROW(DdsUriHelper::checkUri(uri, true));
        EXPECT_EQ(DdsUriHelper::isPubSubUri(uri), pubSub);
        EXPECT_EQ(DdsUriHelper::domain(uri, {}), domain);
        EXPECT_EQ(DdsUriHelper::topic(uri, false), topic);
        EXPECT_EQ(DdsUriHelper::topic(uri, true), decodedTopic);
    }
}

TEST(DdsUri, IllFormedIsRefusedWithTheRuleThatItBreaks)
{
    for (const auto& [texts, rule] : illFormed()) {
        for (const auto& text : texts) {
            EXPECT_EQ(refusalOf([&] { DdsUriHelper::checkUri(Uri(text), false); }),
                      "Uri " + text + " is not a DDS Uri: " + rule);
        }
    }
}

TEST(DdsUri, EmptyUriIsRefused)
{
    EXPECT_EQ(refusalOf([] { DdsUriHelper::checkUri(Uri(), false); }),
              "Uri  is not a DDS Uri: its scheme does not begin with \"dds+\" and a profile");
}

/// With a bracket amid the authority, a copy may have other parts than the original, and even those of a DDS
/// URI.
TEST(DdsUri, CopyOfAnIllFormedOneIsRefusedToo)
{
    for (const std::string text : {"dds+ps://000[]/t", "dds+ps://0000000[]/t", "dds+ps://00%4[]/tt"}) {
        const Uri original(text);
        const Uri copy(
            original); // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
        for (const auto* const uri : {&original, &copy}) {
            EXPECT_EQ(refusalOf([&] { DdsUriHelper::checkUri(*uri, false); }),
                      "Uri " + text + " is not a DDS Uri: its domain is not a whole number from 0 to 232");
        }
    }
}

TEST(DdsUri, RefusalIsLoggedWhereAskedFor)
{
    const LogCapture log;
    EXPECT_THROW(DdsUriHelper::checkUri(Uri("dds+ps://0"), false), PlexException);
    EXPECT_TRUE(log.records().empty());
    EXPECT_THROW(DdsUriHelper::checkUri(Uri("dds+ps://0"), true), PlexException);
    EXPECT_EQ(log.count("plexDdsUriHelper", log4cplus::ERROR_LOG_LEVEL,
                        "Uri dds+ps://0 is not a DDS Uri: its topic is empty"),
              1);
}

TEST(DdsUri, IsOfPublishSubscribeByItsSchemeAlone)
{
    EXPECT_TRUE(DdsUriHelper::isPubSubUri(Uri("dds+ps:ill-formed?")));
    EXPECT_FALSE(DdsUriHelper::isPubSubUri(Uri()));
    for (const char* const text : {"dds+rpc://0/t", "http://0/t", "ps://0/t"}) {
        EXPECT_FALSE(DdsUriHelper::isPubSubUri(Uri(text))) << text;
    }
}

TEST(DdsUri, DomainComesFromThePropertyWhereTheAuthorityIsEmpty)
{
    EXPECT_EQ(DdsUriHelper::domain(Uri("dds+ps:///t"), {{"dds.domain", "5"}}), 5U);
    EXPECT_EQ(DdsUriHelper::domain(Uri("dds+ps:///t"), {{"dds.domain", "232"}}), 232U);
    EXPECT_EQ(DdsUriHelper::domain(Uri("dds+ps:///t"), {{"another.domain", "5"}}), 0U);
    EXPECT_EQ(DdsUriHelper::domain(Uri("dds+ps://7/t"), {{"dds.domain", "5"}}), 7U);
    EXPECT_EQ(DdsUriHelper::domain(Uri("dds+ps://7/t"), {{"dds.domain", "nonsense"}}), 7U);
}

TEST(DdsUri, DomainOfTheRightFormOnlyIsTakenFromTheProperty)
{
    for (const std::string value :
         {"", "233", "-1", "+1", "five", "5 ", " 5", "5.0", "99999999999999999999"}) {
        EXPECT_EQ(refusalOf([&] { DdsUriHelper::domain(Uri("dds+ps:///t"), {{"dds.domain", value}}); }),
                  domainRule + ("\"" + value + "\""));
    }
}

} // namespace plex::test
