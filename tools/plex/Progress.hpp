// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace ovra::plex::tool
{

/// A line on the terminal that says how far long work has come. Elsewhere it says nothing.
class Progress
{
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    ~Progress() { clear(); }

    /// Whether it is time to show something again.
    bool isDue() const;

    /// Replaces what was shown.
    void show(const std::string& text);

    /// Takes away what was shown, so that something else may be written.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    const bool isTerminal_;
    bool isShown_ = false;
    Clock::time_point next_ = Clock::now();
};

} // namespace ovra::plex::tool
