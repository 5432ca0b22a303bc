// SPDX-License-Identifier: Apache-2.0
// What is refused, and what is said about it.
#include "AllocatedBytes.hpp"
#include "Codec.hpp"

namespace plex::test
{

namespace
{

struct Refusal {
    std::string idl;
    Payload payload;
    std::string text;
};

TEST(CodecErrors, PayloadsAreRefusedWithPathAndPlace)
{
    const std::string octet = "@final struct T { octet a; };";
    const std::string text = "@final struct T { string<3> s; };";
    const std::string inner =
        "@final struct I { boolean b[2][2]; }; @final struct T { sequence<I, 2> list; };";
    const std::string choice = "@final union T switch (octet) { case 1: string s; };";
    const std::string parameters = "@mutable struct T { @id(1) long a; @id(2) string s; };";
    const std::vector<Refusal> refusals{
        {octet, {0, 0, 0}, "a payload has a header of 4 bytes, this one has 3 (offset 3)"},
        {octet, bytesOf("00 04 00 00 01"), "the encoding 0004 is not known (offset 0)"},
        {octet, bytesOf("01 00 00 00 01"), "the encoding 0100 is not known (offset 0)"},
        {octet, bytesOf("00 00 00 02 01"), "the header tells of 2 bytes of padding, 1 follow (offset 2)"},
        {octet, payloadOf(0x02, "3f02 0000"),
         "the payload is a parameter list, the type is not mutable (offset 0)"},
        {parameters, payloadOf(0x00, "01"),
         "a mutable type needs a parameter list, the payload is none (offset 0)"},
        {"typedef sequence<octet> T;", payloadOf(0x08, "00000000"),
         "the payload is delimited, the type is neither struct nor union (offset 0)"},
        {octet, payloadOf(0x00, ""), "a: 1 bytes are needed, 0 are left (offset 4)"},
        {text, payloadOf(0x00, "00000002 61"), "s: 2 bytes are needed, 1 are left (offset 8)"},
        {text, payloadOf(0x00, "00000002 61 62"), "s: the text does not end with a NUL (offset 10)"},
        {text, payloadOf(0x00, "00000003 61 00 00"), "s: the text has a NUL in it (offset 11)"},
        {text, payloadOf(0x00, "00000005 61 62 63 64 00"),
         "s: the text has 4 bytes, at most 3 are allowed (offset 13)"},
        {inner, payloadOf(0x00, "00000001 01 00 02 00"), "list[0].b[1][0]: 2 is no boolean (offset 11)"},
        {inner, payloadOf(0x00, "00000003 01 00 01 00"),
         "list: the sequence has 3 elements, at most 2 are allowed (offset 8)"},
        {inner, payloadOf(0x06, "00000009 00000001 01 00 01 00"),
         "list: the delimiter header counts 9 bytes, 8 are left (offset 8)"},
        {"@final struct T { sequence<long> q; };", payloadOf(0x00, "40000000 00000000"),
         "q: 1073741824 elements do not fit into the 4 bytes that are left (offset 8)"},
        {"@final struct T { sequence<string> q; };", payloadOf(0x06, "0000000b 00000001 00000001 00 00 00"),
         "q: the delimiter header counts 2 bytes more (offset 17)"},
        {"@appendable struct T { octet a; long b; };", payloadOf(0x08, "00000006 01 00 00 00 00000002"),
         "b: 4 bytes are needed, 2 are left (offset 12)"},
        {"@appendable struct T { octet a; };", payloadOf(0x08, "00000002 01"),
         "the delimiter header counts 2 bytes, 1 are left (offset 8)"},
        {"enum E { A, B }; @final struct T { E e; };", payloadOf(0x00, "00000002"),
         "e: 2 is no value of E (offset 8)"},
        {"@bit_bound(8) enum E { A, B }; @final struct T { E e; };", payloadOf(0x00, "ff"),
         "e: -1 is no value of E (offset 5)"},
        {choice, payloadOf(0x00, "01"), "s: 4 bytes are needed, 0 are left (offset 5)"},
        {choice, payloadOf(0x00, ""), "discriminator: 1 bytes are needed, 0 are left (offset 4)"},
        {"@mutable union T switch (octet) { case 1: @id(5) octet s; };",
         payloadOf(0x0a, "00000005 00000005 01"), "member 5 comes before the discriminator (offset 12)"},
        {"@mutable union T switch (octet) { case 1: @id(5) octet s; };", payloadOf(0x0a, "00000000"),
         "the discriminator is missing (offset 8)"},
        {parameters, payloadOf(0x0a, "00000008 10000001 00000001"),
         "a: 4 bytes are needed, 2 are left (offset 12)"},
        {parameters, payloadOf(0x0a, "0000000c 30000001 00000001 00000002"),
         "a: the member has 8 bytes by its header, its value has 4 (offset 16)"},
        {parameters, payloadOf(0x0a, "0000000c 40000001 00000005 00000002"),
         "member 1 has 5 bytes by its header, 4 are left (offset 16)"},
        {parameters, payloadOf(0x0a, "0000000c 70000001 ffffffff 00000002"),
         "member 1 has 34359738364 bytes by its header, 8 are left (offset 12)"},
        {parameters, payloadOf(0x0a, "00000002 00 01"), "4 bytes are needed, 2 are left (offset 8)"},
        {parameters, payloadOf(0x02, "0001 0004 00000001"), "2 bytes are needed, 0 are left (offset 12)"},
        {parameters, payloadOf(0x02, "0001 0008 00000001 00000000 3f02 0000"),
         "a: the member has 8 bytes by its header, its value has 4 (offset 12)"},
        {parameters, payloadOf(0x02, "3f01 0004 00000001 00000004 00000001 3f02 0000"),
         "the header of an extended parameter has 8 bytes, not 4 (offset 8)"},
        {parameters, payloadOf(0x02, "3f04 0000 3f02 0000"), "the parameter id 16132 is reserved (offset 8)"},
        {parameters, payloadOf(0x02, "7fff 0000 3f02 0000"), "the parameter id 16383 is reserved (offset 8)"},
        {"@final struct T { @optional octet a; };", payloadOf(0x00, "0007 0001 01"),
         "a: the header of an optional member has the id 7, not 0 (offset 8)"},
        {"@final struct T { @optional octet a; };", payloadOf(0x00, "3f02 0000"),
         "a: the header of an optional member has the id 16130, not 0 (offset 8)"},
        {"@final struct T { @optional octet a; };", payloadOf(0x06, "02 01"),
         "a: 2 is no boolean (offset 5)"},
        {"@final struct T { wstring a; };", payloadOf(0x00, "00000000"),
         "a: wstring is not supported (offset 4)"},
        {"@final struct T { map<long, long> a; };", payloadOf(0x00, "00000000"),
         "a: map<int32, int32> is not supported (offset 4)"},
        {"@final struct T { long double a; };", payloadOf(0x00, "00000000"),
         "a: long double is not supported (offset 4)"},
        {"bitset B { bitfield<3> x; }; @final struct T { B a; };", payloadOf(0x00, "00"),
         "a: B is not supported (offset 4)"},
    };
    for (const Refusal& refusal : refusals) {
        const Model model = modelOf(refusal.idl);
        EXPECT_EQ(faultIn([&] { jsonOf(model, refusal.payload); }), refusal.text)
            << refusal.idl << " " << hexOf(refusal.payload);
    }
}

TEST(CodecErrors, AnErrorHasPathAndOffset)
{
    const Model model = modelOf("@final struct I { boolean b; }; @final struct T { I i; };");
    try {
        decode(typeT(model), payloadOf(0x00, "05"));
        FAIL();
    } catch (const CodecError& error) {
        EXPECT_EQ(error.path(), "i.b");
        EXPECT_EQ(error.offset(), 5U);
    }
}

TEST(CodecErrors, UnselectedCasesAreRefusedUnlessTheyAreToBeKept)
{
    const Model model = modelOf("@final union T switch (short) { case 1: octet a; };");
    CodecOptions keeping;
    keeping.keepsUnselected = true;
    EXPECT_EQ(jsonOf(model, payloadOf(0x00, "fffe"), keeping), R"({"discriminator":-2})");
    EXPECT_EQ(faultIn([&] { jsonOf(model, payloadOf(0x00, "fffe")); }),
              "discriminator: the discriminator -2 selects no case of T (offset 6)");
    const std::string json = R"({"discriminator":-2})";
    EXPECT_EQ(hexOf(encode(typeT(model), fromJson(typeT(model), json, keeping), {}, keeping)),
              "00010000 feff");
    EXPECT_EQ(faultIn([&] { fromJson(typeT(model), json); }), "the discriminator -2 selects no case of T");
    EXPECT_EQ(faultIn([&] { encode(typeT(model), {UnionDatum{7, {}}}); }),
              "the discriminator 7 selects no case of T");
}

TEST(CodecErrors, EnumeratorsAndBooleansWithoutACaseStandForNoMember)
{
    const Model enums = modelOf("enum E { A, B }; @final union T switch (E) { case B: octet b; };");
    EXPECT_EQ(jsonOf(enums, payloadOf(0x00, "00000000")), R"({"discriminator":"A"})");
    EXPECT_EQ(faultIn([&] { jsonOf(enums, payloadOf(0x00, "00000002")); }),
              "discriminator: 2 is no value of E (offset 8)");
    const Model booleans = modelOf("@final union T switch (boolean) { case TRUE: octet b; };");
    EXPECT_EQ(jsonOf(booleans, payloadOf(0x00, "00")), R"({"discriminator":false})");
}

/// As generated code makes new values.
TEST(CodecErrors, DefaultOfAUnionHasThatOfItsDiscriminatorOrElseTheFirstLabel)
{
    const auto defaultIn = [](const std::string& definition) {
        const Model model = modelOf(definition + "@final struct T { U u; };");
        return jsonOf(model, encode(typeT(model), Datum()));
    };
    EXPECT_EQ(defaultIn("@final union U switch (long) { case 0: octet a; default: short b; };"),
              R"({"u":{"discriminator":0,"member":0}})");
    EXPECT_EQ(defaultIn("@final union U switch (long) { case 1: octet a; default: short b; };"),
              R"({"u":{"discriminator":0,"member":0}})");
    EXPECT_EQ(defaultIn("@final union U switch (long) { case 7: octet a; case 3: short b; };"),
              R"({"u":{"discriminator":7,"member":0}})");
    EXPECT_EQ(defaultIn("enum E { A, @default_literal B }; @final union U switch (E) { case A: octet a; };"),
              R"({"u":{"discriminator":"B"}})");
    EXPECT_EQ(defaultIn("@final union U switch (boolean) { case TRUE: octet a; };"),
              R"({"u":{"discriminator":false}})");
}

/// Values that were not read from JSON may be anything.
TEST(CodecErrors, ValuesThatAreNoneOfTheTypeAreNotWritten)
{
    struct Unfit {
        std::string member;
        Datum value;
        std::string text;
    };

    const Model model = modelOf("enum E { A }; @final union U switch (octet) { case 1: octet o; };"
                                "@final struct T { string<2> s; sequence<long, 1> q; E e; octet o; short h; "
                                "long a[2]; octet b[2]; U u; wchar w; };");
    const auto& type = *as<StructType>(typeT(model));
    const Datum number{std::int64_t{1}};
    const std::vector<Unfit> unfit{
        {"s", {std::string("abc")}, "s: the text has 3 bytes, at most 2 are allowed"},
        {"s", {std::string("a\0", 2)}, "s: the text has a NUL in it"},
        {"s", number, "s: the value is none of string<2>"},
        {"q", {Datum::Elements{number, number}}, "q: the sequence has 2 elements, at most 1 are allowed"},
        {"e", {std::int64_t{7}}, "e: 7 is no value of E"},
        {"o", {std::uint64_t{256}}, "o: 256 is out of the range of octet"},
        {"h", {std::int64_t{-32769}}, "h: -32769 is out of the range of int16"},
        {"a", {Datum::Elements{number}}, "a: the array has 1 elements, not 2"},
        {"b", {Datum::Octets{1, 2, 3}}, "b: the array has 3 elements, not 2"},
        {"u", {UnionDatum{2, {number}}}, "u: the discriminator selects no case, and there is a member"},
        {"u", {UnionDatum{1, {}}}, "u: the member \"o\" is missing"},
        {"w", {U'\U0001F52D'}, "w: the character takes more than 16 bits"},
    };
    for (const Unfit& one : unfit) {
        const Datum value{StructDatum{{{&memberOf(type, one.member), one.value}}}};
        EXPECT_EQ(faultIn([&] { encode(type, value); }), one.text);
    }
}

// --- Bombs -------------------------------------------------------------------------------------------------

TEST(CodecBombs, TwentyBytesTakeNoMegabyte)
{
    const std::vector<std::string> types{
        "@final struct T { sequence<octet> a; };",
        "@final struct T { sequence<double> a; };",
        "@final struct T { sequence<string> a; };",
        "@final struct T { sequence<sequence<octet> > a; };",
        "@final struct T { string a; };",
        "@final struct T { boolean a[4000000000]; };",
        "@final struct T { octet a[4000000000]; };",
        "@final struct E {}; @final struct T { sequence<E> a; };",
        "@final struct E {}; @final struct T { E a[4000000000]; };",
        "@final struct E {}; @final struct I { E a[4000000000]; }; @final struct T { sequence<I> a; };",
        "@appendable struct I { long a[100000]; }; @final struct T { sequence<I> a; };",
        "@mutable struct I { long a[100000]; }; @final struct T { sequence<I> a; };",
        "@final struct I { long a[100000]; }; @mutable struct T { I a; };",
        "@final struct N; typedef sequence<N> Ns; @final struct N { Ns n; }; @final struct T { Ns n; };",
        "@appendable struct N { @external N n; }; @final struct T { N n; };",
    };
    for (const std::string& idl : types) {
        const Model model = modelOf(idl);
        for (const std::uint8_t identifier : Payload{0x00, 0x02, 0x06, 0x08, 0x0a}) {
            for (const char* const length :
                 {"00000000", "00000001", "0000000c", "0fffffff", "7fffffff", "ffffffff"}) {
                const Payload payload =
                    payloadOf(identifier, std::string(length) + " " + length + " " + length + " 00000000");
                const AllocatedBytes allocated;
                faultIn([&] { decode(typeT(model), payload); });
                EXPECT_LT(allocated.count(), 1000000U) << idl << " " << hexOf(payload);
            }
        }
    }
}

TEST(CodecBombs, NestingEndsBeforeTheStackDoes)
{
    const Model model = modelOf("@final struct T; typedef sequence<T> Ts; @final struct T { Ts t; };");
    Payload payload = payloadOf(0x00, "");
    for (int i = 0; i < 100000; ++i) {
        payload.insert(payload.end(), {0, 0, 0, 1});
    }
    EXPECT_THAT(faultIn([&] { decode(typeT(model), payload); }),
                testing::AllOf(testing::StartsWith("t[0].t[0]"),
                               testing::HasSubstr("values are nested more than 512 deep")));
}

TEST(CodecBombs, DefaultsThatContainThemselvesEnd)
{
    const Model model = modelOf("@appendable struct T { @external T t; };");
    const Payload payload = payloadOf(0x08, "00000000");
    EXPECT_THAT(faultIn([&] { jsonOf(model, payload); }), testing::HasSubstr("nested more than 512"));
    EXPECT_THAT(faultIn([&] { encode(typeT(model), decode(typeT(model), payload)); }),
                testing::HasSubstr("nested more than 512"));
}

TEST(CodecBombs, ValuesWithoutBytesAreCounted)
{
    const Model model = modelOf("@final struct E {}; @final struct T { sequence<E> a; };");
    EXPECT_EQ(jsonOf(model, payloadOf(0x00, "00000002")), R"({"a":[{},{}]})");
    EXPECT_EQ(faultIn([&] { decode(typeT(model), payloadOf(0x00, "ffffffff")); }),
              "a: the sequence has 4294967295 elements, at most 1000 are allowed (offset 8)");
    const Model array = modelOf("@final struct E {}; @final struct T { E a[5000]; };");
    EXPECT_EQ(faultIn([&] { decode(typeT(array), payloadOf(0x00, "")); }),
              "a[4096]: more than 4096 values take no bytes (offset 4)");
}

TEST(CodecBombs, PayloadsEndSomewhere)
{
    const Model model = modelOf("@final struct T { long a[100000000]; };");
    EXPECT_THAT(faultIn([&] { encode(typeT(model), Datum()); }),
                testing::HasSubstr("the payload takes more than 67108864 bytes"));
}

} // namespace

} // namespace plex::test
