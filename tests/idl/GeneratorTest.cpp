// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <plex/idl/Generate.hpp>

#include <generator/Names.hpp>
#include <generator/Template.hpp>

namespace plex::test
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The text of a file that is generated from a definition.
std::string generated(const std::string& path, const std::string& definition,
                      const GenerateOptions& options = {})
{
    const Model model = modelOf(definition);
    const Generation generation = generate(model, options);
    EXPECT_EQ(generation.diagnostics.errors(), 0U) << toString(generation.diagnostics);
    for (const GeneratedFile& file : generation.files) {
        if (file.path == path) {
            return file.text;
        }
    }
    return "there is no such file";
}

/// What hinders that something is generated, as "line:column: message".
std::vector<std::string> refusals(const std::string& definition,
                                  const ParseOptions& parsing = optionsWith({}))
{
    const Model model = modelOf(definition, parsing);
    const Generation generation = generate(model);
    EXPECT_TRUE(generation.files.empty());
    std::vector<std::string> messages;
    for (const Diagnostic& diagnostic : generation.diagnostics.all()) {
        messages.push_back(std::to_string(diagnostic.line) + ":" + std::to_string(diagnostic.column) + ": " +
                           diagnostic.message);
    }
    return messages;
}

TEST(GeneratedNames, AreThoseOfTheDefinition)
{
    EXPECT_EQ(accessorName("alt"), "Alt");
    EXPECT_EQ(accessorName("windSpeed"), "WindSpeed");
    EXPECT_EQ(accessorName("wind_speed"), "WindSpeed");
    EXPECT_EQ(accessorName("Wind__speed2"), "WindSpeed2");
    EXPECT_EQ(accessorName("class_"), "Class_");
    EXPECT_EQ(accessorName("X"), "X");
}

TEST(GeneratedNames, AvoidKeywordsAndMacros)
{
    EXPECT_EQ(cppName("alt"), "alt");
    EXPECT_EQ(cppName("class"), "class_");
    EXPECT_EQ(cppName("errno"), "errno_");
    EXPECT_EQ(cppName("EINVAL"), "EINVAL_");
    EXPECT_EQ(cppName("std"), "std");
    EXPECT_EQ(declaredName("std"), "std_");
    EXPECT_EQ(declaredName("isKnown"), "isKnown_");
    EXPECT_EQ(declaredName("class"), "class_");
    EXPECT_EQ(declaredName("time"), "time");
}

TEST(GeneratedNames, AvoidWhatIsDeclaredOutsideOfNamespaces)
{
    const Model model = modelOf(
        "module time { module time { struct A { long a; }; module std { struct B { long b; }; }; }; };");
    EXPECT_EQ(qualifiedName(*model.findType("time::time::A")), "::time_::time::A");
    EXPECT_EQ(qualifiedName(*model.findType("time::time::std::B")), "::time_::time::std_::B");
    EXPECT_EQ(symbolOf(*model.findType("time::time::A")->module), "time__time");
}

TEST(GeneratedNames, GetAnUnderscoreWhereTheyAreTaken)
{
    NameScope names{"taken"};
    EXPECT_EQ(names.take("taken"), "taken_");
    EXPECT_EQ(names.take("taken"), "taken__");
    EXPECT_EQ(names.take("free"), "free");
}

TEST(Template, ReplacesWhatStandsBetweenMarks)
{
    EXPECT_EQ(filled("@a@ and @b@@a@", {{"a", "1"}, {"b", "@a@"}}), "1 and @a@1");
    EXPECT_EQ(filled("@throws nothing @", {}), "@throws nothing @");
    EXPECT_THROW(filled("@a@", {}), std::logic_error);
}

TEST(Comment, IsWrappedAndKeepsLinesApart)
{
    EXPECT_EQ(comment(""), "");
    EXPECT_EQ(comment("one\n\ntwo"), "/// one\n///\n/// two\n");
    EXPECT_EQ(comment("one", 4), "    /// one\n");
    const std::string word(60, 'x');
    EXPECT_EQ(comment(word + " " + word), "/// " + word + "\n/// " + word + "\n");
    const std::string longWord(200, 'x');
    EXPECT_EQ(comment("a " + longWord + " b"), "/// a\n/// " + longWord + "\n/// b\n");
}

