// SPDX-License-Identifier: Apache-2.0
// Payloads laid out by hand after DDS-XTypes 1.3, 7.4, for each construct, in both versions and both byte
// orders.
#include "Codec.hpp"

namespace plex::test
{

namespace
{

struct Example {
    std::string name;
    std::string idl;
    std::string json;
    std::string version1;
    std::string version2;
};

std::ostream& operator<<(std::ostream& out, const Example& example)
{
    return out << example.name;
}

const std::vector<Example>& examples()
{
    static const std::string allOfMutable =
        "@appendable struct I { octet a; };"
        "@mutable struct T { @id(1) octet a; @id(2) short s; @id(3) long l; @id(0xFFFFFF) double d;"
        "@must_understand @id(5) string t; @id(6) sequence<long> q; @id(7) sequence<double> r;"
        "@id(8) sequence<octet> o; @id(9) I i; @id(10) sequence<string> n; @id(11) octet f[3]; };";
    static const std::string byLong = "@final union T switch (long) { case 1: case 2: octet small; "
                                      "case -3: double p; default: string o; };";
    static const std::vector<Example> result{
        {"Primitives",
         "@final struct T { octet o; boolean b; char c; short s; long l; long long ll; float f; double d; "
         "uint64 u; int8 i; };",
         R"({"o":255,"b":true,"c":"A","s":-2,"l":16909060,"ll":-9223372036854775808,"f":1.5,"d":-2.0,)"
         R"("u":18446744073709551615,"i":-1})",
         "ff 01 41 00 fffe 00 00 01020304 00000000 8000000000000000 3fc00000 00000000 c000000000000000 "
         "ffffffffffffffff ff",
         "ff 01 41 00 fffe 00 00 01020304 8000000000000000 3fc00000 c000000000000000 ffffffffffffffff ff"},
        {"UnsignedNumbersAndWideCharacter",
         "@final struct T { uint8 a; unsigned short b; unsigned long c; wchar w; };",
         R"({"a":200,"b":65535,"c":4294967295,"w":"€"})", "c8 00 ffff ffffffff 20ac",
         "c8 00 ffff ffffffff 20ac"},
        {"Strings", "@appendable struct T { string s; string<4> b; octet o; string e; };",
         R"({"s":"hi","b":"four","o":7,"e":""})",
         "00000003 68 69 00 00 00000005 66 6f 75 72 00 07 00 00 00000001 00",
         "00000019 00000003 68 69 00 00 00000005 66 6f 75 72 00 07 00 00 00000001 00"},
        {"NestedAppendable",
         "@appendable struct I { octet a; long b; }; @appendable struct T { octet x; I i; octet y; };",
         R"({"x":1,"i":{"a":2,"b":3},"y":4})", "01 02 00 00 00000003 04",
         "00000011 01 00 00 00 00000008 02 00 00 00 00000003 04"},
        {"Mutable", allOfMutable,
         R"({"a":1,"s":2,"l":3,"d":1.0,"t":"hi","q":[5,6],"r":[1.0],"o":[1,2,3],"i":{"a":1},"n":["x"],)"
         R"("f":[1,2,3]})",
         "0001 0001 01 00 00 00 0002 0002 0002 00 00 0003 0004 00000003 "
         "3f01 0008 00ffffff 00000008 3ff0000000000000 4005 0007 00000003 68 69 00 00 "
         "0006 000c 00000002 00000005 00000006 0007 0010 00000001 00000000 3ff0000000000000 "
         "0008 0007 00000003 01 02 03 00 0009 0001 01 00 00 00 000a 000a 00000001 00000002 78 00 00 00 "
         "000b 0003 01 02 03 00 3f02 0000",
         "00000087 00000001 01 00 00 00 10000002 0002 00 00 20000003 00000003 30ffffff 3ff0000000000000 "
         "d0000005 00000003 68 69 00 00 60000006 00000002 00000005 00000006 "
         "70000007 00000001 3ff0000000000000 50000008 00000003 01 02 03 00 50000009 00000001 01 00 00 00 "
         "5000000a 0000000a 00000001 00000002 78 00 00 00 4000000b 00000003 01 02 03"},
        {"MutableWithinFinal", "@mutable struct M { octet a; }; @final struct T { octet x; M m; double y; };",
         R"({"x":1,"m":{"a":2},"y":1.0})",
         // alignment counts from the value of the last parameter on
         "01 00 00 00 0000 0001 02 00 00 00 3f02 0000 3ff0000000000000",
         "01 00 00 00 00000005 00000000 02 00 00 00 3ff0000000000000"},
        {"Optionals", "@final struct T { octet b; @optional double d; @optional long n; double z; };",
         R"({"b":1,"d":2.0,"n":null,"z":3.0})",
         "01 00 00 00 0001 0008 4000000000000000 0002 0000 4008000000000000",
         "01 01 00 00 4000000000000000 00 00 00 00 4008000000000000"},
        {"OptionalsOfMutable",
         "@mutable struct T { @optional long a; @optional string b; @optional octet c; };",
         R"({"a":null,"b":"x","c":9})", "0001 0006 00000002 78 00 00 00 0002 0001 09 00 00 00 3f02 0000",
         "00000011 50000001 00000002 78 00 00 00 00000002 09"},
        {"OptionalWithLongId", "@appendable struct T { @id(0x10000) @optional octet a; };", R"({"a":3})",
         "3f01 0008 00010000 00000001 03", "00000002 01 03"},
        {"EnumsAndBitmasks",
         "enum E { A, @value(5) B, @value(-1) C }; @bit_bound(8) enum S { X, Y }; "
         "bitmask M { F0, @position(10) F10 }; @bit_bound(8) bitmask N { G }; "
         "@bit_bound(64) bitmask W { @position(63) TOP };"
         "@final struct T { S s; E e; M m; N n; sequence<E> q; S a[2]; W w; };",
         R"({"s":"Y","e":"B","m":["F0","F10"],"n":["G"],"q":["B","C"],"a":["Y","X"],"w":["TOP"]})",
         "01 00 00 00 00000005 00000401 01 00 00 00 00000002 00000005 ffffffff 01 00 00 00 "
         "8000000000000000",
         "01 00 00 00 00000005 00000401 01 00 00 00 00000002 00000005 ffffffff 01 00 00 00 "
         "8000000000000000"},
        {"Collections",
         "@final struct C { octet v; }; @final struct T { sequence<octet, 4> o; long m[2][3]; "
         "sequence<sequence<short> > n; string s[2]; C c[2][2]; };",
         R"({"o":[1,2],"m":[[1,2,3],[4,5,6]],"n":[[1],[2,3]],"s":["a",""],)"
         R"("c":[[{"v":1},{"v":2}],[{"v":3},{"v":4}]]})",
         "00000002 01 02 00 00 00000001 00000002 00000003 00000004 00000005 00000006 "
         "00000002 00000001 0001 00 00 00000002 0002 0003 00000002 61 00 00 00 00000001 00 01 02 03 04",
         "00000002 01 02 00 00 00000001 00000002 00000003 00000004 00000005 00000006 "
         "00000014 00000002 00000001 0001 00 00 00000002 0002 0003 "
         "0000000d 00000002 61 00 00 00 00000001 00 00 00 00 00000004 01 02 03 04"},
        {"ArraysOfTypedefs",
         "@final struct C { octet v; }; typedef C Row[2]; typedef Row Grid[2]; typedef sequence<Row> Rows;"
         "@final struct T { Grid r; Rows q; };",
         R"({"r":[[{"v":1},{"v":2}],[{"v":3},{"v":4}]],"q":[[{"v":5},{"v":6}]]})",
         "01 02 03 04 00000001 05 06", "00000004 01 02 03 04 0000000a 00000001 00000002 05 06"},
        {"Inheritance", "@appendable struct B { octet a; }; @appendable struct T : B { octet b; };",
         R"({"a":1,"b":2})", "01 02", "00000002 01 02"},
        {"UnionByLabel", byLong, R"({"discriminator":2,"member":9})", "00000002 09", "00000002 09"},
        {"UnionAligned", byLong, R"({"discriminator":-3,"member":1.0})", "fffffffd 00000000 3ff0000000000000",
         "fffffffd 3ff0000000000000"},
        {"UnionByDefault", byLong, R"({"discriminator":7,"member":"x"})", "00000007 00000002 78 00",
         "00000007 00000002 78 00"},
        {"UnionWithoutCase", "enum K { NONE, NUM }; @appendable union T switch (K) { case NUM: octet n; };",
         R"({"discriminator":"NONE"})", "00000000", "00000004 00000000"},
        {"UnionMutable", "@mutable union T switch (char) { case 'a': @id(10) long a; };",
         R"({"discriminator":"a","member":5})", "0000 0001 61 00 00 00 000a 0004 00000005 3f02 0000",
         "00000010 00000000 61 00 00 00 2000000a 00000005"},
        {"UnionByBoolean",
         "@appendable union T switch (boolean) { case TRUE: octet y; case FALSE: short n; };",
         R"({"discriminator":false,"member":-1})", "00 00 ffff", "00000004 00 00 ffff"},
        {"EmptyStruct", "@mutable struct T { @optional long a; };", R"({"a":null})", "3f02 0000", "00000000"},
    };
    return result;
}

std::uint8_t identifierOf(const Model& model, XcdrVersion version)
{
    const auto* const structure = as<StructType>(typeT(model));
    const Extensibility extensibility =
        structure == nullptr ? as<UnionType>(typeT(model))->extensibility : structure->extensibility;
    if (version == XcdrVersion::Xcdr1) {
        return extensibility == Extensibility::Mutable ? 0x02 : 0x00;
    }
    return static_cast<std::uint8_t>(6 + 2 * static_cast<int>(extensibility));
}

class CodecBytes : public testing::TestWithParam<Example>
{
protected:
    void expect(XcdrVersion version, std::endian order, const std::string& groups)
    {
        const Payload payload = payloadOf(identifierOf(model_, version), groups, order);
        EXPECT_EQ(hexOf(payloadFrom(model_, GetParam().json, {version, order, false})), hexOf(payload));
        EXPECT_EQ(jsonOf(model_, payload), GetParam().json);
    }

