// SPDX-License-Identifier: Apache-2.0
#include "CommandText.hpp"
#include "Words.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

/// The hidden command that names topics, with the domain that the command line has.
constexpr const char* topicsCommand = "plex complete-topics";

std::vector<const OptionText*> namedOptions(const CommandText& command)
{
    std::vector<const OptionText*> result;
    for (const auto& option : command.options) {
        if (option.isNamed()) {
            result.push_back(&option);
        }
    }
    return result;
}

std::vector<const OptionText*> argumentsOf(const CommandText& command)
{
    std::vector<const OptionText*> result;
    for (const auto& option : command.options) {
        if (!option.isNamed()) {
            result.push_back(&option);
        }
    }
    return result;
}

std::string namesOf(const std::vector<const OptionText*>& options, bool onlyWithArgument)
{
    std::vector<std::string> names;
    for (const auto* const option : options) {
        if (!onlyWithArgument || !option->argument.empty()) {
            names.insert(names.end(), option->names.begin(), option->names.end());
        }
    }
    return joined(names, " ");
}

/// A text with a mark in front of certain characters.
std::string escaped(std::string_view text, std::string_view characters, const std::string& mark)
{
    std::string result;
    for (const char c : text) {
        result += (characters.find(c) == std::string_view::npos ? "" : mark) + c;
    }
    return result;
}

/// A text between single quotes, as bash and zsh read it.
std::string inQuotes(const std::string& text)
{
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return result + "'";
}

/// A text with some words replaced.
std::string filled(std::string text, const std::vector<std::pair<std::string, std::string>>& words)
{
    for (const auto& [word, replacement] : words) {
        text.replace(text.find(word), word.size(), replacement);
    }
    return text;
}

// --- bash --------------------------------------------------------------------------------------------------

/// What bash offers for an argument.
std::string bashReply(const OptionText& option)
{
    if (!option.choices.empty()) {
        return "COMPREPLY=($(compgen -W " + inQuotes(joined(option.choices, " ")) + " -- \"$current\"))";
    }
    if (option.argument == "FILE") {
        return "compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- \"$current\")";
    }
    if (option.argument == "FOLDER") {
        return "compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- \"$current\")";
    }
    return option.argument == "TOPIC" ? "_plex_topics" : ":";
}

std::string bashCase(const CommandText& command)
{
    const auto options = namedOptions(command);
    std::string text = "    " + command.name + ")\n        case $previous in\n";
    for (const auto* const option : options) {
        if (!option->argument.empty()) {
            text += "        " + joined(option->names, "|") + ") " + bashReply(*option) + "; return ;;\n";
        }
    }
    text += "        esac\n        options=" + inQuotes(namesOf(options, false)) +
            "\n        [[ $current == -* ]] || case $(_plex_position " + inQuotes(namesOf(options, true)) +
            ") in\n";
    const auto arguments = argumentsOf(command);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        text += "        " + (arguments[i]->isRepeated ? "*" : std::to_string(i)) + ") " +
                bashReply(*arguments[i]) + " ;;\n";
    }
    return text + "        esac ;;\n";
}

/// What the cases of a command stand in.
constexpr const char* bashTemplate = R"bash(# bash completion for plex

# Topics of the domain that the command line names.
_plex_topics() {
    local domain=0 i topic
    for ((i = 1; i < COMP_CWORD - 1; i++)); do
        case ${COMP_WORDS[i]} in -d | --domain) domain=${COMP_WORDS[i + 1]} ;; esac
    done
    while IFS= read -r topic; do # compgen would carry out what stands in a name
        [[ $topic != "$current"* ]] || COMPREPLY+=("$topic")
    done < <(@TOPICS@ -d "$domain" 2>/dev/null)
}

# How many arguments without a name stand behind the command: _plex_position OPTIONS-WITH-ARGUMENT
_plex_position() {
    local count=0 i
    for ((i = 2; i < COMP_CWORD; i++)); do
        if [[ " $1 " == *" ${COMP_WORDS[i]} "* ]]; then
            ((i++))
        elif [[ ${COMP_WORDS[i]} != -* ]]; then
            ((count++))
        fi
    done
    echo "$count"
}

_plex() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} options=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W @WORDS@ -- "$current"))
        return
    fi
    case ${COMP_WORDS[1]} in
@CASES@    esac
    [[ $current != -* ]] || COMPREPLY=($(compgen -W "$options" -- "$current"))
}

complete -F _plex plex
)bash";

std::string bashScript(const ProgramText& text)
{
    std::vector<std::string> words;
    std::string cases;
    for (const auto& command : text.commands) {
        words.push_back(command.name);
        cases += bashCase(command);
    }
    words.push_back(namesOf(namedOptions(text.program), false));
    return filled(
        bashTemplate,
        {{"@TOPICS@", topicsCommand}, {"@WORDS@", inQuotes(joined(words, " "))}, {"@CASES@", cases}});
}

// --- zsh ---------------------------------------------------------------------------------------------------

/// What zsh offers for an argument.
std::string zshAction(const OptionText& option)
{
    if (!option.choices.empty()) {
        return "(" + joined(option.choices, " ") + ")";
    }
    if (option.argument == "FILE") {
        return "_files";
    }
    if (option.argument == "FOLDER") {
        return "_files -/";
    }
    return option.argument == "TOPIC" ? "_plex_topics" : " ";
}

