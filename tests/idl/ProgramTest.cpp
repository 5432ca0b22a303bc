// SPDX-License-Identifier: Apache-2.0
#include "Program.hpp"

#include <gmock/gmock.h>

namespace plex::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Program : public testing::Test
{
protected:
    std::string write(const std::string& name, const std::string& text) const
    {
        return work_.write(name, text);
    }

private:
    WorkDirectory work_;
};

TEST_F(Program, SaysItsVersion)
{
    const Outcome outcome = plexIdl({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "plex-idl " PLEX_TEST_VERSION "\n");
}

TEST_F(Program, SaysHowItIsCalled)
{
    const Outcome outcome = plexIdl({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("plex-idl [OPTIONS] FILE..."));
}

TEST_F(Program, RefusesACommandLineThatItDoesNotKnow)
{
    const std::string file = write("a.idl", "");
    EXPECT_THAT(plexIdl({}).errors, StartsWith("FILE is required"));
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {file, "--nosuch"},
                                               {file, "--topics", "some"},
                                               {file, "--extensibility", "FINAL"},
                                               {file, "--dump", "xml"},
                                               {file, "-Wall"},
                                               {file, "--list", "--check"}}) {
        const Outcome outcome = plexIdl(arguments);
        EXPECT_EQ(outcome.exitCode, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(outcome.errors, "");
    }
}

TEST_F(Program, SaysWhatIsWrongOnItsStandardError)
{
    const std::string file = write("a.idl", "module m { struct S { Unknown a; }; };");
    const Outcome outcome = plexIdl({file, "--check"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith(file + ":1:23: error: unknown type \"Unknown\"\n"));
}

TEST_F(Program, SaysNothingOfWhatIsRight)
{
    const Outcome outcome = plexIdl({write("a.idl", "module m { struct S { long a; }; };"), "--check"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output + outcome.errors, "");
}

TEST_F(Program, CannotReadAFileThatIsNotThere)
{
    const Outcome outcome = plexIdl({"/nowhere/a.idl", "--check"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "/nowhere/a.idl: error: cannot read the file\n");
}

TEST_F(Program, TakesWarningsForErrorsWhereAsked)
{
    const std::string file = write("a.idl", "module m { struct S { @nosuch long a; }; };");
    EXPECT_EQ(plexIdl({file, "--check"}).exitCode, 0);
    const Outcome outcome = plexIdl({file, "--check", "-Werror"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("warning: "));
}

TEST_F(Program, ListsWhichStructsAreTopics)
{
    const std::string file = write("a.idl", "module m { struct A { long a; }; struct B { A a; }; };");
    EXPECT_EQ(plexIdl({file, "--list"}).output,
              "part   m::A (m::B contains it)\ntopic  m::B (nothing contains or extends it)\n");
    EXPECT_EQ(plexIdl({file, "--list", "--topics", "all"}).output,
              "topic  m::A (all structs are)\ntopic  m::B (all structs are)\n");
}

TEST_F(Program, WritesTheModel)
{
    const std::string file = write("a.idl", "module m { struct A { long a; }; };");
    const Outcome outcome = plexIdl({file, "--dump", "json", "--extensibility", "mutable"});
    EXPECT_THAT(outcome.output, StartsWith("{"));
    EXPECT_THAT(outcome.output, EndsWith("}\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\"mutable\""));
}

TEST_F(Program, LooksForIncludedFilesAndKnowsMacros)
{
    const std::string common = write("include/common.idl", "module m { struct Part { long a; }; };");
    const std::string file = write(
        "a.idl", "#include <common.idl>\n#if LIMIT == 3\nmodule m { struct A { Part p; }; };\n#endif\n");
    const std::string folder = fs::path(common).parent_path();
    EXPECT_EQ(plexIdl({file, "--list", "-I" + folder, "-DLIMIT=3"}).output,
              "topic  m::A (nothing contains or extends it)\n");
    EXPECT_EQ(plexIdl({file, "--list", "-I", folder, "-D", "LIMIT=2"}).output, "");
    EXPECT_EQ(plexIdl({file, "--list", "-DLIMIT=3"}).exitCode, 1);
}

TEST_F(Program, ReadsSeveralFilesAsOne)
{
    const std::string part = write("part.idl", "module m { struct Part { long a; }; };");
    const std::string whole =
        write("whole.idl", "#include \"part.idl\"\nmodule m { struct Whole { Part p; }; };");
    const std::string expected =
        "part   m::Part (m::Whole contains it)\ntopic  m::Whole (nothing contains or extends it)\n";
    EXPECT_EQ(plexIdl({whole, part, "--list"}).output, expected);
    EXPECT_EQ(plexIdl({part, whole, "--list"}).output, expected);
    EXPECT_EQ(plexIdl({part, part, "--list"}).output, "topic  m::Part (nothing contains or extends it)\n");
}

TEST_F(Program, RefusesNamesLikeKeywordsWhereAsked)
{
    const std::string file = write("a.idl", "module m { struct S { long String; }; };");
    EXPECT_EQ(plexIdl({file, "--check"}).exitCode, 0);
    EXPECT_EQ(plexIdl({file, "--check", "--strict-case"}).exitCode, 1);
}

} // namespace

} // namespace plex::test
