// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

namespace plex::test
{

namespace
{

using testing::ElementsAre;

struct Calculation {
    std::string type;
    std::string expression;
    std::string value;

    friend std::ostream& operator<<(std::ostream& out, const Calculation& calculation)
    {
        return out << calculation.type << ' ' << calculation.value;
    }
};

class Calculations : public testing::TestWithParam<Calculation>
{
};

TEST_P(Calculations, HaveTheirValue)
{
    EXPECT_EQ(valueOf(GetParam().type, GetParam().expression), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Expressions, Calculations,
    testing::Values(Calculation{"long", "1 + 2 * 3", "7"}, Calculation{"long", "(1 + 2) * 3", "9"},
                    Calculation{"long", "-7 / 2", "-3"}, Calculation{"long", "-7 % 4", "-3"},
                    Calculation{"long", "10 - 4 - 3", "3"}, Calculation{"long", "1 | 6 ^ 3 & 5", "7"},
                    Calculation{"long", "1 << 4 >> 2", "4"}, Calculation{"long", "1 + 1 << 2", "8"},
                    Calculation{"long", "-2147483648", "-2147483648"}, Calculation{"long", "- - 3", "3"},
                    Calculation{"long", "017 + 0x1F", "46"}, Calculation{"short", "~5", "-6"},
                    Calculation{"octet", "~0x0F", "240"}, Calculation{"uint16", "~0", "65535"},
                    Calculation{"unsigned long long", "~0", "18446744073709551615"},
                    Calculation{"unsigned long long", "0xFFFFFFFFFFFFFFFF", "18446744073709551615"},
                    Calculation{"long long", "-9223372036854775808", "-9223372036854775808"},
                    Calculation{"int8", "-128", "-128"}, Calculation{"double", "1.5 * 2 + .5", "3.5"},
                    Calculation{"double", "1", "1.0"}, Calculation{"double", "-1e-3", "-0.001"},
                    Calculation{"double", "1e-400", "0.0"}, Calculation{"float", "7 / 2.", "3.5"},
                    Calculation{"float", "3.4028235e38", "3.4028234663852886e+38"},
                    Calculation{"float", "-3.4028235e38", "-3.4028234663852886e+38"},
                    Calculation{"float", "1e-50", "0.0"}, Calculation{"boolean", "TRUE", "TRUE"},
                    Calculation{"char", "'a'", "'a'"}, Calculation{"char", "'\\x41'", "'A'"},
                    Calculation{"char", "'\\101'", "'A'"}, Calculation{"char", "'\\''", "'\\''"},
                    Calculation{"wchar", "L'\u00e4'", "L'\u00e4'"},
                    Calculation{"wchar", "L'\\u00e4'", "L'\u00e4'"},
                    Calculation{"string", "\"a\" \"b\"", "\"ab\""},
                    Calculation{"string", "\"\\n\\\"\"", "\"\\012\\\"\""},
                    Calculation{"wstring", "L\"\\u00e4\"", "\"\u00e4\""}),
    [](const auto& calculation) { return "Number" + std::to_string(calculation.index); });

TEST(Expressions, KnowConstantsEnumeratorsAndFlags)
{
    const std::string before =
        "module m { const short N = 4; enum E { A, B }; }; bitmask F { F0, @position(5) F5 };";
    EXPECT_EQ(valueOf("long", "::m::N * 2", before), "8");
    EXPECT_EQ(valueOf("m::E", "m::B", before), "B");
    EXPECT_EQ(valueOf("m::E", "m::E::A", before), "A");
    EXPECT_EQ(valueOf("m::E", "B", before), "B");
    EXPECT_EQ(valueOf("F", "F0 | F5", before), "33");
}

TEST(Expressions, LookThroughAliases)
{
    EXPECT_EQ(valueOf("Id", "3", "typedef unsigned short Word; typedef Word Id;"), "3");
}

TEST(Expressions, AreGivenUpWhenTheyAreNestedTooDeep)
{
    const std::string deep(100000, '(');
    EXPECT_THAT(complaintsOf("const long A = " + deep + "1;"),
                testing::Contains(testing::HasSubstr("nested more than")));
    EXPECT_THAT(complaintsOf("const long A = " + std::string(100000, '-') + "1;"),
                testing::Contains(testing::HasSubstr("nested more than")));
    EXPECT_THAT(complaintsOf("#if " + deep + "1\n#endif"),
                ElementsAre("1:105: the condition is nested too deep"));
}

TEST(Expressions, EndAtTheFirstClosingAngle)
{
    const Model model =
        modelOf("struct S { sequence<sequence<string<8>, 2>> a; sequence<long, (8 >> 1)> b; };");
    const auto& type = typeIn<StructType>(model, "S");
    EXPECT_EQ(toString(*type.members[0].type), "sequence<sequence<string<8>, 2>>");
    EXPECT_EQ(toString(*type.members[1].type), "sequence<int32, 4>");
}

TEST(Text, IsWellFormedUtf8)
{
    for (const std::string bytes :
         {"\xc0\x80", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80"}) {
        EXPECT_THAT(complaintsOf("const string A = \"" + bytes + "\";"),
                    testing::ElementsAre("1:18: the text is not UTF-8"));
        EXPECT_THAT(complaintsOf("// " + bytes + "\nconst long A = 1;"), testing::IsEmpty());
    }
    for (const std::string bytes :
         {"\xc2\x80", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_EQ(valueOf("string", "\"" + bytes + "\""), "\"" + bytes + "\"");
    }
}

} // namespace

} // namespace plex::test
