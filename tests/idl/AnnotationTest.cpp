// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <MemberIds.hpp>

namespace plex::test
{

namespace
{

using testing::ElementsAre;

std::vector<std::uint32_t> idsIn(const std::string& text, const std::string& name = "S")
{
    const Model model = modelOf(text);
    std::vector<std::uint32_t> ids;
    for (const Member* const member : allMembers(typeIn<StructType>(model, name))) {
        ids.push_back(member->id);
    }
    return ids;
}

TEST(MemberIds, OfNamesAreTheFirstBytesOfTheirMd5)
{
    EXPECT_EQ(hashedMemberId("color"), 0x0fa5dd70U);
    EXPECT_EQ(hashedMemberId("shapesize"), 0x047790daU);
    EXPECT_EQ(hashedMemberId(""), 0x098c1dd4U);
    EXPECT_EQ(hashedMemberId(std::string(1000, 'a')), 0x0c45becaU);
}

TEST(MemberIds, CountFromTheOneBefore)
{
    EXPECT_THAT(idsIn("struct S { long a; @id(5) long b; long c; @id(3) long d; long e; };"),
                ElementsAre(0, 5, 6, 3, 4));
}

TEST(MemberIds, CountOnFromTheHighestOfTheBase)
{
    EXPECT_THAT(idsIn("struct A { @id(7) long a; @id(2) long b; }; struct S : A { long c; };"),
                ElementsAre(7, 2, 8));
    EXPECT_THAT(idsIn("struct A { }; struct S : A { long c; };"), ElementsAre(0));
}

TEST(MemberIds, AreHashedWhereThatIsAskedFor)
{
    EXPECT_THAT(idsIn("@autoid(HASH) struct S { long color; @id(1) long b; };"), ElementsAre(0x0fa5dd70, 1));
    EXPECT_THAT(idsIn("@autoid struct S { long color; };"), ElementsAre(0x0fa5dd70));
    EXPECT_THAT(idsIn("@autoid(HASH) module m { struct S { long color; }; };", "m::S"),
                ElementsAre(0x0fa5dd70));
    EXPECT_THAT(idsIn("@autoid(HASH) module m { @autoid(SEQUENTIAL) struct S { long color; }; };", "m::S"),
                ElementsAre(0));
    EXPECT_THAT(idsIn("struct S { @hashid long color; @hashid(\"shapesize\") long b; };"),
                ElementsAre(0x0fa5dd70, 0x047790da));
}

TEST(MemberIds, OfUnionsLeaveRoomForTheDiscriminator)
{
    const Model model = modelOf("union U switch (long) { case 1: long a; case 2: @id(9) long b; };");
    EXPECT_EQ(typeIn<UnionType>(model, "U").cases[0].id, 1U);
    EXPECT_EQ(typeIn<UnionType>(model, "U").cases[1].id, 9U);
}

TEST(Annotations, MarkMembers)
{
    const Model model = modelOf("struct S { @key @must_understand long a; @optional @external long b; "
                                "@key(FALSE) @try_construct(TRIM) string<3> c; @try_construct long d; };");
    const auto& members = typeIn<StructType>(model, "S").members;
    EXPECT_TRUE(members[0].key && members[0].mustUnderstand && !members[0].optional);
    EXPECT_TRUE(members[1].optional && members[1].external && !members[1].key);
    EXPECT_FALSE(members[2].key);
    EXPECT_EQ(members[2].tryConstruct, TryConstruct::Trim);
    EXPECT_EQ(members[3].tryConstruct, TryConstruct::UseDefault);
}

TEST(Annotations, GiveDefaultsOfTheMembersType)
{
    const Model model = modelOf(
        "enum E { A, B }; struct S { @default(7) octet a; @default(1) double b; @default(\"x\") string c; "
        "@default(B) E d; @default(value = TRUE) boolean e; @default(-3) long f; @default('c') char g; };");
    std::vector<std::string> defaults;
    for (const Member& member : typeIn<StructType>(model, "S").members) {
        defaults.push_back(toString(member.defaultValue.value()));
    }
    EXPECT_THAT(defaults, ElementsAre("7", "1.0", "\"x\"", "B", "TRUE", "-3", "'c'"));
    EXPECT_EQ(typeIn<StructType>(model, "S").members[0].defaultValue, Value(std::uint64_t{7}));
}

TEST(Annotations, GiveUnitAndRangeAndTakeThemFromTheAlias)
{
    const Model model = modelOf(
        "@unit(\"deg\") @range(min = -90, max = 90) typedef double Angle;"
        "struct S { Angle a; @unit(\"rad\") @max(45.5) Angle b; @min(0) long c[2]; @range(1, 2) long d; };");
    const auto& type = typeIn<StructType>(model, "S");
    EXPECT_EQ(memberOf(type, "a").unit, "deg");
    EXPECT_EQ(memberOf(type, "a").minimum, Value(-90.0));
    EXPECT_EQ(memberOf(type, "b").unit, "rad");
    EXPECT_EQ(memberOf(type, "b").minimum, Value(-90.0));
    EXPECT_EQ(memberOf(type, "b").maximum, Value(45.5));
    EXPECT_EQ(memberOf(type, "c").minimum, Value(std::int64_t{0}));
    EXPECT_EQ(memberOf(type, "d").maximum, Value(std::int64_t{2}));
}

TEST(Annotations, DecideTheExtensibility)
{
    ParseOptions options = optionsWith({});
    options.extensibility = Extensibility::Final;
    const Model model =
        modelOf("struct A { long a; }; @mutable struct B { long a; }; "
                "@extensibility(APPENDABLE) struct C { long a; }; @final(FALSE) struct D { long a; };",
                options);
    EXPECT_EQ(typeIn<StructType>(model, "A").extensibility, Extensibility::Final);
    EXPECT_EQ(typeIn<StructType>(model, "B").extensibility, Extensibility::Mutable);
    EXPECT_EQ(typeIn<StructType>(model, "C").extensibility, Extensibility::Appendable);
    EXPECT_EQ(typeIn<StructType>(model, "D").extensibility, Extensibility::Final);
    const Model usual = modelOf("struct A { long a; };");
    EXPECT_EQ(typeIn<StructType>(usual, "A").extensibility, Extensibility::Appendable);
}

TEST(Annotations, AreMissingInIncludedFilesOfWhichOthersDecide)
{
    ParseOptions options = optionsWith({{"parts/a.idl", "struct A { long a; }; @final struct B { long b; };"},
                                        {"parts/inner/c.idl", "union C switch (long) { case 1: long c; };"},
                                        {"parts.idl", "struct D { long d; };"}});
    const std::string definition = "#include \"parts/a.idl\"\n#include \"parts/inner/c.idl\"\n"
                                   "#include \"parts.idl\"\nstruct E { A a; };";
    options.extensibility = Extensibility::Final;
    EXPECT_EQ(typeIn<StructType>(modelOf(definition, options), "A").extensibility, Extensibility::Final);
    options.includedExtensibilities = {{"parts", Extensibility::Mutable},
                                       {"parts/inner/c.idl", Extensibility::Appendable}};
    const Model model = modelOf(definition, options);
    EXPECT_EQ(typeIn<StructType>(model, "A").extensibility, Extensibility::Mutable);
    EXPECT_EQ(typeIn<StructType>(model, "B").extensibility, Extensibility::Final);
    EXPECT_EQ(typeIn<UnionType>(model, "C").extensibility, Extensibility::Appendable);
    EXPECT_EQ(typeIn<StructType>(model, "D").extensibility, Extensibility::Final);
    EXPECT_EQ(typeIn<StructType>(model, "E").extensibility, Extensibility::Final);
}

TEST(Annotations, MayStandBeforeTheTypeOfATypedefAndBeforeLabels)
{
    const Model model =
        modelOf("typedef @unit(\"m\") @min(0.0) double Length; @unit(\"s\") typedef @max(1) long Time;"
                "union U switch (long) { @id(7) case 1: @default(3) long a; "
                "case 2: @id(9) case 3: long b; @unit(\"m\") default: long c; };");
    EXPECT_EQ(typeIn<AliasType>(model, "Length").unit, "m");
    EXPECT_EQ(typeIn<AliasType>(model, "Length").minimum, Value(0.0));
    EXPECT_EQ(typeIn<AliasType>(model, "Time").unit, "s");
    EXPECT_EQ(typeIn<AliasType>(model, "Time").maximum, Value(std::int64_t{1}));
    const auto& cases = typeIn<UnionType>(model, "U").cases;
    EXPECT_EQ(cases[0].id, 7U);
    EXPECT_EQ(cases[0].defaultValue, Value(std::int64_t{3}));
    EXPECT_EQ(cases[1].id, 9U);
    EXPECT_EQ(cases[2].unit, "m");
}

TEST(Annotations, AreKeptAsTheyWereWritten)
{
    const Model model =
        modelOf("@annotation mark { long a; string b; };\n@mark(a = 1 + 2, b = \"x\") struct S { long a; };");
    const Annotation& annotation = typeIn<StructType>(model, "S").annotations.at(0);
    EXPECT_EQ(annotation.name, "mark");
    ASSERT_EQ(annotation.parameters.size(), 2U);
    EXPECT_EQ(annotation.parameters[0].name, "a");
    EXPECT_EQ(annotation.parameters[0].text, "1+2");
    EXPECT_EQ(annotation.parameters[1].text, "\"x\"");
    EXPECT_EQ(annotation.location.line, 2U);
}

TEST(Annotations, CarryTextForTheOutput)
{
    const Model model =
        modelOf("@verbatim(language = \"C++\", placement = AFTER_DECLARATION, text = \"// a\")"
                "@verbatim(text = \"b\") struct S { long a; };");
    const auto& all = typeIn<StructType>(model, "S").verbatim;
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].language, "c++");
    EXPECT_EQ(all[0].placement, "AFTER_DECLARATION");
    EXPECT_EQ(all[0].text, "// a");
    EXPECT_EQ(all[1].language, "*");
}

TEST(Annotations, ThatAreUnknownAreWarnedOfOnce)
{
    EXPECT_THAT(complaintsOf("struct S { @nosuch long a; @nosuch(3) long b; };"),
                ElementsAre("1:12: unknown annotation @nosuch has no effect"));
}

TEST(StrictCase, RefusesNamesThatDifferFromKeywordsInCaseOnly)
{
    ParseOptions options = optionsWith({});
    options.strictCase = true;
    EXPECT_THAT(complaintsOf("enum Short { A };", options),
                ElementsAre("1:6: \"Short\" is a keyword, or differs from one in case only"));
    EXPECT_THAT(complaintsOf("enum Short { A };"), testing::IsEmpty());
}

} // namespace

} // namespace plex::test
