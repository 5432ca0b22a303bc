// SPDX-License-Identifier: Apache-2.0
// The program plex-idl: checks interface definitions, and says what is in them.
#include "Arguments.hpp"

#include <plex/idl/Json.hpp>

#include <exception>
#include <iostream>

namespace
{

using namespace ovra::plex::idl; // NOLINT(google-build-using-namespace): it is the program to that library

void list(const Model& model, TopicSelection selection)
{
    for (const TopicVerdict& verdict : judgeTopics(model, selection)) {
        std::cout << (verdict.isTopic ? "topic  " : "part   ") << verdict.type->scopedName << " ("
                  << verdict.reason << ")\n";
    }
}

/// @returns whether it went well.
bool run(const Arguments& arguments)
{
    const ParseResult result = parseFiles(arguments.files, arguments.parsing);
    std::cerr << toString(result.diagnostics);
    if (!result.model || (!arguments.warnings.empty() && result.diagnostics.warnings() > 0)) {
        return false;
    }
    if (arguments.list) {
        list(*result.model, arguments.topics);
    } else if (!arguments.dump.empty()) {
        std::cout << toJson(*result.model);
    }
    std::cout.flush();
    return std::cout.good();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        int exitCode = 0;
        const auto arguments = readArguments(argc, argv, exitCode);
        return arguments ? (run(*arguments) ? 0 : 1) : exitCode;
    } catch (const std::exception& error) {
        std::cerr << "plex-idl: error: " << error.what() << "\n";
        return 1;
    }
}
