// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace ovra::plex::tool
{

/// What the program ends with. docs/tools.md lists them.
enum class ExitCode : int {
    Done = 0,
    Failed = 1,   ///< DDS or the system would not
    Usage = 2,    ///< the command line asks for what can not be
    NotFound = 3, ///< no such topic, type or peer is there
    Wrong = 4,    ///< something is wrong with the host or the domain
};

/// What ends a command early: a text for people, and the exit code.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// Runs a command, and says in a remark why it fails, if it does.
/// @param command returns the exit code, or throws what it likes.
/// @returns the exit code.
int exitCodeOf(const std::function<int()>& command);

} // namespace ovra::plex::tool