TEST(Comment, DoesNotContinueOnTheNextLine)
{
    EXPECT_EQ(comment("a path: C:\\\n\\"), "/// a path: C:\n///\n");
}

TEST(GeneratedValueType, HasASlotForReadingAndOneForWritingAMember)
{
    const std::string text = generated("include/m/T.hpp", R"(
module m {
  /// A thing.
  struct T { boolean b; octet o; char c; int8 i; long long l; unsigned long u; float f; @key short wind_speed; };
};)");
    EXPECT_THAT(text, HasSubstr("virtual bool getB() const = 0;\n    virtual void setB(bool b) = 0;\n"));
    EXPECT_THAT(text, HasSubstr("virtual std::uint8_t getO() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual void setC(char c) = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual std::int8_t getI() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual std::int64_t getL() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual std::uint32_t getU() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual float getF() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual void setWindSpeed(std::int16_t wind_speed) = 0;"));
    EXPECT_THAT(text, HasSubstr("/// A thing.\n/// The key is made of wind_speed.\nclass"));
    EXPECT_THAT(text, HasSubstr("#include <cstdint>\n"));
}

TEST(GeneratedDocumentation, SaysUnitRangeKeyAndDefault)
{
    const std::string text = generated("include/m/T.hpp", R"(
module m { struct T {
    @unit("deg") @min(-90.0) @max(90.0) double alt; ///< altitude
    @key @unit("deg") @range(min = 0.0, max = 360.0) @default(180.0) double az;
    @min(3) long low;
    long none;
    /// By default it is 5.
    @default(5) long own;
}; };)");
    EXPECT_THAT(text, HasSubstr("    /// altitude\n    /// In deg; from -90.0 to 90.0; default 0.\n"));
    EXPECT_THAT(text, HasSubstr("    /// Key; in deg; from 0.0 to 360.0; default 180.0.\n"));
    EXPECT_THAT(text, HasSubstr("    /// At least 3; default 0.\n"));
    EXPECT_THAT(text, HasSubstr("    /// Default 0.\n    virtual std::int32_t getNone"));
    EXPECT_THAT(text, HasSubstr("    /// By default it is 5.\n    virtual std::int32_t getOwn"));
}

TEST(GeneratedWireType, StartsWithTheDefaults)
{
    const std::string text = generated("dds/T.hpp", R"(
module m { struct T {
    @default(7) long a; @default(TRUE) boolean b; @default('\'') char c; @default(1.5) float d;
    @default(-9223372036854775808) long long e; @default(1.0e300) double f; @default(18446744073709551615) unsigned long long g;
    long h; float i; char j;
}; };)");
    EXPECT_THAT(text, HasSubstr("std::int32_t a_ = 7;\n"));
    EXPECT_THAT(text, HasSubstr("bool b_ = true;\n"));
    EXPECT_THAT(text, HasSubstr("char c_ = static_cast<char>(39);\n"));
    EXPECT_THAT(text, HasSubstr("float d_ = 1.5F;\n"));
    EXPECT_THAT(text, HasSubstr("std::int64_t e_ = std::numeric_limits<std::int64_t>::min();\n"));
    EXPECT_THAT(text, HasSubstr("#include <limits>\n"));
    EXPECT_THAT(text, HasSubstr("double f_ = 1e+300;\n"));
    EXPECT_THAT(text, HasSubstr("std::uint64_t g_ = 18446744073709551615U;\n"));
    EXPECT_THAT(text, HasSubstr("std::int32_t h_ = 0;\n    float i_ = 0.0F;\n    char j_ = '\\0';\n"));
}

TEST(GeneratedMembers, HaveNamesOfTheirOwn)
{
    const std::string text =
        generated("dds/T.hpp", "module m { struct T { long class; long class_; long sample; long X; }; };");
    EXPECT_THAT(text, HasSubstr("class__() const"));
    EXPECT_THAT(text, HasSubstr("class_() const"));
    EXPECT_THAT(text, HasSubstr(" sample__ = 0;"));
    EXPECT_THAT(text, HasSubstr("X() const"));
}

