// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Check.hpp"

#include <cstddef>
#include <cstdint>
#include <sys/mman.h>

namespace plex::fuzz
{

/// Memory whose end is the end of what may be touched: one byte further lies a page without access. That
/// catches libraries which are not compiled with the address sanitizer, as Fast CDR is not.
class GuardedMemory
{
public:
    GuardedMemory()
        : begin_(static_cast<std::uint8_t*>(
              mmap(nullptr, capacity + guard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        check(begin_ != MAP_FAILED && mprotect(begin_ + capacity, guard, PROT_NONE) == 0,
              "guarded memory can be had");
    }

    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    ~GuardedMemory() { munmap(begin_, capacity + guard); }

    /// The last bytes before the guard.
    std::uint8_t* last(std::size_t size)
    {
        check(size <= capacity, "the input is not longer than the guarded memory");
        return begin_ + capacity - size;
    }

private:
    static constexpr std::size_t capacity = 65536;
    static constexpr std::size_t guard = 65536; ///< a multiple of every usual page size

    std::uint8_t* begin_;
};

} // namespace plex::fuzz
