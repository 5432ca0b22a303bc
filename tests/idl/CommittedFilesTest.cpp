// SPDX-License-Identifier: Apache-2.0
// What is committed of modules is what plex-idl makes of their definitions.
#include "Program.hpp"

#include <gmock/gmock.h>

#include <map>

namespace plex::test
{

namespace
{

using Texts = std::map<std::string, std::string>; ///< of files, by their paths below a folder

Texts sourcesIn(const fs::path& folder)
{
    Texts texts;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::path& path = entry.path();
        if (path.extension() == ".hpp" || path.extension() == ".cpp") {
            texts[path.lexically_relative(folder)] = textOf(path);
        }
    }
    return texts;
}

void format(const fs::path& folder)
{
    for (const auto& [name, text] : sourcesIn(folder)) {
        const Outcome outcome =
            run({PLEX_TEST_CLANG_FORMAT, "-i", "--style=file:" PLEX_TEST_PROJECT "/.clang-format",
                 (folder / name).string()});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    }
}

std::vector<std::string> namesOf(const Texts& texts)
{
    std::vector<std::string> names;
    for (const auto& [name, text] : texts) {
        names.push_back(name);
    }
    return names;
}

void expectSame(const Texts& committed, const Texts& generated)
{
    EXPECT_EQ(namesOf(committed), namesOf(generated));
    for (const auto& [name, text] : generated) {
        EXPECT_EQ(committed.at(name), text) << name;
    }
}

/// Where the parts of a module are committed, below the project.
struct CommittedModule {
    fs::path definition;
    fs::path include;
    fs::path src;
    fs::path dds;
};

void expectFresh(const CommittedModule& module)
{
    const fs::path project(PLEX_TEST_PROJECT);
    const WorkDirectory work;
    const Outcome outcome = plexIdl({project / module.definition, "-o", work.path(), "-Werror"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    fs::remove(work.path() / "dds/shard0.cpp"); // the project's build puts sources together in its own way
    fs::remove(work.path() / "src/shard0.cpp");
    format(work.path());
    expectSame(sourcesIn(project / module.include), sourcesIn(work.path() / "include"));
    expectSame(sourcesIn(project / module.src), sourcesIn(work.path() / "src"));
    expectSame(sourcesIn(project / module.dds), sourcesIn(work.path() / "dds"));
}

TEST(CommittedFiles, AreWhatTheGeneratorMakesOnceTheyAreFormatted)
{
    const fs::path platform("platform/plex-icd-vexstubif");
    expectFresh(
        {"generated/vexstubif/vexstubif.idl", platform / "include", platform / "src", "generated/vexstubif"});
}

TEST(CommittedFiles, OfTheTestsAreWhatTheGeneratorMakesOnceTheyAreFormatted)
{
    const fs::path keyed("tests/support/keyed");
    expectFresh({keyed / "keyed.idl", keyed / "include", keyed / "src", keyed / "dds"});
}

} // namespace

} // namespace plex::test
