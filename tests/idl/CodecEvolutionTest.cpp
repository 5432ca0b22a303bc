// SPDX-License-Identifier: Apache-2.0
// Values of one version of a type, read as another.
#include "Codec.hpp"

namespace plex::test
{

namespace
{

/// What a reader with one definition makes of what a writer with another has written.
std::string readAs(const std::string& reader, const std::string& writer, const std::string& json,
                   XcdrVersion version)
{
    const Payload payload = payloadFrom(modelOf(writer), json, {version, std::endian::little, false});
    return jsonOf(reader, payload);
}

std::string older(const std::string& annotation)
{
    return annotation + " struct T { @id(1) octet a; };";
}

std::string newer(const std::string& annotation)
{
    return "enum E { A, @default_literal B }; enum K { X, Y }; @final struct N { long n; };"
           "@final union U switch (K) { case X: long x; case Y: octet y; };" +
           annotation +
           " struct T { @id(1) octet a; @id(2) @default(7) long b; @id(3) string s; @id(4) @optional long o; "
           "@id(5) E e; @id(6) N n; @id(7) U u; @id(8) short m[2][2]; @id(9) octet k[2]; "
           "@id(10) sequence<long> q; @id(11) @default(\"hi\") string h; @id(12) @default(0.5) float f; };";
}

constexpr const char* defaults =
    R"({"a":3,"b":7,"s":"","o":null,"e":"B","n":{"n":0},"u":{"discriminator":"X","member":0},)"
    R"("m":[[0,0],[0,0]],"k":[0,0],"q":[],"h":"hi","f":0.5})";

TEST(CodecEvolution, AppendedMembersThatAreMissingHaveTheirDefaults)
{
    EXPECT_EQ(readAs(newer("@appendable"), older("@appendable"), R"({"a":3})", XcdrVersion::Xcdr2), defaults);
    EXPECT_EQ(readAs(newer("@mutable"), older("@mutable"), R"({"a":3})", XcdrVersion::Xcdr2), defaults);
    EXPECT_EQ(readAs(newer("@mutable"), older("@mutable"), R"({"a":3})", XcdrVersion::Xcdr1), defaults);
}

TEST(CodecEvolution, AppendedMembersThatAreNotKnownAreSkipped)
{
    EXPECT_EQ(readAs(older("@appendable"), newer("@appendable"), defaults, XcdrVersion::Xcdr2), R"({"a":3})");
    EXPECT_EQ(readAs(older("@mutable"), newer("@mutable"), defaults, XcdrVersion::Xcdr2), R"({"a":3})");
    EXPECT_EQ(readAs(older("@mutable"), newer("@mutable"), defaults, XcdrVersion::Xcdr1), R"({"a":3})");
}

TEST(CodecEvolution, ElementsOfListsEvolve)
{
    const std::string one = "@appendable struct I { octet a; }; @final struct T { sequence<I> q; octet z; };";
    const std::string two =
        "@appendable struct I { octet a; long b; }; @final struct T { sequence<I> q; octet z; };";
    EXPECT_EQ(readAs(two, one, R"({"q":[{"a":1},{"a":2}],"z":9})", XcdrVersion::Xcdr2),
              R"({"q":[{"a":1,"b":0},{"a":2,"b":0}],"z":9})");
    EXPECT_EQ(readAs(one, two, R"({"q":[{"a":1,"b":5},{"a":2,"b":6}],"z":9})", XcdrVersion::Xcdr2),
              R"({"q":[{"a":1},{"a":2}],"z":9})");
}

TEST(CodecEvolution, PlainPayloadsMayHaveMoreAtTheirEndsUnlessTheirTypeIsFinal)
{
    const std::string one = " struct T { octet a; };";
    const std::string two = " struct T { octet a; long b; };";
    EXPECT_EQ(
        faultIn([&] { readAs("@appendable" + two, "@appendable" + one, R"({"a":1})", XcdrVersion::Xcdr1); }),
        "b: 4 bytes are needed, 0 are left (offset 5)");
    EXPECT_EQ(readAs("@appendable" + one, "@appendable" + two, R"({"a":1,"b":2})", XcdrVersion::Xcdr1),
              R"({"a":1})");
    EXPECT_EQ(
        faultIn([&] { readAs("@final" + one, "@final" + two, R"({"a":1,"b":2})", XcdrVersion::Xcdr1); }),
        "7 bytes follow the value (offset 5)");
}

TEST(CodecEvolution, MembersOfMutableTypesMove)
{
    EXPECT_EQ(readAs("@mutable struct T { @id(2) octet b; @id(1) octet a; };",
                     "@mutable struct T { @id(1) octet a; @id(3) long c; @id(2) octet b; };",
                     R"({"a":1,"c":5,"b":2})", XcdrVersion::Xcdr1),
              R"({"b":2,"a":1})");
}

TEST(CodecEvolution, MembersThatMustBeUnderstoodAre)
{
    const std::string writer = "@mutable struct T { @id(1) octet a; @id(2) @must_understand octet b; };";
    for (const XcdrVersion version : {XcdrVersion::Xcdr1, XcdrVersion::Xcdr2}) {
        EXPECT_THAT(faultIn([&] { readAs(older("@mutable"), writer, R"({"a":1,"b":2})", version); }),
                    testing::StartsWith("member 2 must be understood, and is not known"));
    }
}

TEST(CodecEvolution, CasesThatAreNotKnownAreRefused)
{
    const std::string one =
        "@appendable union U switch (long) { case 1: octet a; }; struct T { U u; octet z; };";
    const std::string two = "@appendable union U switch (long) { case 1: octet a; case 2: string b; };"
                            "struct T { U u; octet z; };";
    EXPECT_EQ(faultIn([&] {
                  readAs(one, two, R"({"u":{"discriminator":2,"member":"x"},"z":9})", XcdrVersion::Xcdr2);
              }),
              "u.discriminator: the discriminator 2 selects no case of U (offset 16)");
}

/// An array that is missing may be larger than any payload.
TEST(CodecEvolution, LargeDefaultsTakeNoMemory)
{
    const Model model = modelOf("@appendable struct T { octet a; long b[100000000]; };");
    EXPECT_NO_THROW(decode(typeT(model), payloadOf(0x08, "00000001 05")));
    EXPECT_EQ(faultIn([&] { jsonOf(model, payloadOf(0x08, "00000001 05")); }),
              "b[4194301]: the text takes more than 4194304 values");
}

TEST(CodecEvolution, DefaultsOfUnions)
{
    const auto defaultOf = [](const std::string& cases) {
        return jsonOf("@final union U switch (boolean) {" + cases + "}; @appendable struct T { U u; };",
                      payloadOf(0x08, "00000000"));
    };
    EXPECT_EQ(defaultOf("default: octet o;"), R"({"u":{"discriminator":false,"member":0}})");
    EXPECT_EQ(defaultOf("case FALSE: octet o;"), R"({"u":{"discriminator":false,"member":0}})");
    EXPECT_EQ(defaultOf("case TRUE: octet o;"), R"({"u":{"discriminator":false}})");
    EXPECT_EQ(defaultOf("case TRUE: octet o; case FALSE: @default(4) long l;"),
              R"({"u":{"discriminator":false,"member":4}})");
    EXPECT_EQ(defaultOf("case FALSE: @default(4) long l; case TRUE: octet o;"),
              R"({"u":{"discriminator":false,"member":4}})");
}

} // namespace

} // namespace plex::test