TEST(GeneratedValueType, HandsOverEachKindOfMemberInItsWay)
{
    const std::string text = generated("include/m/T.hpp", R"(
module m {
  struct V { long l; };
  @topic struct T {
    string s; sequence<double, 3> q; double a[2]; V v;
    @optional long ol; @optional string os; @optional sequence<long> oq; @optional V ov;
  };
};)");
    EXPECT_THAT(
        text,
        HasSubstr(
            "virtual std::string_view getS() const = 0;\n    virtual void setS(std::string_view s) = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual ovra::plex::Span<const double> getQ() const = 0;\n"
                                "    virtual ovra::plex::Span<double> resizeQ(std::size_t size) = 0;\n"
                                "    virtual void setQ(ovra::plex::Span<const double> q) = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual const std::array<double, 2>& getA() const = 0;\n"
                                "    virtual std::array<double, 2>& editA() = 0;\n"
                                "    virtual void setA(const std::array<double, 2>& a) = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual const ::m::values::V& getV() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual std::optional<std::int32_t> getOl() const = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual void setOs(std::optional<std::string_view> os) = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual const std::vector<std::int32_t>* getOq() const = 0;\n"
                                "    virtual std::vector<std::int32_t>& makeOq() = 0;\n"
                                "    virtual void resetOq() = 0;"));
    EXPECT_THAT(text, HasSubstr("virtual ::m::values::V& makeOv() = 0;"));
}

TEST(GeneratedFields, CarryIdsBoundsAndWhatMustBeUnderstood)
{
    const std::string text = generated("dds/TCdr.cpp", R"(
module m {
  typedef string<4> Short;
  @mutable struct T {
    @id(7) sequence<Short, 3> words; @must_understand long vital; @key @id(2) Short table[2][3]; @default(9) long nine;
  };
};)");
    EXPECT_THAT(text, HasSubstr("visit(Field<7, List<Text<4>, 3>>(), value.words());\n"
                                "        visit(Field<8, Any, true>(), value.vital());\n"
                                "        visit(Field<2, Each<Each<Text<4>>>>(), value.table());\n"
                                "        visit(Field<3>(), value.nine(), 9);\n"));
    EXPECT_THAT(text, HasSubstr("forEachKey(Value& value, const Visit& visit)\n    {\n"
                                "        visit(Field<2, Each<Each<Text<4>>>>(), value.table());\n    }"));
}

TEST(GeneratedFields, SayWhichListsHaveADelimiter)
{
    GenerateOptions options;
    options.delimitsEnumerations = true;
    const std::string text = generated("dds/TCdr.cpp", R"(
module m {
  enum E { A }; typedef E Row[2];
  struct T { sequence<E> a; Row b; sequence<E, 3> c; sequence<Row> d; sequence<long> e; @must_understand E f[2]; };
};)",
                                       options);
    EXPECT_THAT(text, HasSubstr("visit(Field<0, Delimited<Any>>(), value.a());\n"
                                "        visit(Field<1, Delimited<Any>>(), value.b());\n"
                                "        visit(Field<2, Delimited<List<Any, 3>>>(), value.c());\n"
                                "        visit(Field<3, List<Delimited<Any>, 0>>(), value.d());\n"
                                "        visit(Field<4>(), value.e());\n"
                                "        visit(Field<5, Delimited<Any>, true>(), value.f());\n"));
}

TEST(GeneratedFields, OfIncludedTypesAreThereAsWell)
{
    const ParseOptions parsing =
        optionsWith({{"part.idl", "module other { @final struct Part { long l; }; };"}});
    const Model model = modelOf("#include \"part.idl\"\nmodule m { struct T { other::Part p; }; };", parsing);
    std::map<std::string, std::string> files;
    for (const GeneratedFile& file : generate(model).files) {
        files[file.path] = file.text;
    }
    EXPECT_THAT(files.at("dds/ValueFields.hpp"), HasSubstr("struct Fields<::other::values::Part>"));
    EXPECT_THAT(files.at("include/m/T.hpp"), HasSubstr("#include <other/Values.hpp>"));
    EXPECT_FALSE(files.contains("include/other/Values.hpp"));
}

