// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.hpp"

#include "commands/Commands.hpp"

#include <CLI/CLI.hpp>

#include <array>
#include <functional>
#include <memory>

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
};

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
        ->check(CLI::PositiveNumber)
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
        ->check(CLI::Range(0.01, 86400.0))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_option("--duration", options->duration, "End after so many seconds")
        ->check(CLI::PositiveNumber)
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
        ->check(CLI::Range(0.001, 100000.0))
        ->type_name("NUMBER");
    app.add_option("-n,--count", options->count, "End after so many values")
        ->check(CLI::PositiveNumber)
        ->type_name("NUMBER");
    app.add_option("--wait", options->wait, "Wait so many seconds for readers; 0: not at all")
        ->check(CLI::NonNegativeNumber)
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
};

constexpr const char* exitCodes = "Exit codes: 0 done, also when interrupted; 1 DDS or the system would not; "
                                  "2 the command line asks for what can "
                                  "not be; 3 no such topic, type or reader is there; "
                                  "4 something is wrong with the host or the domain.";

} // namespace

int runCommandLine(int argc, const char* const* argv)
{
    CLI::App app("Looks at what publishers and subscribers exchange over DDS", "plex");
    app.set_version_flag("--version", "plex " PLEX_VERSION);
    app.require_subcommand(1);
    app.footer(exitCodes);
    Action action;
    for (const auto& command : commands) {
        auto* const subcommand = app.add_subcommand(command.name, command.description);
        subcommand->footer(exitCodes);
        subcommand->callback([&action, own = command.addOptions(*subcommand)] { action = own; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? static_cast<int>(ExitCode::Done) : static_cast<int>(ExitCode::Usage);
    }
    return static_cast<int>(action());
}

} // namespace ovra::plex::tool
