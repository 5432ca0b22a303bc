// SPDX-License-Identifier: Apache-2.0
#include "Output.hpp"

#include "Failure.hpp"
#include "Interrupt.hpp"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace ovra::plex::tool
{

namespace
{

void writeAll(std::string_view text)
{
    while (!text.empty()) {
        const auto count = ::write(STDOUT_FILENO, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EPIPE || (errno == EINTR && isInterrupted())) {
            throw OutputClosed(); // nobody reads it, or nobody does so now
        } else if (errno != EINTR) {
            throw Failure(ExitCode::Failed,
                          "cannot write to the standard output: " + std::generic_category().message(errno));
        }
    }
}

bool isSet(const char* variable)
{
    const char* const value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): read only
    return value != nullptr && *value != '\0';
}

bool hasColours()
{
    const char* const terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): read only
    return isatty(STDOUT_FILENO) != 0 && !isSet("NO_COLOR") && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

/// Select Graphic Rendition (ECMA-48).
const char* sequenceOf(Colour colour)
{
    switch (colour) {
    case Colour::Bold:
        return "\033[1m";
    case Colour::Dim:
        return "\033[2m";
    case Colour::Red:
        return "\033[31m";
    case Colour::Green:
        return "\033[32m";
    case Colour::Yellow:
        return "\033[33m";
    default:
        return "";
    }
}

} // namespace

void writeLine(std::string_view line)
{
    writeAll(std::string(line) + "\n");
}

void write(std::string_view text)
{
    writeAll(text);
}

bool isOutputClosed()
{
    pollfd output{STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

std::string coloured(std::string_view text, Colour colour)
{
    static const bool colours = hasColours();
    if (!colours || colour == Colour::Plain) {
        return std::string(text);
    }
    return sequenceOf(colour) + std::string(text) + "\033[0m";
}

void remark(const std::string& text)
{
    std::cerr << "plex: " + text + "\n";
}

} // namespace ovra::plex::tool
