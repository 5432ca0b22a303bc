// SPDX-License-Identifier: Apache-2.0
#include "Arguments.hpp"

#include <CLI/CLI.hpp>

#include <map>

namespace ovra::plex::idl
{

namespace
{

const std::map<std::string, Extensibility> extensibilities{{"final", Extensibility::Final},
                                                           {"appendable", Extensibility::Appendable},
                                                           {"mutable", Extensibility::Mutable}};

const std::map<std::string, TopicSelection> selections{{"auto", TopicSelection::Automatic},
                                                       {"annotated", TopicSelection::Annotated},
                                                       {"all", TopicSelection::All},
                                                       {"none", TopicSelection::None}};

const std::map<std::string, bool> delimiters{{"none", false}, {"standard", true}};

const std::map<std::string, XcdrVersion> keyVersions{{"xcdr1", XcdrVersion::Xcdr1},
                                                     {"xcdr2", XcdrVersion::Xcdr2}};

/// Options that are words, before they are looked up.
struct Words {
    std::string extensibility = "appendable";
    std::vector<std::string> includedExtensibilities; ///< PATH=WORD
    std::string topics = "auto";
    std::string enumDelimiters;
    std::string keyHash;
};

/// Nothing where nothing was chosen.
template <class T>
std::optional<T> chosen(const std::map<std::string, T>& words, const std::string& word)
{
    return word.empty() ? std::nullopt : std::optional(words.at(word));
}

/// What PATH=WORD says. @throws CLI::ValidationError
std::pair<std::string, Extensibility> extensibilityIn(const std::string& text)
{
    const std::size_t middle = text.rfind('=');
    const auto word = extensibilities.find(middle == std::string::npos ? "" : text.substr(middle + 1));
    if (word == extensibilities.end()) {
        throw CLI::ValidationError("--extensibility-in",
                                   text + " is not PATH=final, PATH=appendable or PATH=mutable");
    }
    return {text.substr(0, middle), word->second};
}

void addReading(CLI::App& app, Arguments& arguments, Words& words)
{
    ParseOptions& parsing = arguments.parsing;
    app.add_option("FILE", arguments.files, "The definitions")->required();
    app.add_option("-I", parsing.includeDirectories, "Look for included files in this folder too")
        ->type_name("DIRECTORY")
        ->allow_extra_args(false);
    app.add_option("-D", parsing.definitions, "Define a macro")
        ->type_name("NAME[=VALUE]")
        ->allow_extra_args(false);
    app.add_option("--extensibility", words.extensibility, "Of types that say nothing")
        ->check(CLI::IsMember(extensibilities))
        ->type_name("WORD")
        ->capture_default_str();
    app.add_option("--extensibility-in", words.includedExtensibilities,
                   "The same for included files that have a path, or are below it: PATH=WORD")
        ->type_name("PATH=WORD")
        ->allow_extra_args(false);
    app.add_flag("--strict-case", parsing.strictCase,
                 "Refuse names that only their case tells from a keyword");
    app.add_option("-W", arguments.warnings, "Take warnings for errors: -Werror")
        ->check(CLI::IsMember({"error"}))
        ->type_name("error");
}

void addWriting(CLI::App& app, Arguments& arguments)
{
    GenerateOptions& generation = arguments.generation;
    app.add_option("-o", arguments.output, "Write below this folder, which is made")
        ->type_name("DIRECTORY")
        ->capture_default_str();
    app.add_option("--type-name", generation.typeName, "The name of a topic's type in DDS")
        ->type_name("PATTERN")
        ->capture_default_str();
    app.add_option("--shards", generation.shards, "Over how many source files the compiler's work is spread")
        ->check(CLI::Range(1U, 1000U))
        ->capture_default_str();
    app.add_option("--depfile", arguments.depfile, "Write which files were read, as a rule for make")
        ->type_name("FILE");
}

void addEncoding(CLI::App& app, Words& words)
{
    app.add_option(
           "--enum-delimiters", words.enumDelimiters,
           "What stands before sequences and arrays of enums and bitmasks in XCDR version 2: none, as with "
           "Fast CDR, or standard, a delimiter; without this option none, with a warning")
        ->check(CLI::IsMember(delimiters))
        ->type_name("WORD");
    app.add_option("--key-hash", words.keyHash,
                   "What key hashes are made of: xcdr1, as with generators for Fast DDS 2, or xcdr2, as with "
                   "those for "
                   "Fast DDS 3; without this option xcdr1, with a warning where that makes a difference")
        ->check(CLI::IsMember(keyVersions))
        ->type_name("WORD");
}

void addActions(CLI::App& app, Arguments& arguments, Words& words)
{
    app.add_option("--topics", words.topics,
                   "Which structs are topics: annotated, all, none, or auto, that is those annotated @topic, "
                   "or where "
                   "none is, those that no other type holds or extends")
        ->check(CLI::IsMember(selections))
        ->type_name("WORD")
        ->capture_default_str();
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
    Words words;
    CLI::App app("Turns interface definitions into a module", "plex-idl");
    app.set_version_flag("--version", "plex-idl " PLEX_VERSION);
    addReading(app, arguments, words);
    addWriting(app, arguments);
    addEncoding(app, words);
    addActions(app, arguments, words);
    try {
        app.parse(argc, argv);
        arguments.parsing.extensibility = extensibilities.at(words.extensibility);
        for (const std::string& each : words.includedExtensibilities) {
            arguments.parsing.includedExtensibilities.push_back(extensibilityIn(each));
        }
        arguments.generation.topics = selections.at(words.topics);
        arguments.generation.delimitsEnumerations = chosen(delimiters, words.enumDelimiters);
        arguments.generation.keyVersion = chosen(keyVersions, words.keyHash);
        return arguments;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? 0 : 1;
        return std::nullopt;
    }
}

} // namespace ovra::plex::idl
