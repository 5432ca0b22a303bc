// SPDX-License-Identifier: Apache-2.0
#include "Arguments.hpp"

#include <CLI/CLI.hpp>

#include <map>

namespace ovra::plex::idl
{

namespace
{

/// An option that is one of some words, each of which stands for a value.
template <class T>
void addWords(CLI::App& app, const std::string& name, T& value, const std::map<std::string, T>& words,
              const std::string& help)
{
    const auto assign = [&value, words](const std::string& word) {
        value = words.at(word);
    };
    app.add_option_function<std::string>(name, assign, help)->check(CLI::IsMember(words))->type_name("WORD");
}

void addReading(CLI::App& app, Arguments& arguments)
{
    ParseOptions& parsing = arguments.parsing;
    app.add_option("FILE", arguments.files, "The definitions")->required();
    app.add_option("-I", parsing.includeDirectories, "Look for included files in this folder too")
        ->type_name("DIRECTORY")
        ->allow_extra_args(false);
    app.add_option("-D", parsing.definitions, "Define a macro")
        ->type_name("NAME[=VALUE]")
        ->allow_extra_args(false);
    addWords<Extensibility>(
        app, "--extensibility", parsing.extensibility,
        {{"final", Extensibility::Final},
         {"appendable", Extensibility::Appendable},
         {"mutable", Extensibility::Mutable}},
        "Of types that say nothing: final, appendable (unless said otherwise) or mutable");
    app.add_flag("--strict-case", parsing.strictCase,
                 "Refuse names that only their case tells from a keyword");
    app.add_option("-W", arguments.warnings, "Take warnings for errors: -Werror")
        ->check(CLI::IsMember({"error"}))
        ->type_name("error");
}

void addActions(CLI::App& app, Arguments& arguments)
{
    addWords<TopicSelection>(
        app, "--topics", arguments.topics,
        {{"auto", TopicSelection::Automatic},
         {"annotated", TopicSelection::Annotated},
         {"all", TopicSelection::All}},
        "Which structs are topics: annotated, all, or auto (unless said otherwise), that is those "
        "annotated @topic, or where none is, those that no other type holds or extends");
    auto* const list =
        app.add_flag("--list", arguments.list, "Say of each struct whether it is a topic, and why");
    auto* const check = app.add_flag("--check", arguments.check, "Say what is wrong, and write nothing");
    auto* const dump = app.add_option("--dump", arguments.dump, "Write the model to the standard output")
                           ->check(CLI::IsMember({"json"}))
                           ->type_name("json");
    list->excludes(check)->excludes(dump);
    check->excludes(dump);
}

} // namespace

std::optional<Arguments> readArguments(int argc, const char* const* argv, int& exitCode)
{
    Arguments arguments;
    CLI::App app("Turns interface definitions into a module", "plex-idl");
    app.set_version_flag("--version", "plex-idl " PLEX_VERSION);
    addReading(app, arguments);
    addActions(app, arguments);
    try {
        app.parse(argc, argv);
        return arguments;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? 0 : 1;
        return std::nullopt;
    }
}

} // namespace ovra::plex::idl
