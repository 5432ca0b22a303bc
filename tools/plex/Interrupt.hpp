// SPDX-License-Identifier: Apache-2.0
// How a command is asked to end: Ctrl-C, SIGTERM, or SIGHUP, as the terminal closes. The first one lets it
// finish with its summary, a second one ends the process at once.
#pragma once

#include <chrono>
#include <thread>

namespace ovra::plex::tool
{

/// Takes over the signals. To be called once, before there are other threads.
void installInterrupt();

/// Whether the command is to end. Any thread may ask.
bool isInterrupted();

/// So long does nothing wait without asking isInterrupted().
inline constexpr std::chrono::milliseconds longestWait{20};

/// Waits until a condition holds. @returns whether it does; not where the command is interrupted.
template <class Condition>
bool waitFor(double seconds, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (isInterrupted() || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(longestWait);
    }
    return true;
}

} // namespace ovra::plex::tool