TEST(GeneratedTopicDataType, NamesTheTypeAndItsLargestSizes)
{
    const std::string definition =
        "module a { module b { struct T { @key octet o; @key double d; long l; }; }; };";
    EXPECT_THAT(generated("dds/b/TPubSubType.cpp", definition),
                HasSubstr("PubSubType({\"generated::dds_::a::b::T\", 24, true, 16})"));
    GenerateOptions options;
    options.typeName = "{module}::{type}_";
    EXPECT_THAT(generated("dds/b/TPubSubType.cpp", definition, options), HasSubstr("\"a::b::T_\""));
}

TEST(GeneratedTopicDataType, SaysHowLargeAKeyIsToTheByte)
{
    const auto largestKey = [](const std::string& members) {
        const std::string text =
            generated("dds/TPubSubType.cpp", "module m { enum E { A }; struct P { long l; @key octet k; };"
                                             "union U switch (octet) { case 1: long l; case 2: octet o; };"
                                             "@topic struct T {" +
                                                 members + "}; };");
        return text.substr(text.find("true, ") + 6, text.find("})") - text.find("true, ") - 6);
    };
    EXPECT_EQ(largestKey("@key octet uuid[16];"), "16");
    EXPECT_EQ(largestKey("@key short s; @key E e[3];"), "16");
    EXPECT_EQ(largestKey("@key octet o; @key double d;"), "16");
    EXPECT_EQ(largestKey("@key P p[3]; @key octet o;"), "4");
    EXPECT_EQ(largestKey("@key U u;"), "8");
    EXPECT_EQ(largestKey("@key string<11> s;"), "16");
    EXPECT_EQ(largestKey("@key sequence<long, 3> s;"), "16");
    EXPECT_EQ(largestKey("@key octet o; string s;"), "1, false");
    EXPECT_EQ(largestKey("@key string s;"), "261, false, false");
}

TEST(GeneratedFactories, CarryAllModulesInTheirSymbols)
{
    const std::string definition = "module a { module b { struct T { long l; }; struct U { long l; }; }; };";
    const std::string text = generated("dds/b/Factories.hpp", definition);
    EXPECT_THAT(text, HasSubstr("libplex-dds-a_b"));
    EXPECT_THAT(text, HasSubstr("a::b::U* generated_dds_DataEntity_a_b_U();"));
    EXPECT_THAT(generated("dds/b/TFactories.cpp", definition), HasSubstr("generated_dds_Publisher_a_b_T("));
}

TEST(GeneratedDescription, SaysWhatTheTypeIs)
{
    EXPECT_EQ(
        generated(
            "dds/b/TDescription.cpp",
            "module a { module b { @final struct P { @unit(\"\\\"\") long l; }; struct T { P p; }; }; };"),
        R"(// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"

const ovra::plex::ps::TypeDescription* generated_dds_Description_a_b_T()
{
    static constexpr const char* definition =
        "module a {\n"
        "module b {\n"
        "@final struct P {\n"
        "    @id(0) @unit(\"\\\"\") int32 l;\n"
        "};\n"
        "@appendable struct T {\n"
        "    @id(0) ::a::b::P p;\n"
        "};\n"
        "};\n"
        "};\n";
    static constexpr ovra::plex::ps::TypeDescription description{
        1, "generated::dds_::a::b::T", "a::b", "a::b::T", definition, 9435542879414365004U, false, 1};
    return &description;
}
)");
}

TEST(GeneratedShards, HoldEachTopicOnce)
{
    GenerateOptions options;
    options.shards = 2;
    const std::string definition =
        "module m { struct A { long l; }; struct B { long l; }; struct C { long l; }; };";
    const std::string first = generated("dds/shard0.cpp", definition, options);
    EXPECT_THAT(first, HasSubstr("#include \"AFactories.cpp\"\n"));
    EXPECT_THAT(first, HasSubstr("#include \"CAdapter.cpp\"\n"));
    EXPECT_THAT(first, Not(HasSubstr("\"B")));
    EXPECT_THAT(generated("dds/shard1.cpp", definition, options), HasSubstr("#include \"B.cpp\"\n"));
    EXPECT_THAT(generated("src/shard0.cpp", definition, options), HasSubstr("#include \"C.cpp\"\n"));
}

