// SPDX-License-Identifier: Apache-2.0
// The program plex-idl: from interface definitions to the source files of their module.
#include "Arguments.hpp"
#include "Output.hpp"

#include <plex/idl/Json.hpp>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace ovra::plex::idl; // NOLINT(google-build-using-namespace): it is the program to that library

/// A line of a file; empty where it can not be read.
std::string lineOf(const std::string& path, std::uint32_t number)
{
    std::ifstream file(path);
    std::string line;
    for (std::uint32_t i = 0; i < number && std::getline(file, line); ++i) {
    }
    return line;
}

/// A model does not hold the text that it is made of, so what the generator says comes without it.
Diagnostics withLines(const Diagnostics& diagnostics)
{
    Diagnostics result;
    for (Diagnostic diagnostic : diagnostics.all()) {
        if (diagnostic.line > 0 && diagnostic.sourceLine.empty()) {
            diagnostic.sourceLine = lineOf(diagnostic.file, diagnostic.line);
        }
        result.add(std::move(diagnostic));
    }
    return result;
}

/// @returns whether they allow to go on.
bool report(const Diagnostics& diagnostics, const Arguments& arguments)
{
    std::cerr << toString(withLines(diagnostics));
    const bool warningsCount = !arguments.warnings.empty();
    return diagnostics.errors() == 0 && (!warningsCount || diagnostics.warnings() == 0);
}

void list(const Model& model, TopicSelection selection)
{
    for (const TopicVerdict& verdict : judgeTopics(model, selection)) {
        std::cout << (verdict.isTopic ? "topic  " : "part   ") << verdict.type->scopedName << " ("
                  << verdict.reason << ")\n";
    }
}

/// Writes which files were read: what is compiled depends on them.
void writeDependencies(const Arguments& arguments, const Generation& generation, const Model& model)
{
    std::vector<std::string> targets;
    for (const GeneratedFile& file : generation.files) {
        if (file.path.find("/shard") != std::string::npos) {
            targets.push_back(
                (std::filesystem::path(arguments.output) / file.path).lexically_normal().string());
        }
    }
    std::vector<std::string> read(model.files.size());
    std::ranges::transform(model.files, read.begin(), &SourceFile::path);
    const std::filesystem::path path(arguments.depfile);
    writeFiles(path.parent_path(), {{path.filename().string(), dependencies(targets, read)}});
}

/// @returns whether it went well.
bool write(const Arguments& arguments, const Model& model)
{
    GenerateOptions options = arguments.generation;
    options.definitionsOnly = arguments.check;
    const Generation generation = generate(model, options);
    if (!report(generation.diagnostics, arguments)) {
        return false;
    }
    if (!arguments.check) {
        writeFiles(arguments.output, generation.files);
    }
    if (!arguments.check && !arguments.depfile.empty()) {
        writeDependencies(arguments, generation, model);
    }
    return true;
}

/// @returns whether it went well.
bool run(const Arguments& arguments)
{
    const ParseResult result = parseFiles(arguments.files, arguments.parsing);
    if (!report(result.diagnostics, arguments) || !result.model) {
        return false;
    }
    if (!arguments.list && arguments.dump.empty()) {
        return write(arguments, *result.model);
    }
    if (arguments.list) {
        list(*result.model, arguments.generation.topics);
    } else {
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
        if (const auto arguments = readArguments(argc, argv, exitCode)) {
            exitCode = run(*arguments) ? 0 : 1;
        }
        return exitCode;
    } catch (const std::exception& error) {
        std::cerr << "plex-idl: error: " << error.what() << "\n";
        return 1;
    }
}
