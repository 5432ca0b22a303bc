// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"
#include "TemporaryDirectory.hpp"

#include <plex/common/SharedLibrary.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <filesystem>
#include <string>

namespace plex::test
{

namespace
{

using ovra::plex::LibrarySymbol;
using ovra::plex::loadFunction;
using testing::HasSubstr;
using testing::StartsWith;

const std::string modulesDirectory = PLEX_TEST_MODULES_DIR;
const LibrarySymbol hollow{"libplex-dds-hollow.so", "hollow"};

int call(void (*function)())
{
    return reinterpret_cast<int (*)()>(function)();
}

} // namespace

TEST(SharedLibrary, GivesAFunctionOfALibraryInADirectory)
{
    EXPECT_EQ(call(loadFunction(hollow, {modulesDirectory})), 7);
}

TEST(SharedLibrary, IsTheSameEachTimeAndStaysLoaded)
{
    auto* const function = loadFunction(hollow, {modulesDirectory});
    EXPECT_EQ(loadFunction(hollow, {modulesDirectory}), function);
    void* const loaded = dlopen((modulesDirectory + "/" + hollow.library).c_str(), RTLD_NOW | RTLD_NOLOAD);
    EXPECT_NE(loaded, nullptr);
    dlclose(loaded);
}

TEST(SharedLibrary, IsSearchedInTheDirectoriesInOrder)
{
    const TemporaryDirectory empty;
    EXPECT_EQ(call(loadFunction(hollow, {"/no/such/directory", empty.path(), modulesDirectory})), 7);
}

TEST(SharedLibrary, IsTakenFromTheFirstDirectoryThatHasIt)
{
    const TemporaryDirectory first;
    const auto scrap = first.write(hollow.library, "this is no library\n");
    const auto text = refusalOf([&] { loadFunction(hollow, {first.path(), modulesDirectory}); });
    EXPECT_THAT(text, StartsWith("Cannot load library " + scrap + " for symbol hollow: "));
    EXPECT_THAT(text, HasSubstr("file too short"));
}

TEST(SharedLibrary, IsLookedForOnTheLoadersPathAfterTheDirectories)
{
    EXPECT_NE(loadFunction({"libc.so.6", "puts"}, {modulesDirectory}), nullptr);
    EXPECT_NE(loadFunction({"libc.so.6", "puts"}, {}), nullptr);
}

TEST(SharedLibrary, ThatIsMissingIsNamedWithTheSymbolAndTheLoadersWords)
{
    EXPECT_EQ(
        refusalOf([] { loadFunction({"libplex-dds-nowhere.so", "wanted"}, {modulesDirectory}); }),
        "Cannot load library libplex-dds-nowhere.so for symbol wanted: libplex-dds-nowhere.so: cannot open "
        "shared object file: No such file or directory");
}

TEST(SharedLibrary, ThatIsNoLibraryIsNamedWithTheLoadersWords)
{
    const TemporaryDirectory directory;
    const auto scrap = directory.write("libscrap.so", std::string(4096, 'x'));
    EXPECT_EQ(refusalOf([&] { loadFunction({"libscrap.so", "wanted"}, {directory.path()}); }),
              "Cannot load library " + scrap + " for symbol wanted: " + scrap + ": invalid ELF header");
}

TEST(SharedLibrary, ThatIsADirectoryIsNamedWithTheLoadersWords)
{
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() + "/libfolder.so");
    EXPECT_THAT(refusalOf([&] { loadFunction({"libfolder.so", "wanted"}, {directory.path()}); }),
                StartsWith("Cannot load library " + directory.path() + "/libfolder.so for symbol wanted: "));
}

TEST(SharedLibrary, ThatLacksTheSymbolIsNamedWithTheLoadersWords)
{
    const auto text = refusalOf([] { loadFunction({hollow.library, "wanted"}, {modulesDirectory}); });
    EXPECT_THAT(text, StartsWith("Library libplex-dds-hollow.so lacks symbol wanted: "));
    EXPECT_THAT(text, HasSubstr("undefined symbol: wanted"));
}

TEST(SharedLibrary, ThatWasLinkedWithoutAFunctionNamesItAsTheSourceDoes)
{
    const auto text =
        refusalOf([&] { loadFunction({"libplex-dds-lacking.so", "lacking"}, {modulesDirectory}); });
    EXPECT_THAT(text, testing::EndsWith("; it was linked without absent::function(double)"));
}

} // namespace plex::test