TEST(GeneratedFiles, AreThoseOfTheFileThatIsNamed)
{
    const ParseOptions parsing = optionsWith({{"part.idl", "module m { struct Part { long l; }; };"}});
    const Model model = modelOf("#include \"part.idl\"\nmodule m { struct T { long l; }; };", parsing);
    for (const GeneratedFile& file : generate(model).files) {
        EXPECT_THAT(file.path, Not(HasSubstr("Part")));
    }
}

/// What is warned of, as "line:column".
std::vector<std::string> warnings(const std::string& definition, const GenerateOptions& options = {})
{
    const Model model = modelOf(definition);
    const Generation generation = generate(model, options);
    EXPECT_FALSE(generation.files.empty());
    std::vector<std::string> places;
    for (const Diagnostic& diagnostic : generation.diagnostics.all()) {
        EXPECT_EQ(diagnostic.severity, Severity::Warning);
        EXPECT_NE(diagnostic.hint, "");
        places.push_back(std::to_string(diagnostic.line) + ":" + std::to_string(diagnostic.column));
    }
    return places;
}

TEST(Warnings, AreOfListsOfEnumsAndBitmasks)
{
    const std::string definition =
        R"(module m { enum E { A }; bitmask B { F }; typedef E Row[2]; typedef Row Rows[3];
struct P { E one; sequence<E> list; };
struct T { P p; Row row; Rows rows; sequence<Rows, 2> all; @optional sequence<sequence<B>> more; sequence<P> parts; };
};)";
    EXPECT_THAT(warnings(definition), ElementsAre("2:31", "3:21", "3:31", "3:55", "3:92"));
    GenerateOptions options;
    options.delimitsEnumerations = true;
    EXPECT_THAT(warnings(definition, options), ElementsAre());
    options.delimitsEnumerations = false;
    EXPECT_THAT(warnings(definition, options), ElementsAre());
}

TEST(Warnings, AreOfKeysWhoseHashesDependOnTheVersion)
{
    const auto differs = [](const std::string& members) {
        const std::string definition =
            "module m { struct P { long l; double d; }; union U switch (octet) { case 1: "
            "double d; case 2: octet o; }; @topic struct T {" +
            members + "}; };";
        return !warnings(definition).empty();
    };
    EXPECT_TRUE(differs("@key long a; @key double b;"));
    EXPECT_TRUE(differs("@key octet a; @key int64 b; long c;"));
    EXPECT_TRUE(differs("@key @id(2) double b; @key @id(1) long a;"));
    EXPECT_TRUE(differs("@key string a; @key double b;"));
    EXPECT_TRUE(differs("@key P p;"));
    EXPECT_TRUE(differs("@key U u;"));
    EXPECT_TRUE(differs("@key sequence<double> a;"));
    EXPECT_TRUE(differs("@key sequence<string> a;"));
    EXPECT_TRUE(differs("@key octet a[12]; @key double b;"));
    EXPECT_FALSE(differs("@key double b; @key long a;"));
    EXPECT_FALSE(differs("@key long a; @key long b; @key double c;"));
    EXPECT_FALSE(differs("@key octet a[13]; @key double b;"));
    EXPECT_FALSE(differs("@key string a; @key long b; double c;"));
    EXPECT_FALSE(differs("long a; double b;"));
}

TEST(Warnings, AreNotOfKeysWhoseHashIsChosen)
{
    GenerateOptions options;
    options.keyVersion = XcdrVersion::Xcdr2;
    const std::string definition = "module m { struct T { @key long a; @key double b; }; };";
    EXPECT_THAT(warnings(definition), ElementsAre("1:48"));
    EXPECT_THAT(warnings(definition, options), ElementsAre());
    EXPECT_THAT(generated("dds/TPubSubType.cpp", definition, options),
                HasSubstr("20, true, 12, true, true, eprosima::fastcdr::CdrVersion::XCDRv2})"));
}

