// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <thread>

namespace plex::test
{

/// How long a test waits for something that must happen.
inline constexpr std::chrono::seconds patience{20};

/// Waits until the condition holds. @returns false when patience ran out first.
template <class Condition>
bool waitFor(Condition&& condition, std::chrono::milliseconds deadline = patience)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // between two looks
    }
    return true;
}

} // namespace plex::test
