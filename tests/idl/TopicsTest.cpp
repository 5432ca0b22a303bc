// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <plex/idl/Topics.hpp>

namespace plex::test
{

namespace
{

using testing::ElementsAre;

/// "name: reason" of each struct, with + before it where it is a topic.
std::vector<std::string> verdictsOn(const Model& model, TopicSelection selection = TopicSelection::Automatic)
{
    std::vector<std::string> verdicts;
    for (const TopicVerdict& verdict : judgeTopics(model, selection)) {
        verdicts.push_back((verdict.isTopic ? "+" : "-") + verdict.type->scopedName + ": " + verdict.reason);
    }
    return verdicts;
}

TEST(Topics, AreWhatNothingContainsOrExtends)
{
    const Model model =
        modelOf("struct A { long a; }; struct B { sequence<A> all[2]; }; struct C : B { long c; };"
                "struct D { long d; }; union U switch (long) { case 1: D d; }; @nested struct E { long e; };"
                "struct F { sequence<F> more; };");
    EXPECT_THAT(verdictsOn(model),
                ElementsAre("-A: B contains it", "-B: C extends it", "+C: nothing contains or extends it",
                            "-D: U contains it", "-E: it is nested", "+F: nothing contains or extends it"));
    EXPECT_EQ(topics(model).size(), 2U);
    EXPECT_EQ(topics(model, TopicSelection::All).size(), 6U);
    EXPECT_TRUE(topics(model, TopicSelection::Annotated).empty());
}

TEST(Topics, AreThoseAnnotatedWhereSomeAre)
{
    const Model model = modelOf("@topic struct A { long a; }; struct B { A a; };");
    EXPECT_THAT(verdictsOn(model),
                ElementsAre("+A: annotated @topic", "-B: not annotated @topic, as others are"));
}

TEST(Topics, AreNotThoseOfIncludedFiles)
{
    const Model model = modelOf("#include \"a.idl\"\nstruct B { A a; };",
                                optionsWith({{"a.idl", "@topic struct A { long a; };"}}));
    EXPECT_THAT(verdictsOn(model), ElementsAre("+B: nothing contains or extends it"));
}

TEST(Topics, HeedTheDefaultOfTheModule)
{
    const Model model =
        modelOf("@default_nested module m { struct A { long a; }; @nested(FALSE) struct B { long b; }; };");
    EXPECT_THAT(verdictsOn(model),
                ElementsAre("-m::A: it is nested", "+m::B: nothing contains or extends it"));
}

} // namespace

} // namespace plex::test
