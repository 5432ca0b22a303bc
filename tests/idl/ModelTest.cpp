// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <utility>

namespace plex::test
{

namespace
{

using testing::ElementsAre;

std::vector<std::string> typesOfMembers(const StructType& type)
{
    std::vector<std::string> types;
    for (const Member& member : type.members) {
        types.push_back(toString(*member.type));
    }
    return types;
}

TEST(Model, NamesPrimitiveTypesByTheirWidth)
{
    const Model model = modelOf("struct S { short a; unsigned short b; long c; unsigned long d; long long e; "
                                "unsigned long long f; octet g; uint8 h; long double i; wchar j; };");
    EXPECT_THAT(typesOfMembers(typeIn<StructType>(model, "S")),
                ElementsAre("int16", "uint16", "int32", "uint32", "int64", "uint64", "octet", "uint8",
                            "long double", "wchar"));
}

TEST(Model, KeepsAliasesAndLooksThroughThem)
{
    const Model model = modelOf("typedef double Row[3]; typedef Row Matrix[2]; struct S { Matrix m[4]; };");
    const Type& type = *typeIn<StructType>(model, "S").members[0].type;
    const auto* const array = as<ArrayType>(type);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(toString(type), "Matrix[4]");
    EXPECT_EQ(elementCount(*array), 4U);
    EXPECT_EQ(toString(resolved(*array->element)), "Row[2]");
}

TEST(Model, HasBoundsAndDimensions)
{
    const Model model = modelOf("const long N = 2; struct S { string<N * 8> a; sequence<S, N> b; long c[N][N "
                                "+ 1]; map<string, S, N> d; };");
    EXPECT_THAT(typesOfMembers(typeIn<StructType>(model, "S")),
                ElementsAre("string<16>", "sequence<S, 2>", "int32[2][3]", "map<string, S, 2>"));
}

TEST(Model, ListsTypesAfterWhatTheyContain)
{
    const Model model =
        modelOf("struct C; module a { struct A { long x; }; }; struct B { a::A a; sequence<C> c; };"
                "struct C { B b; };");
    std::vector<std::string> names;
    for (const NamedType* const type : model.types) {
        names.push_back(type->scopedName);
    }
    EXPECT_THAT(names, ElementsAre("a::A", "B", "C"));
}

TEST(Model, StaysWhereItIsWhenItIsMoved)
{
    Model model = modelOf("module m { struct S { long a; }; const long N = 3; };");
    const NamedType* const type = model.findType("m::S");
    const Model moved = std::move(model);
    EXPECT_EQ(moved.findType("m::S"), type);
    EXPECT_EQ(moved.root->declarations.size(), 1U);
    EXPECT_EQ(moved.findType("m::T"), nullptr);
    EXPECT_NE(moved.findConstant("m::N"), nullptr);
    EXPECT_EQ(type->module->scopedName, "m");
    EXPECT_EQ(type->module->parent, moved.root);
}

TEST(Model, JoinsTheBitsOfAModule)
{
    const Model model =
        modelOf("module m { struct A { long a; }; }; module n { }; module m { struct B { A a; }; };");
    ASSERT_EQ(model.root->declarations.size(), 2U);
    EXPECT_EQ(std::get<const Module*>(model.root->declarations[0])->declarations.size(), 2U);
}

TEST(Model, PutsMembersOfTheBaseFirst)
{
    const Model model =
        modelOf("struct A { @key long a; }; struct B : A { long b; }; struct C : B { long c; };");
    std::vector<std::string> names;
    for (const Member* const member : allMembers(typeIn<StructType>(model, "C"))) {
        names.push_back(member->name);
    }
    EXPECT_THAT(names, ElementsAre("a", "b", "c"));
    EXPECT_TRUE(typeIn<StructType>(model, "C").hasKey);
}

TEST(Model, KnowsHowDeepTypesAreNested)
{
    const Model model =
        modelOf("struct A { long a; }; typedef A B; struct C { sequence<B> b; @optional C c; };");
    EXPECT_EQ(model.findType("A")->depth, 2U);
    EXPECT_EQ(model.findType("C")->depth, 5U);
}

TEST(Model, RefusesTypesThatAreNestedTooDeep)
{
    std::string text = "struct S0 { long a; };";
    std::string behindNames;
    for (int i = 1; i < 200; ++i) {
        const std::string n = std::to_string(i);
        text += "struct S" + n + " { S" + std::to_string(i - 1) + " a; };";
        behindNames += "struct T" + n + "; typedef T" + n + " U" + n + ";";
    }
    for (int i = 199; i > 0; --i) {
        const std::string inner = i == 199 ? "long" : "U" + std::to_string(i + 1);
        behindNames += "struct T" + std::to_string(i) + " { " + inner + " a; };";
    }
    const auto isTooDeep = testing::HasSubstr("types are nested more than 128 deep");
    EXPECT_THAT(complaintsOf(text), testing::Contains(isTooDeep));
    EXPECT_THAT(complaintsOf(behindNames), testing::Contains(isTooDeep));
}

TEST(Unions, FindTheCaseThatADiscriminatorSelects)
{
    const Model model =
        modelOf("union U switch (long) { case 1: case -3: long a; case 0: long b; default: long c; };");
    const auto& type = typeIn<UnionType>(model, "U");
    EXPECT_EQ(type.caseOf(1)->name, "a");
    EXPECT_EQ(type.caseOf(static_cast<std::uint64_t>(-3))->name, "a");
    EXPECT_EQ(type.caseOf(0)->name, "b");
    EXPECT_EQ(type.caseOf(7)->name, "c");
    EXPECT_EQ(type.unusedLabel->bits, 2U);
}

TEST(Unions, KnowWhetherALabelIsUnused)
{
    const Model model = modelOf("enum E { A, B }; union U switch (E) { case B: long b; };"
                                "union V switch (boolean) { case TRUE: long a; case FALSE: long b; };");
    const auto& type = typeIn<UnionType>(model, "U");
    EXPECT_EQ(toString(type.unusedLabel->value), "A");
    EXPECT_EQ(type.caseOf(0), nullptr);
    EXPECT_FALSE(typeIn<UnionType>(model, "V").unusedLabel.has_value());
    EXPECT_THAT(
        complaintsOf("union U switch (boolean) { case TRUE: long a; case FALSE: long b; default: long c; };"),
        ElementsAre("1:67: nothing is left for the default: all values are labels"));
}

TEST(Enums, CountOnFromTheValueBefore)
{
    const Model model = modelOf("@bit_bound(8) enum E { @value(-3) A, B, @value(7) @default_literal C, D };");
    const auto& type = typeIn<EnumType>(model, "E");
    std::vector<std::int32_t> values;
    for (const Enumerator& enumerator : type.enumerators) {
        values.push_back(enumerator.value);
    }
    EXPECT_THAT(values, ElementsAre(-3, -2, 7, 8));
    EXPECT_TRUE(type.enumerators[2].isDefault);
    EXPECT_FALSE(type.enumerators[0].isDefault);
    EXPECT_EQ(storageBits(type), 8U);
}

TEST(Enums, TakeTheFirstForTheDefault)
{
    const Model model = modelOf("enum E { A, B };");
    EXPECT_TRUE(typeIn<EnumType>(model, "E").enumerators[0].isDefault);
}

TEST(Bitmasks, CountOnFromThePositionBefore)
{
    const Model model = modelOf("bitmask B { F0, F1, @position(10) F10, F11 };");
    std::vector<std::uint32_t> positions;
    for (const BitFlag& flag : typeIn<BitmaskType>(model, "B").flags) {
        positions.push_back(flag.position);
    }
    EXPECT_THAT(positions, ElementsAre(0U, 1U, 10U, 11U));
}

TEST(Bitsets, PlaceTheirFields)
{
    const Model model =
        modelOf("bitset A { bitfield<3> a; bitfield<1> b; bitfield<4>; bitfield<16, unsigned long> c; };"
                "bitset B : A { bitfield<8> d; };");
    const auto& type = typeIn<BitsetType>(model, "A");
    EXPECT_EQ(type.bits, 24U);
    EXPECT_EQ(type.fields[2].position, 8U);
    EXPECT_EQ(toString(*type.fields[0].type), "uint8");
    EXPECT_EQ(toString(*type.fields[1].type), "boolean");
    EXPECT_EQ(toString(*type.fields[2].type), "uint32");
    EXPECT_EQ(typeIn<BitsetType>(model, "B").fields[0].position, 24U);
}

} // namespace

} // namespace plex::test
