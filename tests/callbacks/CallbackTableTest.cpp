// SPDX-License-Identifier: Apache-2.0
#include "ChildProcess.hpp"
#include "RunPair.hpp"
#include "Stage.hpp"
#include "Table.hpp"
#include "Watchdog.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace plex::test::callbacks
{

namespace
{

constexpr int silent = -1;

std::string described(int status)
{
    if (status == silent) {
        return "hangs, and can not say where";
    }
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == Watchdog::exitCode ? "hangs"
                                                     : "exit code " + std::to_string(WEXITSTATUS(status));
}

/// The part of a document between two marks.
std::string partOf(const std::string& document, const std::string& name)
{
    std::ifstream file(document);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::string begin = "<!-- " + name + " -->\n";
    const auto from = text.find(begin);
    const auto to = text.find("<!-- /" + name + " -->");
    return from == std::string::npos || to == std::string::npos
               ? ""
               : text.substr(from + begin.size(), to - from - begin.size());
}

} // namespace

/// What runs a callback, and what is asked for in it. Each pair in a process of its own, so that one that
/// hangs or crashes leaves the others alone.
class CallbackPair : public testing::TestWithParam<Pair>
{
};

TEST_P(CallbackPair, DoesWhatTheTableSays)
{
    constexpr auto further = std::chrono::seconds(10); // for sanitizers to look for leaks
    ChildProcess process({"--pair", GetParam().word()}, true);
    const int status = process.exitStatus(patience + further).value_or(silent);
    EXPECT_EQ(status, 0) << GetParam() << ": " << described(status);
}

INSTANTIATE_TEST_SUITE_P(Pairs, CallbackPair, testing::ValuesIn(allPairs()),
                         testing::PrintToStringParamName());

TEST(CallbackTable, StandsInTheGuide)
{
    std::ostringstream table;
    printTable(table);
    EXPECT_EQ(partOf(GUIDE, "callback table"), table.str())
        << "copy what callback-tests --print-table prints";
}

TEST(CallbackTable, HoldsEachWordOnce)
{
    std::set<std::string> words;
    for (const auto& row : table()) {
        for (const char* word : row.asked) {
            EXPECT_TRUE(words.insert(word).second) << word;
        }
    }
    EXPECT_GT(words.size(), 50U);
}

} // namespace plex::test::callbacks

namespace
{

using namespace plex::test::callbacks;

int runPairCalled(std::string_view word)
{
    const auto pairs = allPairs();
    const auto found = std::ranges::find_if(pairs, [&](const Pair& pair) { return pair.word() == word; });
    if (found == pairs.end()) {
        std::cerr << "no pair is called " << word << '\n';
        return 2;
    }
    return runPair(*found);
}

/// Carries out what the arguments ask for. @returns the exit code.
int run(int argc, char** argv)
{
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "--print-table") {
        printTable(std::cout);
        return 0;
    }
    if (command == "--pair" && argc == 3) {
        return runPairCalled(argv[2]);
    }
    if (command == "--peer" && argc == 3) {
        runPeer(argv[2]);
        return 0;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

} // namespace

// Usage: callback-tests [--print-table | --pair WORD | --peer URI | ARGUMENT OF GOOGLETEST…]
// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "callback-tests: " << error.what() << '\n';
        return 1;
    }
}
