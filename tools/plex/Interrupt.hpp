// SPDX-License-Identifier: Apache-2.0
// How a command is asked to end: Ctrl-C, or SIGTERM. The first one lets it finish with its summary, a second
// one ends the process at once.
#pragma once

#include <chrono>

namespace ovra::plex::tool
{

/// Takes over the signals. To be called once, before there are other threads.
void installInterrupt();

/// Whether the command is to end. Any thread may ask.
bool isInterrupted();

/// So long does nothing wait without asking isInterrupted().
inline constexpr std::chrono::milliseconds longestWait{20};

} // namespace ovra::plex::tool
