// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.hpp"

#include "CommandText.hpp"
#include "Output.hpp"
#include "commands/Commands.hpp"

#include <CLI/CLI.hpp>

#include <array>
#include <functional>
#include <memory>
#include <sstream>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

/// What is to be done, once the command line is read.
using Action = std::function<ExitCode()>;

/// A command: what it is called, what it does in a sentence, and its options.
struct Command {
    const char* name;
    const char* description;
    Action (*addOptions)(CLI::App& app);
    bool isHidden = false; ///< it is for programs
};

/// A number of seconds or the like: "nan" is none, which CLI11 takes for one within any limits.
CLI::Validator numberWithin(double least, double most)
{
    std::ostringstream limits;
    limits << "from " << least << " to " << most;
    return {[least, most, limits = limits.str()](const std::string& text) {
                double number = 0.0;
                const bool isWithin =
                    CLI::detail::lexical_cast(text, number) && number >= least && number <= most;
                return isWithin ? std::string() : "\"" + text + "\" is no number " + limits;
            },
            limits.str()};
}

constexpr double longest = 1e9;     // seconds: 30 years
constexpr double mostValues = 1e18; // which a number of 64 bits can count

void addDomain(CLI::App& app, CommonOptions& options)
{
    app.add_option("-d,--domain", options.domain, "The DDS domain")
        ->check(CLI::Range(0U, 232U))
        ->type_name("NUMBER")
        ->capture_default_str();
}

void addCommon(CLI::App& app, CommonOptions& options)
{
    addDomain(app, options);
    app.add_flag("--json", options.json, "Write JSON");
}

void addTopic(CLI::App& app, std::string& topic)
{
    app.add_option("TOPIC", topic, "The name of the topic")->required();
}

void addTypes(CLI::App& app, TypeOptions& options)
{
    const std::string group = "Types";
    app.add_option("--idl", options.files,
                   "Definitions in IDL that have the type, instead of installed modules")
        ->check(CLI::ExistingFile)
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("-I", options.includeDirectories, "Look for files that these include in this folder too")
        ->type_name("FOLDER")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--type", options.name, "What the definition calls the type, where DDS calls it otherwise")
        ->type_name("NAME")
        ->group(group);
    app.add_option("--extensibility", options.extensibility, "Of types in these definitions that say nothing")
        ->check(CLI::IsMember({"final", "appendable", "mutable"}))
        ->type_name("WORD")
        ->capture_default_str()
        ->group(group);
    app.add_option(
           "--enum-delimiters", options.enumDelimiters,
           "What stands before their sequences and arrays of enums and bitmasks in XCDR version 2: none, as "
           "with Fast DDS, or standard, a delimiter, as with Cyclone DDS")
        ->check(CLI::IsMember({"none", "standard"}))
        ->type_name("WORD")
        ->capture_default_str()
        ->group(group);
    app.add_option("--key-hash", options.keyHash, "The version of XCDR of what their key hashes are made of")
        ->check(CLI::IsMember({"xcdr1", "xcdr2"}))
        ->type_name("WORD")
        ->capture_default_str()
        ->group(group);
    app.add_option("--module-path", options.modulePath, "Look for libraries of modules in this folder first")
        ->type_name("FOLDER")
        ->allow_extra_args(false)
        ->group(group);
}

Action addList(CLI::App& app)
{
    const auto options = std::make_shared<ListOptions>();
    addCommon(app, *options);
    return [options] {
        return list(*options);
    };
}

Action addInfo(CLI::App& app)
{
    const auto options = std::make_shared<InfoOptions>();
    addTopic(app, options->topic);
    addCommon(app, *options);
    app.add_option("--duration", options->duration,
                   "Count for so many seconds what writers send; 0: not at all")
        ->check(numberWithin(0.0, 86400.0))
        ->type_name("SECONDS")
        ->capture_default_str();
    return [options] {
        return info(*options);
    };
}

Action addEcho(CLI::App& app)
{
    const auto options = std::make_shared<EchoOptions>();
    addTopic(app, options->topic);
    addCommon(app, *options);
    app.add_option("-n,--count", options->count, "End after so many values")
        ->check(numberWithin(1.0, mostValues))
        ->type_name("NUMBER");
    app.add_flag_callback(
           "--once", [options] { options->count = 1; }, "End after one value")
        ->excludes("--count");
    app.add_option("--filter", options->filter, "Show only values for which this holds, as in 'alt > 40'")
        ->type_name("CONDITION");
    app.add_option("--key", options->key, "Show one instance only: VALUE, or MEMBER=VALUE,MEMBER=VALUE")
        ->type_name("KEY");
    app.add_option(
           "--format", options->format,
           "Write each value as this template has it, with {time}, {age}, {publisher}, {topic}, {key}, "
           "{value}, and {.member}")
        ->type_name("TEMPLATE")
        ->excludes("--json");
    addTypes(app, options->types);
    return [options] {
        return echo(*options);
    };
}

