// SPDX-License-Identifier: Apache-2.0
#include "Interrupt.hpp"

#include <atomic>
#include <csignal>

namespace ovra::plex::tool
{

namespace
{

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free); // or signals might not set it

void interrupt(int /*signal*/)
{
    interrupted = true;
}

} // namespace

void installInterrupt()
{
    struct sigaction action = {};
    action.sa_handler = interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // the second one does what it does by default
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction before = {};
    if (sigaction(SIGHUP, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) { // as with nohup
        sigaction(SIGHUP, &action, nullptr);
    }
    action.sa_handler = SIG_IGN; // a pipe without a reader is noticed as it is written to
    sigaction(SIGPIPE, &action, nullptr);
    sigaction(SIGXFSZ, &action, nullptr); // as is a file that may not grow
}

bool isInterrupted()
{
    return interrupted;
}

} // namespace ovra::plex::tool