TEST(Refusals, AreOfWhatHasNoTopic)
{
    EXPECT_THAT(refusals(""), ElementsAre("0:0: there is no topic"));
    EXPECT_THAT(refusals("module m { enum E { A }; };"), ElementsAre("0:0: there is no topic"));
}

TEST(Refusals, AreOfTopicsThatNoClassCanBeMadeFor)
{
    EXPECT_THAT(refusals("struct T { long l; };"), ElementsAre("1:8: \"T\" is in no module"));
    EXPECT_THAT(refusals("module m { struct clone { long l; }; };"),
                ElementsAre("1:19: a topic can not be called \"clone\""));
}

TEST(Refusals, AreOfTypesWhoseFileIsNotNamed)
{
    const ParseOptions parsing =
        optionsWith({{"parts.idl", "module m { struct P { long l; }; enum E { A }; };"
                                   "module other { struct O { long l; }; };"}});
    const auto refusalsOf = [&parsing](const std::string& member) {
        return refusals("#include \"parts.idl\"\nmodule m { struct T { " + member + " }; };", parsing);
    };
    const std::string sentence = " is declared in parts.idl, which is not among the definitions";
    EXPECT_THAT(refusalsOf("P p;"), ElementsAre("2:25: \"m::P\"" + sentence));
    EXPECT_THAT(refusalsOf("sequence<P> p[2];"), ElementsAre("2:35: \"m::P\"" + sentence));
    EXPECT_THAT(refusalsOf("long l; E e;"), ElementsAre("2:33: \"m::E\"" + sentence));

    const Model model =
        modelOf("#include \"parts.idl\"\nmodule n { struct T { other::O o; m::P p; }; };", parsing);
    EXPECT_EQ(generate(model).diagnostics.errors(), 0U);
}

TEST(Modules, MayBeSeveral)
{
    const std::string definition = "module a { struct S { long l; }; module b { struct T { long l; }; }; };"
                                   "module c { struct S { long l; }; };";
    EXPECT_EQ(generated("dds/modules.txt", definition), "a\na_b\nc\n");
    EXPECT_THAT(generated("include/a/S.hpp", definition), HasSubstr("namespace a\n"));
    EXPECT_THAT(generated("include/a/b/T.hpp", definition), HasSubstr("namespace a::b\n"));
    EXPECT_THAT(generated("include/c/S.hpp", definition), HasSubstr("namespace c\n"));
    EXPECT_THAT(generated("dds/shard0.cpp", definition), HasSubstr("#include \"SFactories.cpp\""));
    EXPECT_THAT(generated("dds/shard0.cpp", definition), HasSubstr("#include \"b/TFactories.cpp\""));
    EXPECT_THAT(generated("dds/shard0.cpp", definition), HasSubstr("#include \"c/SFactories.cpp\""));
}

TEST(Modules, AreLookedUpByTheirNamesInCpp)
{
    const std::string definition = "module a { module std { struct class { long l; }; }; };";
    EXPECT_EQ(generated("dds/modules.txt", definition), "a_std_\n");
    EXPECT_THAT(generated("dds/std/Factories.hpp", definition),
                HasSubstr("generated_dds_DataEntity_a_std__class_()"));
}

TEST(Modules, MayHaveTypesForOthersOnly)
{
    GenerateOptions options;
    options.topics = TopicSelection::None;
    const std::string definition = "module a { struct S { long l; }; enum E { A }; };";
    EXPECT_EQ(generated("dds/modules.txt", definition, options), "");
    EXPECT_THAT(generated("include/a/Values.hpp", definition, options), HasSubstr("using values::S;"));
    EXPECT_THAT(generated("dds/shard0.cpp", definition, options), Not(HasSubstr("#include")));
}

TEST(Warnings, AreOfTryConstructWhichHasNoEffect)
{
    EXPECT_THAT(
        warnings("module m { struct T { @try_construct(TRIM) string<4> s; @try_construct long l; }; };"),
        ElementsAre("1:54", "1:77"));
    EXPECT_THAT(warnings("module m { struct T { @try_construct(DISCARD) long l; }; };"), ElementsAre());
    EXPECT_THAT(
        complaintsOf(
            "union U switch (@try_construct(TRIM) long) { case 1: sequence<@try_construct string> s; };"),
        ElementsAre("1:17: @try_construct has no effect on a discriminator",
                    "1:63: @try_construct has no effect on an element"));
}

