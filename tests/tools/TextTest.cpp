// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <array>
#include <tools/plex/Failure.hpp>
#include <tools/plex/Text.hpp>
#include <tools/plex/TypeSource.hpp>
#include <tools/plex/Words.hpp>

namespace ovra::plex::tool
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

TEST(WordsTest, ChooseFittingUnits)
{
    EXPECT_EQ(inSeconds(0), "0 s");
    EXPECT_EQ(inSeconds(12.345), "12.3 s");
    EXPECT_EQ(inSeconds(1.25e-3), "1.25 ms");
    EXPECT_EQ(inSeconds(-2e-6), "-2 µs");
    EXPECT_EQ(inSeconds(3e-10), "0.3 ns");
    EXPECT_EQ(inBytes(0), "0 B");
    EXPECT_EQ(inBytes(20), "20 B");
    EXPECT_EQ(inBytes(1.5e6), "1.5 MB");
}

TEST(WordsTest, CountInNouns)
{
    EXPECT_EQ(counted(0, "value"), "0 values");
    EXPECT_EQ(counted(1, "value"), "1 value");
    EXPECT_EQ(counted(2, "value"), "2 values");
}

TEST(WordsTest, TellMomentsAsUtc)
{
    EXPECT_EQ(inTimeOfDay(0), "1970-01-01T00:00:00.000000000Z");
    EXPECT_EQ(inTimeOfDay(1'700'000'000'123'456'789), "2023-11-14T22:13:20.123456789Z");
    EXPECT_EQ(inTimeOfDay(-1), "1969-12-31T23:59:59.999999999Z");
}

TEST(WordsTest, FindTheNearestName)
{
    const std::vector<std::string> names{"dome/shutters", "dome/position", "weather"};
    EXPECT_EQ(nearest("dome/shuters", names), "dome/shutters");
    EXPECT_EQ(nearest("shutters", names), "dome/shutters");
    EXPECT_EQ(nearest("wether", names), "weather");
    EXPECT_EQ(nearest("zzzzzzzz", names), "");
    EXPECT_EQ(nearest("x", {}), "");
    EXPECT_EQ(suggestion("wether", names), ", did you mean \"weather\"?");
    EXPECT_EQ(suggestion("zzzzzzzz", names), "");
}

TEST(WordsTest, AlignCellsByTheirCharacters)
{
    EXPECT_THAT(aligned({{"µs", "a"}, {"long", "b"}}), ElementsAre("µs    a", "long  b"));
    EXPECT_EQ(padded("µs", 4), "µs  ");
    EXPECT_EQ(padded("long", 2), "long");
}

TEST(WordsTest, WriteBytesInHexadecimal)
{
    EXPECT_EQ(inHexadecimal(std::array<std::uint8_t, 3>{0x00, 0x1f, 0xff}), "001fff");
}

TEST(TextTest, IsOneLineWhateverTheValueHolds)
{
    const auto value =
        Json::parse(R"({"name": "upper", "text": "a b\n", "empty": "", "real": 1.5, "none": null,
        "list": [1, [true]], "inner": {"x": -1}})");
    EXPECT_EQ(inOneLine(value),
              R"(name=upper text="a b\n" empty="" real=1.5 none=null list=[1, [true]] inner={x=-1})");
}

TEST(TextTest, FillsTemplates)
{
    Fields fields{"topic",
                  "time",
                  "age",
                  "publisher",
                  Json::parse(R"({"a": {"b": ["x y"]}, "n": null})"),
                  Json::parse(R"({"a": 1})")};
    EXPECT_EQ(parseTemplate(R"({topic}|{time}|{age}|{publisher}\t{.a.b[0]}{.n}{{}}\n)", nullptr)(fields),
              "topic|time|age|publisher\tx y{}\n");
    EXPECT_EQ(parseTemplate("{key}: {value}", nullptr)(fields), "a=1: a={b=[\"x y\"]} n=null");
}

TEST(TextTest, RefusesTemplatesThatMakeNoSense)
{
    for (const char* const text : {"{", "{unknown}", "{.}", "{.a..b}", "{.a[}", "{}"}) {
        EXPECT_THROW(parseTemplate(text, nullptr), Failure) << text;
    }
}

TEST(TypeSourceTest, FindsTheDefinedNameInWhatGeneratorsMakeOfIt)
{
    EXPECT_EQ(definedName("generated::dds_::a::b::T"), "a::b::T");
    EXPECT_EQ(definedName("a::dds_::T_"), "a::T");
    EXPECT_EQ(definedName("a::T"), "a::T");
    EXPECT_EQ(definedName("T"), "T");
    EXPECT_EQ(definedName(""), "");
}

TEST(TypeSourceTest, ReadsTypesFromDefinitions)
{
    TypeOptions options;
    options.files = {PLEX_TEST_IDL "/unknown.idl"};
    const auto byName = findType("elsewhere::Reading", options);
    ASSERT_TRUE(byName);
    EXPECT_EQ(byName->type->scopedName, "elsewhere::Reading");
    EXPECT_EQ(byName->ddsName, "generated::dds_::elsewhere::Reading");
    EXPECT_EQ(findType("generated::dds_::elsewhere::Reading", options)->ddsName, byName->ddsName);
    EXPECT_EQ(findType("elsewhere::dds_::Reading_", options)->ddsName, "elsewhere::dds_::Reading_");
    options.name = "elsewhere::Reading";
    EXPECT_EQ(findType("Other", options)->ddsName, "Other");
}

TEST(TypeSourceTest, SaysWhichTypesADefinitionHas)
{
    TypeOptions options;
    options.files = {PLEX_TEST_IDL "/unknown.idl"};
    try {
        findType("elsewhere::Readin", options);
        FAIL() << "it is found";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), ExitCode::NotFound);
        EXPECT_THAT(failure.what(), HasSubstr("did you mean \"elsewhere::Reading\"?"));
        EXPECT_THAT(failure.what(), HasSubstr("--type"));
    }
}

} // namespace

} // namespace ovra::plex::tool