template <ExitCode (*measureThem)(const MeasureOptions&)>
Action addMeasuring(CLI::App& app)
{
    const auto options = std::make_shared<MeasureOptions>();
    app.add_option("TOPIC", options->topics, "The names of topics")->required();
    addCommon(app, *options);
    app.add_option("--interval", options->interval, "Between two reports, in seconds")
        ->check(numberWithin(0.01, 86400.0))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_option("--duration", options->duration, "End after so many seconds")
        ->check(numberWithin(0.001, longest))
        ->type_name("SECONDS");
    return [options] {
        return measureThem(*options);
    };
}

Action addPub(CLI::App& app)
{
    const auto options = std::make_shared<PubOptions>();
    addTopic(app, options->topic);
    app.add_option("TYPE", options->type, "The name of its type, in the definition or in DDS")->required();
    app.add_option(
           "JSON", options->value,
           "The value; members that are left out have their defaults. -: one on each line of the standard "
           "input")
        ->required();
    addCommon(app, *options);
    app.add_option("--rate", options->rate, "Publish so many values a second, until interrupted")
        ->check(numberWithin(0.001, 100000.0))
        ->type_name("NUMBER");
    app.add_option("-n,--count", options->count, "End after so many values")
        ->check(numberWithin(1.0, mostValues))
        ->type_name("NUMBER");
    app.add_option("--wait", options->wait, "Wait so many seconds for readers; 0: not at all")
        ->check(numberWithin(0.0, longest))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_option("--representation", options->representation,
                   "Encode values so, whatever readers like best")
        ->check(CLI::IsMember({"xcdr1", "xcdr2"}))
        ->type_name("WORD");
    addTypes(app, options->types);
    return [options] {
        return pub(*options);
    };
}

Action addTop(CLI::App& app)
{
    const auto options = std::make_shared<TopOptions>();
    addDomain(app, *options);
    addTypes(app, options->types);
    return [options] {
        return top(*options);
    };
}

Action addDoctor(CLI::App& app)
{
    const auto options = std::make_shared<DoctorOptions>();
    addCommon(app, *options);
    app.add_flag("--clean", options->clean,
                 "Remove what killed programs have left in shared memory, and no living one holds");
    return [options] {
        return doctor(*options);
    };
}

Action addCompletion(CLI::App& app)
{
    const auto shell = std::make_shared<std::string>();
    app.add_option("SHELL", *shell, "The shell")->required()->check(CLI::IsMember({"bash", "fish", "zsh"}));
    return [shell] {
        write(completionScript(programText(), *shell));
        return ExitCode::Done;
    };
}

Action addCompleteTopics(CLI::App& app)
{
    const auto options = std::make_shared<CommonOptions>();
    addDomain(app, *options);
    return [options] {
        return completeTopics(*options);
    };
}

Action addManual(CLI::App& app)
{
    const auto folder = std::make_shared<std::string>();
    app.add_option("FOLDER", *folder, "Where to write them")->required()->check(CLI::ExistingDirectory);
    return [folder] {
        writeManualPages(programText(), *folder);
        return ExitCode::Done;
    };
}

Action addRecord(CLI::App& app)
{
    const auto options = std::make_shared<RecordOptions>();
    app.add_option("TOPIC", options->topics, "The names of topics; none: all, also those that appear later");
    app.add_option("-o,--output", options->file, "The file, of the format MCAP")
        ->type_name("FILE")
        ->required();
    app.add_flag("--force", options->force, "Replace the file if it is there");
    addCommon(app, *options);
    app.add_option("--compression", options->compression, "Of the file: zstd, lz4 or none")
        ->check(CLI::IsMember({"zstd", "lz4", "none"}))
        ->type_name("WORD")
        ->capture_default_str();
    app.add_option("--duration", options->duration, "End after so many seconds")
        ->check(numberWithin(0.001, longest))
        ->type_name("SECONDS");
    app.add_option("-n,--count", options->count, "End after so many values")
        ->check(numberWithin(1.0, mostValues))
        ->type_name("NUMBER");
    addTypes(app, options->types);
    app.remove_option(app.get_option("--type")); // there are many topics
    return [options] {
        return record(*options);
    };
}

Action addReplay(CLI::App& app)
{
    const auto options = std::make_shared<ReplayOptions>();
    app.add_option("FILE", options->file, "A recording")->required();
    addCommon(app, *options);
    app.add_option("--speed", options->speed,
                   "So many times as fast as it was recorded; 0: without waiting between values")
        ->check(numberWithin(0.0, 1e6))
        ->type_name("NUMBER")
        ->capture_default_str();
    app.add_flag("--loop", options->loop, "Begin again after the last value, until interrupted");
    app.add_option("--topics", options->topics, "Only these, separated by commas")
        ->delimiter(',')
        ->type_name("TOPIC");
    app.add_option("--rename", options->renamings, "Publish a topic under another name")
        ->type_name("OLD=NEW")
        ->allow_extra_args(false);
    app.add_option("--wait", options->wait, "Wait so many seconds for readers; 0: not at all")
        ->check(numberWithin(0.0, longest))
        ->type_name("SECONDS")
        ->capture_default_str();
    addTypes(app, options->types);
    app.remove_option(app.get_option("--type"));
    return [options] {
        return replay(*options);
    };
}

