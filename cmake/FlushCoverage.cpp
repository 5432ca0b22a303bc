// SPDX-License-Identifier: Apache-2.0
// Part of every library and program of a coverage build: a process that ends by std::terminate(), as some
// failures demand, still writes down which lines it ran. Each binary keeps its own counters, so each has
// this.

#include <exception>

extern "C" void __gcov_dump(); // libgcov's

namespace
{

std::terminate_handler previous = nullptr;

[[noreturn]] void flush()
{
    __gcov_dump();
    previous();
    __builtin_unreachable();
}

[[maybe_unused]] const bool installed = [] {
    previous = std::set_terminate(flush);
    return true;
}();

} // namespace
