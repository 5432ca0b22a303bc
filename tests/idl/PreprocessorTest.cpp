// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

namespace plex::test
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> namesIn(const Model& model)
{
    std::vector<std::string> names;
    for (const NamedType* const type : model.types) {
        names.push_back(type->name);
    }
    return names;
}

TEST(Includes, AreSearchedBesideTheFileThenInTheFoldersGiven)
{
    ParseOptions options = optionsWith({{"sub/a.idl", "#include \"b.idl\"\nstruct A { long a; };"},
                                        {"sub/b.idl", "struct B { long b; };"},
                                        {"one/c.idl", "struct C { long c; };"},
                                        {"two/c.idl", "struct Wrong { long c; };"}});
    options.includeDirectories = {"one", "two"};
    const Model model = modelOf("#include \"sub/a.idl\"\n#include <c.idl>\n", options);
    EXPECT_THAT(namesIn(model), ElementsAre("B", "A", "C"));
}

TEST(Includes, MarkWhatTheyBring)
{
    const Model model =
        modelOf("#include \"a.idl\"\nstruct B { A a; };", optionsWith({{"a.idl", "struct A { long a; };"}}));
    EXPECT_TRUE(typeIn<StructType>(model, "A").included);
    EXPECT_FALSE(typeIn<StructType>(model, "B").included);
    EXPECT_EQ(model.files.size(), 2U);
    EXPECT_EQ(model.files[0].path, "test.idl");
    EXPECT_EQ(model.files[1].path, "a.idl");
    EXPECT_TRUE(model.files[1].included);
}

TEST(Includes, NameTheFileThatIsWrong)
{
    EXPECT_THAT(complaintsOf("#include \"a.idl\"\n", optionsWith({{"a.idl", "\nstruct A { B b; };"}})),
                ElementsAre("a.idl:2:12: unknown type \"B\""));
}

TEST(Includes, MayGoInACircleWhenTheyAreGuarded)
{
    const Files files{
        {"a.idl", "#ifndef GUARD\n#define GUARD\n#include \"test.idl\"\nstruct A { long a; };\n#endif"},
        {"test.idl", "#include \"a.idl\""}};
    EXPECT_THAT(complaintsOf("#include \"a.idl\"", optionsWith(files)), IsEmpty());
    EXPECT_THAT(complaintsOf("#pragma once\n#include \"test.idl\"\n#include \"b.idl\"",
                             optionsWith({{"b.idl", "#pragma once\n#include \"b.idl\""}})),
                IsEmpty());
}

TEST(Includes, ThatMultiplyAreGivenUp)
{
    const auto complaints = complaintsOf(
        "#include \"a.idl\"", optionsWith({{"a.idl", "#include \"a.idl\"\n#include \"a.idl\"\n"}}));
    EXPECT_THAT(complaints, ElementsAre(HasSubstr("include one another more than 64 deep")));
}

TEST(Macros, StandForWhatTheyAreDefinedAs)
{
    const Model model = modelOf("#define N (M + 1)\n#define M 2\nconst long VALUE = N * 2;");
    EXPECT_EQ(toString(model.findConstant("VALUE")->value), "6");
}

TEST(Macros, MayStandForTextThatLooksLikeAComment)
{
    const Model model =
        modelOf("#define GLOB \"src/*.idl\"\n#define URL \"http://a\" // \"/*\n#define MARK '\"'\n"
                "const string FILES = GLOB;\nconst string PAGE = URL;\nconst char C = MARK; /**/");
    EXPECT_EQ(toString(model.findConstant("FILES")->value), "\"src/*.idl\"");
    EXPECT_EQ(toString(model.findConstant("PAGE")->value), "\"http://a\"");
    EXPECT_EQ(toString(model.findConstant("C")->value), "'\"'");
    EXPECT_THAT(complaintsOf("#if 0\n#error don't /* close\n*/\n#endif"), IsEmpty());
}

TEST(Macros, ComeFromTheCommandLine)
{
    ParseOptions options = optionsWith({});
    options.definitions = {"A", "B=7"};
    const Model model = modelOf("#if A == 1\nconst long VALUE = B;\n#endif", options);
    EXPECT_EQ(toString(model.findConstant("VALUE")->value), "7");
    options.definitions = {"1A=2"};
    EXPECT_THAT(complaintsOf("", options), ElementsAre(HasSubstr("\"1A=2\" is no definition")));
}

TEST(Macros, DoNotExpandInThemselves)
{
    EXPECT_THAT(complaintsOf("#define A B\n#define B A\nconst long C = A;"),
                ElementsAre("3:16: unknown value \"A\""));
}

TEST(Macros, ThatMultiplyAreGivenUp)
{
    std::string text = "#define A0 1 + 1\n";
    for (int i = 1; i < 40; ++i) {
        const std::string before = "A" + std::to_string(i - 1);
        text += "#define A" + std::to_string(i) + " " + before + " + " + before + "\n";
    }
    EXPECT_THAT(complaintsOf(text + "const long A = A39;"),
                testing::Contains(HasSubstr("macros expand to too much")));
}

TEST(Macros, ThatChangeAreWarnedOf)
{
    EXPECT_THAT(complaintsOf("#define A 1\n#define A 1\n#define A 2\n"),
                ElementsAre("3:9: the macro A gets another meaning"));
}

struct Condition {
    std::string text;
    bool holds;

    friend std::ostream& operator<<(std::ostream& out, const Condition& condition)
    {
        return out << (condition.holds ? "holds" : "does not hold");
    }
};

class Conditions : public testing::TestWithParam<Condition>
{
};

TEST_P(Conditions, ChooseWhatIsRead)
{
    const Model model = modelOf("#define TWO 2\n#if " + GetParam().text +
                                "\nstruct Yes { long a; };\n#else\nstruct No { long a; };\n#endif");
    EXPECT_THAT(namesIn(model), ElementsAre(GetParam().holds ? "Yes" : "No"));
}

INSTANTIATE_TEST_SUITE_P(
    Preprocessor, Conditions,
    testing::Values(Condition{"1", true}, Condition{"0", false}, Condition{"MISSING", false},
                    Condition{"defined TWO && !defined(MISSING)", true}, Condition{"TWO * 3 == 6", true},
                    Condition{"1 + 2 * 3 == 7", true}, Condition{"-1 < 0 && ~0 == -1", true},
                    Condition{"1 << 3 != 8", false}, Condition{"(0 || 1) && 0", false},
                    Condition{"0x10 >= 16", true}, Condition{"7 / 2 == 3 && 7 % 4 == 3", true},
                    Condition{"6 & 3 | 8 ^ 1", true}, Condition{"8 >> 3 <= 0", false},
                    Condition{"TWO == 2 ? 0 : 1", false}, Condition{"0 ? 0 : TWO ? 1 : 0", true},
                    Condition{"'a' == 97 && '\\n' == 10", true},
                    Condition{"0x10UL == 16l && TWO >= 2u", true}, Condition{"MISSING && 1 / MISSING", false},
                    Condition{"TWO || 1 << 64", true}, Condition{"TWO ? 1 : 1 % 0", true}),
    [](const auto& condition) { return "Number" + std::to_string(condition.index); });

TEST(InactiveText, LeavesOutWhatMakesNoSense)
{
    EXPECT_THAT(complaintsOf("#if 0\nit's /* not \" closed */ #\n#error no\n#include \"nothing\"\n#endif"),
                IsEmpty());
}

} // namespace

} // namespace plex::test
