// SPDX-License-Identifier: Apache-2.0
#include "AllocatedBytes.hpp"

#include <cstdlib>
#include <new>

namespace
{

thread_local std::size_t allocated = 0;

} // namespace

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    allocated += size;
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace plex::test
{

AllocatedBytes::AllocatedBytes() : before_(allocated) {}

std::size_t AllocatedBytes::count() const
{
    return allocated - before_;
}

} // namespace plex::test
