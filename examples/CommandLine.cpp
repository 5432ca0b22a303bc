// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.hpp"

#include <CLI/CLI.hpp>

CommandLine::CommandLine(const std::string& purpose) : app_(std::make_unique<CLI::App>(purpose)) {}

CommandLine::~CommandLine() = default;

void CommandLine::option(const std::string& name, std::string& value, const std::string& help)
{
    app_->add_option(name, value, help)->capture_default_str();
}

void CommandLine::option(const std::string& name, unsigned& value, const std::string& help, unsigned maximum)
{
    app_->add_option(name, value, help)->check(CLI::Range(0U, maximum))->capture_default_str();
}

void CommandLine::option(const std::string& name, double& value, const std::string& help)
{
    app_->add_option(name, value, help)->check(CLI::PositiveNumber)->capture_default_str();
}

void CommandLine::word(const std::string& name, std::string& value, const std::string& help)
{
    app_->add_option(name, value, help)->required();
}

std::optional<int> CommandLine::parse(int argc, const char* const* argv)
{
    try {
        app_->parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return app_->exit(error);
    }
}
