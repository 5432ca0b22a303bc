// SPDX-License-Identifier: Apache-2.0
// Nothing that a file holds takes long, much memory or a deep stack.
#include "Idl.hpp"

#include <plex/idl/Generate.hpp>

#include <ctime>

namespace plex::test
{

namespace
{

/// Seconds of the processor that something takes.
template <class Work>
double costOf(const Work& work)
{
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

#ifdef __SANITIZE_ADDRESS__
constexpr double slowness = 10;
#else
constexpr double slowness = 1;
#endif

/// So many structs, of which each but a few contains the one before.
std::string chainedStructs(int count)
{
    std::string text = "module m {\n";
    for (int i = 0; i < count; ++i) {
        const std::string before = i % 50 == 0 ? "long" : "Type" + std::to_string(i - 1);
        text += "/// One of many\n@appendable struct Type" + std::to_string(i) +
                " { @key long id; @unit(\"deg\") @range(min = -90.0, max = 90.0) double alt; ///< angle\n"
                "  sequence<string<32>, 4> names; " +
                before + " x; };\n";
    }
    return text + "};\n";
}

TEST(Limits, ThreeThousandStructsTakeLessThanASecond)
{
    const std::string text = chainedStructs(3000);
    EXPECT_LT(costOf([&text] { EXPECT_EQ(modelOf(text).types.size(), 3000U); }), 1.0 * slowness);
}

TEST(Limits, TwoHundredTopicsAreGeneratedInLessThanASecond)
{
    const Model model = modelOf(chainedStructs(200));
    GenerateOptions options;
    options.topics = TopicSelection::All;
    EXPECT_LT(costOf([&] { EXPECT_GT(generate(model, options).files.size(), 2000U); }), 1.0 * slowness);
}

TEST(Limits, CostGrowsWithTheLengthOfTheText)
{
    const std::string shortText = chainedStructs(1000);
    const std::string longText = chainedStructs(8000);
    const double shortCost = costOf([&shortText] { modelOf(shortText); });
    EXPECT_LT(costOf([&longText] { modelOf(longText); }), 8 * 4 * shortCost + 0.1);
}

TEST(Limits, AFileIsReadNoFurtherThanIsSensible)
{
    const ParseResult endless = parseFile("/dev/zero");
    EXPECT_EQ(toString(endless.diagnostics), "/dev/zero: error: the file is larger than 16 MB\n");
    EXPECT_FALSE(endless.model);
    EXPECT_THAT(complaintsOf("#include \"large.idl\"\nstruct Value { long x; };",
                             optionsWith({{"large.idl", std::string(16'000'001, ' ')}})),
                testing::ElementsAre("large.idl:0:0: the file is larger than 16 MB"));
}

TEST(Limits, LongLinesListsAndNamesAreNoMatter)
{
    std::string text = "enum E { E0";
    for (int i = 1; i < 20000; ++i) {
        text += ", E" + std::to_string(i);
    }
    text += " }; union U switch (E) { ";
    for (int i = 0; i < 20000; ++i) {
        text += "case E" + std::to_string(i) + ": long " + "m" + std::to_string(i) + "; ";
    }
    text += "}; struct " + std::string(100000, 'x') + " { long a; };";
    EXPECT_LT(costOf([&text] { modelOf(text); }), 5.0);
}

TEST(Limits, NestingIsRefusedBeforeTheStackEnds)
{
    const auto isRefused = testing::Contains(testing::HasSubstr("nested more than"));
    std::string modules;
    std::string sequences = "struct S { ";
    for (int i = 0; i < 100000; ++i) {
        modules += "module m { ";
        sequences += "sequence<";
    }
    EXPECT_THAT(complaintsOf(modules), isRefused);
    EXPECT_THAT(complaintsOf(sequences), isRefused);
}

TEST(Limits, ManyModulesInOneAnotherAreFine)
{
    std::string text;
    std::string name;
    for (int i = 0; i < 100; ++i) {
        text += "module m { ";
        name += "m::";
    }
    text += "struct S { long a; }; ";
    for (int i = 0; i < 100; ++i) {
        text += "}; ";
    }
    EXPECT_NE(modelOf(text).findType(name + "S"), nullptr);
}

TEST(Limits, EachPrefixOfAFileHasAnOutcome)
{
    const std::string text = "#define N 3\n/// x\nmodule m { enum E { @value(1) A, B }; @final struct S { "
                             "@key @id(2) sequence<string<N>, 2> a[N]; "
                             "@optional E e; }; union U switch (E) { case A: long a; default: S s; }; "
                             "bitset T { bitfield<3, octet> a; }; const string X = \"\\x41\" \"b\"; };";
    for (std::size_t length = 0; length < text.size(); ++length) {
        const ParseResult result = parseText(text.substr(0, length), "test.idl");
        EXPECT_EQ(result.model.has_value(), result.diagnostics.errors() == 0) << length;
    }
}

} // namespace

} // namespace plex::test
