// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Generate.hpp>
#include <plex/idl/Parse.hpp>
#include <plex/idl/Topics.hpp>

#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// What a command line asks for.
struct Arguments {
    std::vector<std::string> files; ///< at least one
    ParseOptions parsing;
    GenerateOptions generation;
    std::string output = "."; ///< the folder in which files are written
    std::string depfile;      ///< where to say what was read; empty: nowhere
    bool list = false;        ///< say which structs are topics
    bool check = false;       ///< say what is wrong, and nothing else
    std::string dump;         ///< in which form to write the model; empty: not at all
    std::string warnings;     ///< "error": they are errors
};

/// Reads a command line. CLI11 stays in the source file.
///
/// @param exitCode set where the program is to end at once, as with --help; what it has to say is written
/// then.
/// @returns nothing then.
std::optional<Arguments> readArguments(int argc, const char* const* argv, int& exitCode);

} // namespace ovra::plex::idl
