// SPDX-License-Identifier: Apache-2.0
#include "Output.hpp"

#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Printable.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace ovra::plex::tool
{

namespace
{

/// Waits until a piece can be written without waiting.
void waitForRoom()
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    while (poll(&output, 1, static_cast<int>(longestWait.count())) <= 0) {
        if (isInterrupted()) {
            throw OutputClosed(); // nobody reads it now
        }
    }
}

void writeAll(std::string_view text)
{
    while (!text.empty()) {
        waitForRoom(); // a pipe that has some has it for PIPE_BUF bytes
        const auto count = ::write(STDOUT_FILENO, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EPIPE) {
            throw OutputClosed();
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

bool wantsColours()
{
    const char* const terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): read only
    return isatty(STDOUT_FILENO) != 0 && !isSet("NO_COLOR") && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

bool hasColours()
{
    static const bool colours = wantsColours();
    return colours;
}

constexpr std::string_view uncoloured = "\033[0m";

/// Select Graphic Rendition (ECMA-48).
constexpr std::string_view sequenceOf(Colour colour)
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

/// How long the sequence is that a text begins with, if coloured() has written it.
std::size_t colourAt(std::string_view text)
{
    constexpr std::array sequences{uncoloured,
                                   sequenceOf(Colour::Bold),
                                   sequenceOf(Colour::Dim),
                                   sequenceOf(Colour::Red),
                                   sequenceOf(Colour::Green),
                                   sequenceOf(Colour::Yellow)};
    const auto* const found =
        std::ranges::find_if(sequences, [&](auto sequence) { return text.starts_with(sequence); });
    return hasColours() && found != sequences.end() ? found->size() : 0;
}

/// A line with its colours, and nothing else that a terminal obeys.
std::string printableLine(std::string_view line)
{
    std::string result;
    while (!line.empty()) {
        const auto colour = colourAt(line);
        const auto end = std::min(line.find('\033', std::max<std::size_t>(colour, 1)), line.size());
        result += line.substr(0, colour);
        result += printable(line.substr(colour, end - colour), Layout::Kept);
        line.remove_prefix(end);
    }
    return result;
}

} // namespace

void holdStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            // The lowest number that is free. As with what is closed, reading or writing fails.
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void writeLine(std::string_view line)
{
    writeAll(printableLine(line) + "\n");
}

void writeJson(const nlohmann::ordered_json& json, int indentation)
{
    const auto text = json.dump(indentation, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    writeAll(printable(text, Layout::Kept) + "\n");
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
    auto shown = printable(text, Layout::Kept);
    if (!hasColours() || colour == Colour::Plain) {
        return shown;
    }
    return std::string(sequenceOf(colour)) + shown + std::string(uncoloured);
}

void remark(const std::string& text)
{
    std::cerr << "plex: " + printable(text, Layout::Kept) + "\n";
}

} // namespace ovra::plex::tool