TEST(Refusals, AreOfOptionalPartsOfKeys)
{
    const std::string part =
        "module m { struct P { @optional long o; long l; }; struct Q { @key long k; @optional "
        "long o; };\n";
    EXPECT_THAT(refusals(part + "@topic struct T { @key sequence<P> p; @key Q q; }; };"),
                ElementsAre("2:36: \"p\" can not be a key: \"o\" of \"m::P\" is optional"));
    EXPECT_THAT(
        warnings("module m { struct Q { @key long k; @optional long o; }; @topic struct T { @key Q q; }; };"),
        ElementsAre());
}

TEST(Refusals, AreOfValuesThatTakeTooMuchMemory)
{
    EXPECT_THAT(warnings("module m { struct T { octet a[64][1048576]; }; };"), ElementsAre());
    EXPECT_THAT(refusals("module m { struct T { octet a[64][1048576]; octet b; }; };"),
                ElementsAre("1:19: a value of \"m::T\" takes more than 64 MB"));
    EXPECT_THAT(refusals("module m { struct P { double d[1000]; }; struct Q { P p[1000]; }; "
                         "struct T { sequence<Q> q; @optional Q o[10]; }; };"),
                ElementsAre("1:74: a value of \"m::T\" takes more than 64 MB"));
    EXPECT_THAT(refusals("module m { typedef octet A[65536]; typedef A B[65536]; };"),
                ElementsAre("1:46: a value of \"m::B\" takes more than 64 MB"));
}

TEST(Refusals, AreOfTwoMembersWithOneAccessor)
{
    EXPECT_THAT(refusals("module m { struct T { long a_b; long aB; }; };"),
                ElementsAre("1:38: \"aB\" and \"a_b\" would both be read with getAB()"));
}

TEST(Refusals, AreOfTypesThatHaveAPlaceInTheModelOnly)
{
    EXPECT_THAT(refusals("module m { struct T { wstring w; long double d; map<long, long> m; }; };"),
                ElementsAre("1:31: nothing is generated for wstring",
                            "1:46: nothing is generated for long double",
                            "1:65: nothing is generated for map<int32, int32>"));
    EXPECT_THAT(refusals("module m { struct T { sequence<wchar> w; }; };"),
                ElementsAre("1:39: nothing is generated for wchar"));
    EXPECT_THAT(refusals("module m { bitset B { bitfield<3> b; }; struct T { long l; }; };"),
                ElementsAre("1:19: nothing is generated for m::B"));
    EXPECT_THAT(refusals("module m { const wchar W = L'w'; struct T { long l; }; };"),
                ElementsAre("1:24: nothing is generated for wchar"));
}

TEST(Refusals, AreOfTypesThatContainThemselves)
{
    EXPECT_THAT(refusals("module m { struct T; struct T { long l; sequence<T> children; }; };"),
                ElementsAre("1:29: \"T\" contains itself"));
}

TEST(Refusals, AreOfTwoFilesWithOneName)
{
    EXPECT_THAT(refusals("module m { struct A { long l; }; struct ACdr { long l; }; };"),
                ElementsAre("1:41: two files would be called dds/ACdr.hpp"));
    EXPECT_THAT(refusals("module m { struct Values { long l; }; };"),
                ElementsAre("1:19: two files would be called include/m/Values.hpp"));
}

TEST(Refusals, AreOfTwoTopicsWithOneSymbol)
{
    EXPECT_THAT(refusals("module m { struct a_T { long l; }; module a { struct T { long l; }; }; };"),
                ElementsAre("1:54: two topics would be exported as m_a_T"));
}

TEST(Refusals, AreOfTwoNamesThatAreOneInCpp)
{
    EXPECT_THAT(refusals("module m { enum E { int, int_ }; struct class { E e; }; const long class_ = 1; };"),
                ElementsAre("1:26: \"int\" and \"int_\" would both be called int_",
                            "1:68: \"class\" and \"class_\" would both be called class_"));
}

} // namespace

} // namespace plex::test
