// SPDX-License-Identifier: Apache-2.0
#include "Program.hpp"

#include <gmock/gmock.h>

#include <chrono>

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
    static constexpr const char* definition = "module m { struct A { long a; }; };";

    std::string write(const std::string& name, const std::string& text) const
    {
        return work_.write(name, text);
    }

    fs::path work() const { return work_.path(); }

    /// What is below a folder, as paths relative to it.
    static std::vector<std::string> filesIn(const fs::path& folder)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (!entry.is_directory()) {
                names.push_back(entry.path().lexically_relative(folder));
            }
        }
        std::ranges::sort(names);
        return names;
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

TEST_F(Program, HasNothingAgainstFilesWithoutTopicsUnlessItIsToGenerate)
{
    const std::string end = "; or choose --topics none for types that are there for others";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "define a struct: it is a topic where nothing contains it" + end},
        {"module m { const long C = 1; enum E { A }; };",
         "define a struct: it is a topic where nothing contains it" + end},
        {"module m { @nested struct S { long l; }; };",
         "annotate a struct with @topic, --list says why one is none" + end}};
    for (const auto& [text, hint] : cases) {
        const std::string file = write("a.idl", text);
        const Outcome check = plexIdl({file, "--check", "-Werror"});
        EXPECT_EQ(check.exitCode, 0) << text;
        EXPECT_EQ(check.output + check.errors, "");
        const Outcome outcome = plexIdl({file, "-o", work() / "output"});
        EXPECT_EQ(outcome.exitCode, 1) << text;
        EXPECT_EQ(outcome.errors, file + ": error: there is no topic\nhint: " + hint + "\n");
        EXPECT_FALSE(fs::exists(work() / "output"));
        EXPECT_EQ(plexIdl({file, "-o", work() / "parts", "--topics", "none"}).exitCode, 0) << text;
        EXPECT_EQ(textOf(work() / "parts/dds/modules.txt"), "");
    }
}

TEST_F(Program, WarnsOfEncodingsThatDifferUnlessOneIsChosen)
{
    const std::string file = write(
        "a.idl", "module m { enum E { A }; struct T { @key long a; @key double b; sequence<E> e; }; };");
    const Outcome outcome = plexIdl({file, "--check"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.errors,
                HasSubstr(":1:77: warning: in XCDR version 2 no delimiter stands before the enums"));
    EXPECT_THAT(outcome.errors, HasSubstr(":1:62: warning: with the key \"b\" of \"m::T\" hashes differ"));
    EXPECT_EQ(plexIdl({file, "--check", "-Werror"}).exitCode, 1);
    for (const std::string delimiters : {"none", "standard"}) {
        for (const std::string hash : {"xcdr1", "xcdr2"}) {
            const Outcome chosen =
                plexIdl({file, "--check", "-Werror", "--enum-delimiters", delimiters, "--key-hash", hash});
            EXPECT_EQ(chosen.exitCode, 0);
            EXPECT_EQ(chosen.errors, "");
        }
    }
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

TEST_F(Program, WritesTheSourceFilesOfATopic)
{
    const fs::path output = work() / "new/folder";
    const Outcome outcome = plexIdl({write("a.idl", definition), "-o", output});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output + outcome.errors, "");
    EXPECT_EQ(filesIn(output),
              (std::vector<std::string>{
                  "dds/A.cpp", "dds/A.hpp", "dds/AAdapter.cpp", "dds/AAdapter.hpp", "dds/ACdr.cpp",
                  "dds/ACdr.hpp", "dds/ADescription.cpp", "dds/AFactories.cpp", "dds/APubSubType.cpp",
                  "dds/APubSubType.hpp", "dds/Factories.hpp", "dds/modules.txt", "dds/shard0.cpp",
                  "include/m/A.hpp", "include/m/Values.hpp", "src/A.cpp", "src/shard0.cpp"}));
}

TEST_F(Program, LeavesAFileThatDoesNotChangeAsItIs)
{
    const fs::path output = work() / "output";
    const fs::path kept = output / "include/m/A.hpp";
    const fs::path changed = output / "dds/A.hpp";
    ASSERT_EQ(plexIdl({write("a.idl", definition), "-o", output}).exitCode, 0);
    const auto past = fs::last_write_time(kept) - std::chrono::hours(1);
    fs::last_write_time(kept, past);
    write("output/dds/A.hpp", "something else");
    ASSERT_EQ(plexIdl({work() / "a.idl", "-o", output}).exitCode, 0);
    EXPECT_EQ(fs::last_write_time(kept), past);
    EXPECT_THAT(textOf(changed), HasSubstr("class PLEX_EXPORT A"));
}

TEST_F(Program, WritesNothingWhereSomethingIsWrong)
{
    const fs::path output = work() / "output";
    const std::string text = "module m { struct A { long wind_speed; long windSpeed; }; };";
    const std::string file = write("a.idl", text);
    const Outcome outcome = plexIdl({file, "-o", output});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, file +
                                  ":1:45: error: \"windSpeed\" and \"wind_speed\" would both be read with "
                                  "getWindSpeed()\n" +
                                  text + "\n" + std::string(44, ' ') + "^\nhint: rename one of them\n");
    EXPECT_FALSE(fs::exists(output));
}

TEST_F(Program, WritesNothingWhereItOnlyChecks)
{
    const fs::path output = work() / "output";
    EXPECT_EQ(plexIdl({write("a.idl", definition), "-o", output, "--check"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(output));
}

TEST_F(Program, ChangesNothingWhereAFileCanNotBeWritten)
{
    const fs::path output = work() / "output";
    fs::create_directories(output / "dds/A.hpp");
    write("output/include/m/A.hpp", "as it was");
    const Outcome outcome = plexIdl({write("a.idl", definition), "-o", output});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors,
              "plex-idl: error: cannot write " + (output / "dds/A.hpp").string() + ", which is a folder\n");
    EXPECT_EQ(filesIn(output), std::vector<std::string>{"include/m/A.hpp"});
    EXPECT_EQ(textOf(output / "include/m/A.hpp"), "as it was");
}

TEST_F(Program, SaysWhichFilesItRead)
{
    write("part of it.idl", "module m { struct Part { long a; }; };");
    const std::string whole =
        write("whole.idl", "#include \"part of it.idl\"\nmodule m { struct A { long a; }; };");
    const std::string folder = work();
    const fs::path depfile = work() / "d/whole.d";
    ASSERT_EQ(plexIdl({whole, "-o", folder + "/out", "--depfile", depfile, "--shards", "2"}).exitCode, 0);
    EXPECT_EQ(textOf(depfile), folder + "/out/dds/shard0.cpp " + folder + "/out/dds/shard1.cpp " + folder +
                                   "/out/src/shard0.cpp: \\\n  " + whole + " \\\n  " + folder +
                                   "/part\\ of\\ it.idl\n");
}

} // namespace

} // namespace plex::test
