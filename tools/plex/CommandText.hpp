// SPDX-License-Identifier: Apache-2.0
// What commands and their options are called and do, as `plex --help` has it: what man pages and the
// completion of shells are made of.
#pragma once

#include <string>
#include <vector>

namespace ovra::plex::tool
{

struct OptionText {
    std::vector<std::string> names;   ///< with their dashes; empty: an argument without a name
    std::string argument;             ///< "NUMBER"; empty: a flag
    std::vector<std::string> choices; ///< of the argument, where there are only these
    std::string description;
    std::string byDefault; ///< empty: nothing in particular
    bool isRepeated = false;

    bool isNamed() const { return !names.empty(); }
};

struct CommandText {
    std::string name; ///< empty: the program itself
    std::string description;
    std::vector<OptionText> options; ///< arguments without a name among them, in their order
};

struct ExitCodeText {
    int code;
    std::string meaning;
};

struct ProgramText {
    CommandText program;
    std::vector<CommandText> commands;
    std::vector<ExitCodeText> exitCodes;
};

/// What the command line is defined as; hidden commands are left out.
ProgramText programText();

/// A script that has a shell complete command lines. @param shell "bash", "zsh" or "fish".
std::string completionScript(const ProgramText& text, const std::string& shell);

/// Writes the man pages of the program and of each command into a folder, in the language of man(7):
/// "plex.1", "plex-list.1" …
/// @throws Failure where one can not be written.
void writeManualPages(const ProgramText& text, const std::string& folder);

} // namespace ovra::plex::tool
