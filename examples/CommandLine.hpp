// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace CLI
{
class App;
} // namespace CLI

/// A program's command line. Its options have the values they name as their defaults, and are written there.
/// CLI11 stays in the source file, where it is compiled once for all programs.
class CommandLine
{
public:
    explicit CommandLine(const std::string& purpose);
    ~CommandLine();

    void option(const std::string& name, std::string& value, const std::string& help);

    /// A whole number from 0.
    void option(const std::string& name, unsigned& value, const std::string& help,
                unsigned maximum = std::numeric_limits<unsigned>::max());

    /// A number above 0.
    void option(const std::string& name, double& value, const std::string& help);

    /// A word without the name in front of it, which must be there.
    void word(const std::string& name, std::string& value, const std::string& help);

    /// Reads the command line. @returns an exit code when the program is to end at once, as with --help.
    std::optional<int> parse(int argc, const char* const* argv);

private:
    std::unique_ptr<CLI::App> app_;
};
