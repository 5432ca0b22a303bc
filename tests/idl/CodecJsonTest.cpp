// SPDX-License-Identifier: Apache-2.0
#include "Codec.hpp"

#include <bit>
#include <limits>

namespace plex::test
{

namespace
{

/// The JSON of a value that was read from JSON.
std::string again(const std::string& idl, const std::string& json)
{
    const Model model = modelOf(idl);
    return toJson(typeT(model), fromJson(typeT(model), json));
}

/// What is wrong with a JSON text.
std::string faultOf(const std::string& idl, const std::string& json)
{
    return faultIn([&] { again(idl, json); });
}

TEST(CodecJson, IntegersAreExact)
{
    EXPECT_EQ(again("typedef int64 T;", "-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(again("typedef int64 T;", "9007199254740993"), "9007199254740993");
    EXPECT_EQ(again("typedef uint64 T;", "18446744073709551615"), "18446744073709551615");
}

template <class Number>
std::string jsonOfNumber(const Model& model, Number number)
{
    return toJson(typeT(model), {number});
}

template <class Number, class Bits>
void expectSameBits(const std::string& idl, Bits bits)
{
    const Model model = modelOf(idl);
    const auto number = std::bit_cast<Number>(bits);
    const std::string json = jsonOfNumber(model, number);
    const Datum read = fromJson(typeT(model), json);
    EXPECT_EQ(std::bit_cast<Bits>(std::get<Number>(read.content)), bits) << json;
}

TEST(CodecJson, FloatingPointNumbersAreExact)
{
    for (const std::uint32_t bits :
         {0U, 0x80000000U, 1U, 0x007fffffU, 0x00800000U, 0x3dcccccdU, 0x7f7fffffU, 0x4b800001U, 0x7f800000U,
          0xff800000U, 0x7fc00000U, 0xffc00000U, 0x7f800001U, 0x7fc12345U}) {
        expectSameBits<float>("typedef float T;", bits);
    }
    for (const std::uint64_t bits : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{0x8000000000000000},
                                     std::uint64_t{0x3fb999999999999a}, std::uint64_t{0x7fefffffffffffff},
                                     std::uint64_t{0x7ff0000000000000}, std::uint64_t{0x7ff8000000000000},
                                     std::uint64_t{0xfff0000000000001}, std::uint64_t{0x000fffffffffffff}}) {
        expectSameBits<double>("typedef double T;", bits);
    }
}

TEST(CodecJson, FloatingPointNumbersAreShort)
{
    EXPECT_EQ(again("typedef float T;", "0.1"), "0.1");
    EXPECT_EQ(again("typedef double T;", "0.1"), "0.1");
    EXPECT_EQ(again("typedef double T;", "5"), "5.0");
    EXPECT_EQ(again("typedef float T;", "\"NaN\""), "\"NaN\"");
    EXPECT_EQ(again("typedef double T;", "\"-Infinity\""), "\"-Infinity\"");
    EXPECT_EQ(again("typedef float T;", "\"NaN(0x7fc00001)\""), "\"NaN(0x7fc00001)\"");
}

TEST(CodecJson, CharactersAndTexts)
{
    EXPECT_EQ(again("typedef char T;", "\"\\u00e9\""), "\"é\"");
    EXPECT_EQ(again("typedef char T;", "\"\\u0000\""), "\"\\u0000\"");
    EXPECT_EQ(again("typedef wchar T;", "\"€\""), "\"€\"");
    EXPECT_EQ(again("typedef wchar T;", "55357"), "55357");
    EXPECT_EQ(again("typedef string T;", "\"a\\\"€\""), "\"a\\\"€\"");
    EXPECT_EQ(again("typedef string T;", "[97,255]"), "[97,255]");
    EXPECT_EQ(again("typedef string T;", "[97,98]"), "\"ab\"");
}

TEST(CodecJson, TextsThatAreNotUtf8AreBytes)
{
    for (const std::string text :
         {"\xff", "\xc3", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "a\x80"}) {
        const Model model = modelOf("typedef string T;");
        EXPECT_THAT(toJson(typeT(model), {text}), testing::StartsWith("["));
        EXPECT_EQ(std::get<std::string>(fromJson(typeT(model), toJson(typeT(model), {text})).content), text);
    }
}

TEST(CodecJson, FlagsAndEnumerators)
{
    const std::string mask = "@bit_bound(8) bitmask T { A, @position(3) B };";
    EXPECT_EQ(again(mask, R"(["B","A"])"), R"(["A","B"])");
    EXPECT_EQ(again(mask, R"(["A",7])"), R"(["A",7])");
    EXPECT_EQ(again(mask, "[]"), "[]");
    EXPECT_EQ(again("enum T { A, B };", "1"), "\"B\"");
}

TEST(CodecJson, MembersThatAreLeftOutHaveTheirDefaults)
{
    EXPECT_EQ(again("struct T { @default(5) long a; @optional long b; string c; };", "{}"),
              R"({"a":5,"b":null,"c":""})");
    EXPECT_EQ(again("union T switch (long) { case 3: @default(8) long a; };", R"({"discriminator":3})"),
              R"({"discriminator":3,"member":8})");
}

TEST(CodecJson, IsIndentedWhereThatIsAskedFor)
{
    const Model model = modelOf("struct T { long a; };");
    EXPECT_EQ(toJson(typeT(model), Datum(), 2), "{\n  \"a\": 0\n}");
}

TEST(CodecJson, WhatDoesNotFitIsRefusedWithItsPath)
{
    struct Refusal {
        std::string idl;
        std::string json;
        std::string text;
    };

    const std::string inner = "struct I { octet b; }; struct T { sequence<I, 2> list; long m[2][2]; };";
    const std::string choice = "union T switch (long) { case 1: long a; };";
    const std::vector<Refusal> refusals{
        {inner, R"({"list":[{"b":1},{"b":256}]})", "list[1].b: 256 is out of the range of octet"},
        {inner, R"({"list":[{"b":-1}]})", "list[0].b: -1 is out of the range of octet"},
        {inner, R"({"list":[{"b":1.0}]})", "list[0].b: expects an integer, not 1.0"},
        {inner, R"({"list":[{"b":"1"}]})", "list[0].b: expects an integer, not \"1\""},
        {inner, R"({"list":[{"b":null}]})", "list[0].b: expects an integer, not null"},
        {inner, R"({"list":[{"c":1}]})", "list[0]: \"c\" is no member of I"},
        {inner, R"({"list":[{},{},{}]})", "list: the sequence has 3 elements, at most 2 are allowed"},
        {inner, R"({"list":{}})", "list: expects an array, not object"},
        {inner, R"({"m":[[1,2]]})", "m: expects an array of 2 elements, not array"},
        {inner, R"({"m":[[1,2],[3]]})", "m[1]: expects an array of 2 elements, not array"},
        {inner, R"({"m":[[1,2],[3,true]]})", "m[1][1]: expects an integer, not true"},
        {inner, "[]", "expects an object, not array"},
        {"typedef long T;", "2147483648", "2147483648 is out of the range of int32"},
        {"typedef short T;", "-32769", "-32769 is out of the range of int16"},
        {"typedef int64 T;", "9223372036854775808", "9223372036854775808 is out of the range of int64"},
        {"typedef uint64 T;", "18446744073709551616", "expects an integer, not 1.8446744073709552e+19"},
        {"typedef boolean T;", "1", "expects true or false, not 1"},
        {"typedef float T;", "1e39", "1e+39 is out of the range of float"},
        {"typedef float T;", "\"NaN(0x1)\"", "expects a number, not \"NaN(0x1)\""},
        {"typedef float T;", "\"NaN(0x)\"", "expects a number, not \"NaN(0x)\""},
        {"typedef double T;", "\"x\"", "expects a number, not \"x\""},
        {"typedef double T;", "true", "expects a number, not true"},
        {"typedef char T;", "\"€\"", "expects one character up to 255, not \"\\u20ac\""},
        {"typedef char T;", "\"ab\"", "expects one character up to 255, not \"ab\""},
        {"typedef char T;", "\"\"", "expects one character up to 255, not \"\""},
        {"typedef wchar T;", "\"\U0001F52D\"", "expects one character up to 65535, not \"\\ud83d\\udd2d\""},
        {"typedef string<2> T;", "\"abc\"", "the text has 3 bytes, at most 2 are allowed"},
        {"typedef string T;", "\"a\\u0000\"", "the text has a NUL in it"},
        {"typedef string T;", "5", "expects a text, not 5"},
        {"typedef string T;", "[97,256]", "[1]: expects a byte of a text, not 256"},
        {"enum T { A };", "\"B\"", "\"B\" is no enumerator of T"},
        {"enum T { A };", "7", "7 is no value of T"},
        {"enum T { A };", "null", "expects the name of an enumerator, not null"},
        {"bitmask T { A };", "[\"B\"]", "[0]: \"B\" is no flag of T"},
        {"bitmask T { A };", "[32]", "[0]: expects the name of a flag, not 32"},
        {"bitmask T { A };", "\"A\"", "expects an array of names, not \"A\""},
        {choice, "5", "expects an object with \"discriminator\" and \"member\", not 5"},
        {choice, R"({"member":5})", "expects an object with \"discriminator\" and \"member\", not object"},
        {choice, R"({"discriminator":1,"a":5})", "\"a\" is neither \"discriminator\" nor \"member\""},
        {choice, R"({"discriminator":2,"member":5})",
         "the discriminator selects no case, and there is a member"},
        {choice, R"({"discriminator":1,"member":"x"})", "a: expects an integer, not \"x\""},
        {choice, R"({"discriminator":"x"})", "discriminator: expects an integer, not \"x\""},
        {"struct T { wstring w; };", R"({"w":"x"})", "w: wstring is not supported"},
    };
    for (const Refusal& refusal : refusals) {
        EXPECT_EQ(faultOf(refusal.idl, refusal.json), refusal.text) << refusal.json;
    }
}

TEST(CodecJson, TextThatIsNoJsonIsRefused)
{
    for (const auto* const text : {"", "{", "{\"a\":}", "1 2", "1e999", "\"\xff\"", "[1,]"}) {
        EXPECT_THAT(faultOf("typedef long T;", text), testing::StartsWith("the text is no JSON: ")) << text;
    }
}

TEST(CodecJson, DeepTextsAreRefused)
{
    const std::string deep = std::string(100000, '[');
    EXPECT_THAT(faultOf("typedef long T;", deep), testing::StartsWith("the text is no JSON: "));
    EXPECT_THAT(
        faultOf("struct T; typedef sequence<T> Ts; struct T { Ts t; };", deep + std::string(100000, ']')),
        testing::StartsWith("expects an object"));
}

} // namespace

} // namespace plex::test
