// SPDX-License-Identifier: Apache-2.0
#include "CommandText.hpp"
#include "Failure.hpp"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <string_view>

namespace ovra::plex::tool
{

namespace
{

/// A text as roff reads it: dashes are those of options, and no line begins with a request.
std::string roff(std::string_view text)
{
    std::string result = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        if (c == '\\' || c == '-') {
            result += '\\';
        }
        result += c == '\\' ? 'e' : c;
    }
    return result;
}

std::string inCapitals(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string synopsis(const CommandText& command)
{
    std::string text =
        ".B plex" + (command.name.empty() ? "" : " " + command.name) + "\n[\\fIOPTION\\fR]...\n";
    for (const auto& option : command.options) {
        if (!option.isNamed()) {
            text += "\\fI" + roff(option.argument) + "\\fR" + (option.isRepeated ? "..." : "") + "\n";
        }
    }
    return text + (command.name.empty() ? "\\fICOMMAND\\fR [\\fIARGUMENT\\fR]...\n" : "");
}

std::string paragraph(const OptionText& option)
{
    std::string head;
    for (const auto& name : option.names) {
        head += (head.empty() ? "\\fB" : ", \\fB") + roff(name) + "\\fR";
    }
    if (!option.argument.empty()) {
        head += (head.empty() ? "\\fI" : " \\fI") + roff(option.argument) + "\\fR";
    }
    std::string text = ".TP\n" + head + "\n" + roff(option.description);
    for (const auto& choice : option.choices) {
        text += (&choice == option.choices.data() ? ": " : ", ") + roff(choice);
    }
    return text + (option.byDefault.empty() ? "" : "; by default " + roff(option.byDefault)) + ".\n";
}

std::string paragraphs(const std::string& heading, const CommandText& command, bool named)
{
    std::string text;
    for (const auto& option : command.options) {
        if (option.isNamed() == named) {
            text += paragraph(option);
        }
    }
    return text.empty() ? "" : ".SH " + heading + "\n" + text;
}

std::string commandsOf(const ProgramText& text)
{
    std::string result = ".SH COMMANDS\n";
    for (const auto& command : text.commands) {
        result += ".TP\n.BR plex\\-" + roff(command.name) + " (1)\n" + roff(command.description) + ".\n";
    }
    return result;
}

std::string exitStatus(const ProgramText& text)
{
    std::string result = ".SH \"EXIT STATUS\"\n";
    for (const auto& code : text.exitCodes) {
        result += ".TP\n.B " + std::to_string(code.code) + "\n" + roff(code.meaning) + ".\n";
    }
    return result;
}

std::string seeAlso(const ProgramText& text, const CommandText& command)
{
    std::string result;
    if (!command.name.empty()) {
        result = ".BR plex (1)";
    }
    for (const auto& other : text.commands) {
        if (other.name != command.name) {
            result += (result.empty() ? "" : ",\n") + (".BR plex\\-" + roff(other.name)) + " (1)";
        }
    }
    return ".SH \"SEE ALSO\"\n" + result + "\n";
}

std::string nameOf(const CommandText& command)
{
    return command.name.empty() ? "plex" : "plex-" + command.name;
}

std::string manualPage(const ProgramText& text, const CommandText& command)
{
    const std::string name = roff(nameOf(command));
    return ".TH " + inCapitals(name) + " 1 \"\" \"plex " PLEX_VERSION "\" \"User Commands\"\n.SH NAME\n" +
           name + " \\- " + roff(command.description) + "\n.SH SYNOPSIS\n" + synopsis(command) +
           paragraphs("ARGUMENTS", command, false) + (command.name.empty() ? commandsOf(text) : "") +
           paragraphs("OPTIONS", command, true) + exitStatus(text) + seeAlso(text, command);
}

void writePage(const ProgramText& text, const CommandText& command, const std::string& folder)
{
    const std::string path = folder + "/" + nameOf(command) + ".1";
    std::ofstream file(path);
    file << manualPage(text, command);
    if (!file.flush()) {
        throw Failure(ExitCode::Failed, "cannot write " + path);
    }
}

} // namespace

void writeManualPages(const ProgramText& text, const std::string& folder)
{
    writePage(text, text.program, folder);
    for (const auto& command : text.commands) {
        writePage(text, command, folder);
    }
}

} // namespace ovra::plex::tool