constexpr std::array commands{
    Command{"list", "Show what is there: participants, topics, and who writes and reads them", addList},
    Command{"info", "Show which writers and readers of a topic are matched, and why others are not", addInfo},
    Command{"echo", "Show a topic's values as they come", addEcho},
    Command{"hz", "Measure how often values come, and how regularly", addMeasuring<hz>},
    Command{"bw", "Measure how many bytes come", addMeasuring<bw>},
    Command{"delay", "Measure how old values are as they come", addMeasuring<delay>},
    Command{"pub", "Publish a value", addPub},
    Command{"top", "Show topics, their rates and values on a live screen", addTop},
    Command{"doctor", "Say what is wrong with this host and the domain, and the cure", addDoctor},
    Command{"completion", "Write a script that has a shell complete these commands", addCompletion},
    Command{"complete-topics", "Name the topics of a domain", addCompleteTopics, true},
    Command{"manual", "Write the man pages", addManual, true},
    Command{"record", "Write values into a file, as they come", addRecord},
    Command{"replay", "Publish again what was recorded", addReplay},
};

struct ExitCodeMeaning {
    ExitCode code;
    const char* meaning;
};

constexpr std::array exitCodes{
    ExitCodeMeaning{ExitCode::Done, "done, also when interrupted"},
    ExitCodeMeaning{ExitCode::Failed, "DDS or the system would not"},
    ExitCodeMeaning{ExitCode::Usage, "the command line asks for what can not be"},
    ExitCodeMeaning{ExitCode::NotFound, "no such topic, type or reader is there"},
    ExitCodeMeaning{ExitCode::Wrong, "something is wrong with the host or the domain"},
};

std::string exitCodesInWords()
{
    std::string text;
    for (const auto& [code, meaning] : exitCodes) {
        text +=
            (text.empty() ? "Exit codes: " : "; ") + std::to_string(static_cast<int>(code)) + " " + meaning;
    }
    return text + ".";
}

/// The program's options, and all commands with theirs.
struct Definition {
    Definition()
    {
        app.set_version_flag("--version", "plex " PLEX_VERSION, "Say the version and end");
        app.require_subcommand(1);
        const std::string footer = exitCodesInWords();
        app.footer(footer);
        for (const auto& command : commands) {
            auto* const subcommand = app.add_subcommand(command.name, command.description);
            subcommand->footer(footer);
            subcommand->callback([this, own = command.addOptions(*subcommand)] { action = own; });
            if (command.isHidden) {
                subcommand->group("");
            }
        }
    }

    CLI::App app{"Looks at what publishers and subscribers exchange over DDS", "plex"};
    Action action; ///< of the command that is asked for
};

/// The words between the braces of what a validator says of itself, "WORD:{final,mutable}".
std::vector<std::string> choicesOf(const std::string& typeName)
{
    std::vector<std::string> words;
    const auto begin = typeName.find('{');
    if (begin != std::string::npos) {
        std::istringstream list(typeName.substr(begin + 1, typeName.find('}') - begin - 1));
        for (std::string word; std::getline(list, word, ',');) {
            words.push_back(word);
        }
    }
    return words;
}

OptionText textOf(const CLI::Option& option)
{
    OptionText text;
    for (const auto& name : option.get_snames()) {
        text.names.push_back("-" + name);
    }
    for (const auto& name : option.get_lnames()) {
        text.names.push_back("--" + name);
    }
    const std::string type = option.get_type_name();
    if (!text.isNamed()) {
        text.argument = option.get_name(true);
    } else if (option.get_type_size() > 0) {
        text.argument = type.substr(0, type.find(':'));
    }
    text.choices = choicesOf(type);
    text.description = option.get_description();
    text.byDefault = option.get_default_str();
    text.isRepeated = option.get_expected_max() > 1 && !text.argument.empty();
    return text;
}

CommandText textOf(const CLI::App& app)
{
    CommandText text{"", app.get_description(), {}};
    for (const auto* const option : app.get_options()) {
        text.options.push_back(textOf(*option));
    }
    return text;
}

} // namespace

ProgramText programText()
{
    const Definition definition;
    ProgramText text;
    text.program = textOf(definition.app);
    for (const auto& command : commands) {
        if (!command.isHidden) {
            text.commands.push_back(textOf(*definition.app.get_subcommand(command.name)));
            text.commands.back().name = command.name;
        }
    }
    for (const auto& [code, meaning] : exitCodes) {
        text.exitCodes.push_back({static_cast<int>(code), meaning});
    }
    return text;
}

int runCommandLine(int argc, const char* const* argv)
{
    Definition definition;
    auto& app = definition.app;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        const bool isAnswer = app.exit(error, output) == 0; // the help, or the version
        write(output.str());
        return static_cast<int>(isAnswer ? ExitCode::Done : ExitCode::Usage);
    }
    return static_cast<int>(definition.action());
}

} // namespace ovra::plex::tool
