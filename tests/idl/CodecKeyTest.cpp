// SPDX-License-Identifier: Apache-2.0
// RTPS 2.5, 9.6.4.8.
#include "Codec.hpp"

namespace plex::test
{

namespace
{

std::string hashOf(const std::string& idl, const std::string& json, XcdrVersion version = XcdrVersion::Xcdr1)
{
    const Model model = modelOf(idl);
    const auto hash = keyHash(typeT(model), fromJson(typeT(model), json), version);
    return hash ? hexOf({hash->begin(), hash->end()}) : "";
}

TEST(CodecKeys, ShortOnesAreTheirOwnHash)
{
    EXPECT_EQ(hashOf("struct T { double v; @key long id; };", R"({"v":1.5,"id":16909060})"),
              "01020304 00000000 00000000 00000000");
    EXPECT_EQ(
        hashOf("struct T { @key octet uuid[16]; };", R"({"uuid":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16]})"),
        "01020304 05060708 090a0b0c 0d0e0f10");
    EXPECT_EQ(hashOf("struct T { @key string<11> s; };", R"({"s":"x"})"),
              "00000002 78000000 00000000 00000000");
    EXPECT_EQ(hashOf("struct T { @key sequence<octet, 4> s; };", R"({"s":[7]})"),
              "00000001 07000000 00000000 00000000");
    EXPECT_EQ(
        hashOf("union T switch (@key long) { case 1: string s; };", R"({"discriminator":1,"member":"x"})"),
        "00000001 00000000 00000000 00000000");
}

TEST(CodecKeys, WhatMayBeLongIsHashed)
{
    EXPECT_EQ(hashOf("struct T { @key string s; };", R"({"s":"hello"})"),
              "80e4d12f 30e3c36f a1324dc7 176489ad");
    EXPECT_EQ(hashOf("struct T { @key string<12> s; };", R"({"s":"x"})"),
              "b5445fe6 0b0bf117 9ea5d24f c85a2e29");
    EXPECT_EQ(
        hashOf("struct T { @key octet a[17]; };", R"({"a":[0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16]})"),
        "1bdd36b0 a024c90d b3835126 07293692");
    EXPECT_EQ(
        hashOf(
            "enum L { LO, HI }; struct T { double v; @key short a; @key octet b; @key int64 c; @key L l; };",
            R"({"a":1,"b":2,"c":3,"l":"HI"})"),
        "483723de 1ce327b1 d9db7630 bdf8c272");
}

/// An eight-byte member at 4 makes the difference.
TEST(CodecKeys, VersionsDiffer)
{
    const std::string idl = "struct T { @key long a; @key double b; };";
    const std::string json = R"({"a":1,"b":1.0})";
    EXPECT_EQ(hashOf(idl, json), "00000001 00000000 3ff00000 00000000");
    EXPECT_EQ(hashOf(idl, json, XcdrVersion::Xcdr2), "00000001 3ff00000 00000000 00000000");
}

TEST(CodecKeys, MembersAreSortedById)
{
    EXPECT_EQ(hashOf("@mutable struct T { @key @id(20) long second; @key @id(10) short first; double v; };",
                     R"({"second":2,"first":1})"),
              "00010000 00000002 00000000 00000000");
}

TEST(CodecKeys, OfNestedTypesAreTheirKeysOrAllOfThem)
{
    EXPECT_EQ(hashOf("@mutable struct N { @key long a; long b; }; struct T { @key N n; double v; };",
                     R"({"n":{"a":1,"b":2}})"),
              "00000001 00000000 00000000 00000000");
    EXPECT_EQ(
        hashOf("struct N { long a; long b; }; struct T { @key N n; double v; };", R"({"n":{"a":1,"b":2}})"),
        "00000001 00000002 00000000 00000000");
    EXPECT_EQ(hashOf("struct N { @key octet a; long b; }; struct T { @key N n[2]; };",
                     R"({"n":[{"a":1},{"a":2}]})"),
              "01020000 00000000 00000000 00000000");
}

TEST(CodecKeys, OfBasesComeFirst)
{
    EXPECT_EQ(hashOf("struct B { @key long a; }; struct T : B { long b; };", R"({"a":5,"b":6})"),
              "00000005 00000000 00000000 00000000");
}

TEST(CodecKeys, TypesWithoutOneHaveNoHash)
{
    EXPECT_EQ(hashOf("struct T { long a; };", "{}"), "");
    EXPECT_EQ(hashOf("union T switch (long) { case 1: long a; };", R"({"discriminator":1})"), "");
    EXPECT_EQ(hashOf("typedef long T;", "1"), "");
}

TEST(CodecKeys, EndWhereTypesContainThemselves)
{
    const Model model = modelOf("struct T { @key @external T t; };");
    EXPECT_THAT(faultIn([&] { keyHash(typeT(model), Datum()); }), testing::HasSubstr("nested more than"));
}

} // namespace

} // namespace plex::test