    Model model_ = modelOf(GetParam().idl);
};

TEST_P(CodecBytes, OfVersion1InBothOrders)
{
    expect(XcdrVersion::Xcdr1, std::endian::big, GetParam().version1);
    expect(XcdrVersion::Xcdr1, std::endian::little, GetParam().version1);
}

TEST_P(CodecBytes, OfVersion2InBothOrders)
{
    expect(XcdrVersion::Xcdr2, std::endian::big, GetParam().version2);
    expect(XcdrVersion::Xcdr2, std::endian::little, GetParam().version2);
}

/// However a payload ends too early, it is refused, or has fewer members.
TEST_P(CodecBytes, EachPrefixHasAnOutcome)
{
    for (const XcdrVersion version : {XcdrVersion::Xcdr1, XcdrVersion::Xcdr2}) {
        const Payload whole =
            payloadOf(identifierOf(model_, version),
                      version == XcdrVersion::Xcdr1 ? GetParam().version1 : GetParam().version2);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Payload prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_THROW(jsonOf(model_, prefix), CodecError) << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Types, CodecBytes, testing::ValuesIn(examples()),
                         [](const auto& example) { return example.param.name; });

// --- What has more than one form -------------------------------------------------------------------------

TEST(CodecForms, ListsOfEnumerationsCanBeDelimited)
{
    const Model model = modelOf("enum E { A, B }; @bit_bound(8) bitmask M { F };"
                                "@final struct T { sequence<E> q; M a[2]; };");
    CodecOptions options;
    options.delimitsEnumerations = true;
    const Payload payload = payloadOf(0x06, "0000000c 00000002 00000001 00000000 00000002 01 00");
    const std::string json = R"({"q":["B","A"],"a":[["F"],[]]})";
    EXPECT_EQ(hexOf(payloadFrom(model, json, {XcdrVersion::Xcdr2, std::endian::big, false}, options)),
              hexOf(payload));
    EXPECT_EQ(jsonOf(model, payload, options), json);
}

TEST(CodecForms, PaddingIsToldInTheOptions)
{
    const Model model = modelOf("@final struct T { octet a[5]; };");
    const Payload padded =
        payloadFrom(model, R"({"a":[1,2,3,4,5]})", {XcdrVersion::Xcdr2, std::endian::big, true});
    EXPECT_EQ(hexOf(padded), "00060003 01020304 05000000");
    EXPECT_EQ(jsonOf(model, padded), R"({"a":[1,2,3,4,5]})");
}

TEST(CodecForms, PaddingIsNoPartOfTheValue)
{
    const Model model = modelOf("@final struct T { octet a[5]; };");
    EXPECT_EQ(faultIn([&] { jsonOf(model, bytesOf("00 06 00 01 01 02 03 04 05")); }),
              "a: 5 elements do not fit into the 4 bytes that are left (offset 4)");
}

TEST(CodecForms, ThreeBytesMayFollow)
{
    const Model model = modelOf("@final struct T { octet a; };");
    EXPECT_EQ(jsonOf(model, payloadOf(0x00, "07 00 00 00")), R"({"a":7})");
    EXPECT_EQ(faultIn([&] { jsonOf(model, payloadOf(0x00, "07 00 00 00 00")); }),
              "4 bytes follow the value (offset 5)");
}

TEST(CodecForms, TheHeaderDecidesWhetherTheOutermostTypeIsDelimited)
{
    const std::string json = R"({"a":7})";
    EXPECT_EQ(jsonOf("@appendable struct T { long a; };", payloadOf(0x06, "00000007")), json);
    EXPECT_EQ(jsonOf("@final struct T { long a; };", payloadOf(0x08, "00000004 00000007")), json);
}

TEST(CodecForms, EachLengthCodeIsRead)
{
    const Model model = modelOf("@mutable struct T { sequence<octet> a; };");
    const std::string json = R"({"a":[1,2,3,4,5,6,7,8]})";
    const std::string value = "00000008 01 02 03 04 05 06 07 08";
    EXPECT_EQ(jsonOf(model, payloadOf(0x0a, "00000014 40000000 0000000c " + value)), json);
    EXPECT_EQ(jsonOf(model, payloadOf(0x0a, "00000010 50000000 " + value)), json);
    EXPECT_EQ(jsonOf("@mutable struct T { sequence<long> a; };",
                     payloadOf(0x0a, "0000000c 60000000 00000001 00000007")),
              R"({"a":[7]})");
    EXPECT_EQ(jsonOf("@mutable struct T { sequence<double> a; };",
                     payloadOf(0x0a, "00000010 70000000 00000001 3ff0000000000000")),
              R"({"a":[1.0]})");
}

TEST(CodecForms, MembersOfMutableTypesComeInAnyOrder)
{
    const Model model = modelOf("@mutable struct T { @key octet a; octet b; };");
    EXPECT_EQ(jsonOf(model, payloadOf(0x0a, "0000000d 00000001 02 00 00 00 80000000 01")),
              R"({"a":1,"b":2})");
    EXPECT_EQ(jsonOf(model, payloadOf(0x02, "0001 0001 02 00 00 00 4000 0001 01 00 00 00 3f02 0000")),
              R"({"a":1,"b":2})");
}

TEST(CodecForms, TheLastOfEqualMembersCounts)
{
    const Model model = modelOf("@mutable struct T { octet a; };");
    EXPECT_EQ(jsonOf(model, payloadOf(0x0a, "0000000d 00000000 01 00 00 00 00000000 02")), R"({"a":2})");
}

TEST(CodecForms, ParametersOfVersion1MayBeExtendedPaddedAndIgnored)
{
    const Model model = modelOf("@mutable struct T { octet a; @optional octet b; };");
    EXPECT_EQ(jsonOf(model, payloadOf(0x02, "3f01 0008 00000000 00000001 01 00 00 00 3f02 0000")),
              R"({"a":1,"b":null})");
    EXPECT_EQ(jsonOf(model, payloadOf(0x02, "0000 0004 01 00 00 00 0001 0000 3f02 0000")),
              R"({"a":1,"b":null})");
    EXPECT_EQ(jsonOf(model, payloadOf(0x02, "3f03 0004 ffffffff 0000 0001 01 00 00 00 3f02 0000")),
              R"({"a":1,"b":null})");
}

TEST(CodecForms, AMemberTooLongForAShortHeaderGetsALongOne)
{
    const Model model = modelOf("@mutable struct T { @must_understand sequence<octet> a; octet b; };");
    const Datum::Octets octets(70000, 5);
    const auto& type = *as<StructType>(typeT(model));
    const Datum value{StructDatum{{{&memberOf(type, "a"), {octets}}}}};
    Payload payload = encode(type, value, {XcdrVersion::Xcdr1, std::endian::big, false});
    const Payload end(payload.end() - 12, payload.end());
    payload.resize(20);
    EXPECT_EQ(hexOf(payload), "00020000 7f010008 00000000 00011174 00011170");
    EXPECT_EQ(hexOf(end), "00010001 00000000 3f020000");
    EXPECT_EQ(toJson(type, decode(type, encode(type, value))), toJson(type, value));
}

TEST(CodecForms, ATextOfLengthZeroIsEmpty)
{
    EXPECT_EQ(jsonOf("@final struct T { string a; };", payloadOf(0x00, "00000000")), R"({"a":""})");
}

TEST(CodecForms, UnknownEnumeratorsAreKeptWhereThatIsAskedFor)
{
    const Model model = modelOf("enum E { A }; @final struct T { E e; };");
    CodecOptions options;
    options.keepsUnknownEnumerators = true;
    const Payload payload = payloadOf(0x00, "fffffff9");
    EXPECT_EQ(jsonOf(model, payload, options), R"({"e":-7})");
    EXPECT_EQ(payloadFrom(model, R"({"e":-7})", {XcdrVersion::Xcdr1, std::endian::big, false}, options),
              payload);
}

} // namespace

} // namespace plex::test