std::string zshArgument(const OptionText& option)
{
    return ":" + escaped(option.argument, ":", "\\") + ":" + zshAction(option);
}

std::string zshSpecification(const OptionText& option)
{
    const std::string description = "[" + escaped(option.description, "[]\\", "\\") + "]";
    std::string text;
    for (const auto& name : option.names) {
        const std::string exclusive = option.isRepeated ? "*" : "(" + joined(option.names, " ") + ")";
        const std::string argument = option.argument.empty() ? "" : zshArgument(option);
        text.append(" ").append(
            inQuotes(std::string(exclusive).append(name).append(description).append(argument)));
    }
    return text;
}

std::string zshArguments(const CommandText& command)
{
    std::string text = "_arguments -s";
    for (const auto* const option : namedOptions(command)) {
        text += " \\\n           " + zshSpecification(*option);
    }
    const auto arguments = argumentsOf(command);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string place = arguments[i]->isRepeated ? "*" : std::to_string(i + 1);
        text += " \\\n            " + inQuotes(place + zshArgument(*arguments[i]));
    }
    return text;
}

/// What the cases of a command stand in.
constexpr const char* zshTemplate = R"zsh(#compdef plex
# zsh completion for plex

# Topics of the domain that the command line names.
_plex_topics() {
    local -a topics
    local domain=${${opt_args[-d]:-${opt_args[--domain]}}:-0}
    topics=(${(f)"$(@TOPICS@ -d $domain 2>/dev/null)"})
    compadd -a topics
}

_plex() {
    local context state state_descr line
    local -A opt_args
    local -a commands
    commands=(
@COMMANDS@    )
    _arguments -C@OPTIONS@ \
        '1:command:->command' '*::argument:->argument'
    case $state in
    command) _describe command commands ;;
    argument)
        case $words[1] in
@CASES@        esac ;;
    esac
}

if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _plex "$@"
else
    compdef _plex plex
fi
)zsh";

std::string zshScript(const ProgramText& text)
{
    std::string commands;
    std::string cases;
    for (const auto& command : text.commands) {
        commands +=
            "        " + inQuotes(command.name + ":" + escaped(command.description, ":\\", "\\")) + "\n";
        cases += "        " + command.name + ")\n            " + zshArguments(command) + " ;;\n";
    }
    std::string options;
    for (const auto* const option : namedOptions(text.program)) {
        options += " \\\n       " + zshSpecification(*option);
    }
    return filled(
        zshTemplate,
        {{"@TOPICS@", topicsCommand}, {"@COMMANDS@", commands}, {"@OPTIONS@", options}, {"@CASES@", cases}});
}

// --- fish --------------------------------------------------------------------------------------------------

std::string fishQuoted(const std::string& text)
{
    return "'" + escaped(text, "'\\", "\\") + "'";
}

/// What fish offers for an argument.
std::string fishArgument(const OptionText& option)
{
    if (!option.choices.empty()) {
        return " -x -a " + fishQuoted(joined(option.choices, " "));
    }
    if (option.argument == "FILE") {
        return " -r -F";
    }
    if (option.argument == "FOLDER") {
        return " -x -a '(__fish_complete_directories)'";
    }
    return option.argument == "TOPIC" ? " -x -a '(__plex_topics)'" : " -x";
}

std::string fishLine(const std::string& condition, const OptionText& option)
{
    if (!option.isNamed() && fishArgument(option) == " -x") {
        return {}; // nothing is known of it
    }
    std::string line = "complete -c plex -n " + fishQuoted(condition);
    for (const auto& name : option.names) {
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    line += option.isNamed() ? " -d " + fishQuoted(option.description) : "";
    return line + (option.argument.empty() ? "" : fishArgument(option)) + "\n";
}

/// What the lines of options and commands follow.
constexpr const char* fishTemplate = R"fish(# fish completion for plex

# Topics of the domain that the command line names.
function __plex_topics
    set -l words (commandline -opc)
    set -l domain 0
    for i in (seq (count $words))
        if contains -- $words[$i] -d --domain; and test $i -lt (count $words)
            set domain $words[(math $i + 1)]
        end
    end
    @TOPICS@ -d $domain 2>/dev/null
end

complete -c plex -f
@LINES@)fish";

std::string fishScript(const ProgramText& text)
{
    std::string lines;
    for (const auto* const option : namedOptions(text.program)) {
        lines += fishLine("__fish_use_subcommand", *option);
    }
    for (const auto& command : text.commands) {
        lines += "complete -c plex -n '__fish_use_subcommand' -a " + command.name + " -d " +
                 fishQuoted(command.description) + "\n";
        for (const auto& option : command.options) {
            lines += fishLine("__fish_seen_subcommand_from " + command.name, option);
        }
    }
    return filled(fishTemplate, {{"@TOPICS@", topicsCommand}, {"@LINES@", lines}});
}

} // namespace

std::string completionScript(const ProgramText& text, const std::string& shell)
{
    if (shell == "bash") {
        return bashScript(text);
    }
    return shell == "zsh" ? zshScript(text) : fishScript(text);
}

} // namespace ovra::plex::tool
