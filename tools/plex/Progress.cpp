// SPDX-License-Identifier: Apache-2.0
#include "Progress.hpp"

#include <iostream>
#include <unistd.h>

namespace ovra::plex::tool
{

Progress::Progress() : isTerminal_(isatty(STDERR_FILENO) != 0) {}

bool Progress::isDue() const
{
    return isTerminal_ && Clock::now() >= next_;
}

void Progress::show(const std::string& text)
{
    if (isTerminal_) {
        std::cerr << "\r\033[K" + text << std::flush; // ECMA-48: erases to the end of the line
        isShown_ = true;
        next_ = Clock::now() + std::chrono::milliseconds(250);
    }
}

void Progress::clear()
{
    if (isShown_) {
        std::cerr << "\r\033[K" << std::flush;
        isShown_ = false;
    }
}

} // namespace ovra::plex::tool
