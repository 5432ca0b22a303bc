// SPDX-License-Identifier: Apache-2.0
#include "CountingAllocator.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long> live{0};
std::atomic<bool> nothrowFails{false};

void* allocate(std::size_t size) noexcept
{
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) {
        ++live;
    }
    return memory;
}

void release(void* memory) noexcept
{
    if (memory != nullptr) {
        --live;
        std::free(memory);
    }
}

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return nothrowFails ? nullptr : allocate(size);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    release(memory);
}

namespace plex::test
{

long liveAllocations()
{
    return live;
}

WithoutNothrowMemory::WithoutNothrowMemory()
{
    nothrowFails = true;
}

WithoutNothrowMemory::~WithoutNothrowMemory()
{
    nothrowFails = false;
}

} // namespace plex::test
