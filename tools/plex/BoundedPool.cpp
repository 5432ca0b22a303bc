// SPDX-License-Identifier: Apache-2.0
#include "BoundedPool.hpp"

#include <cstdlib>
#include <new>

namespace ovra::plex::tool
{

namespace
{

/// Stands before each payload.
struct alignas(std::max_align_t) Header {
    const std::uint32_t size;
    std::atomic<std::uint32_t> owners = 1;
};

std::uint8_t* payloadOf(Header* header)
{
    return reinterpret_cast<std::uint8_t*>(header + 1);
}

Header* headerOf(const fastdds::SerializedPayload_t& payload)
{
    return reinterpret_cast<Header*>(payload.data) - 1;
}

} // namespace

bool BoundedPool::reserve(std::uint32_t size, fastdds::SerializedPayload_t& payload)
{
    const auto before = reserved_.fetch_add(size);
    const bool fits = before == 0 || before + size <= largest_;
    void* const memory = fits ? std::malloc(sizeof(Header) + size) : nullptr;
    if (memory == nullptr) {
        reserved_ -= size;
        return false;
    }
    payload.data = payloadOf(new (memory) Header{size});
    payload.max_size = size;
    return true;
}

void BoundedPool::share(const fastdds::SerializedPayload_t& payload,
                        fastdds::SerializedPayload_t& another) noexcept
{
    auto* const header = headerOf(payload);
    ++header->owners;
    another.data = payload.data;
    another.length = payload.length;
    another.max_size = header->size;
}

void BoundedPool::release(fastdds::SerializedPayload_t& payload) noexcept
{
    auto* const header = headerOf(payload);
    if (--header->owners == 0) {
        reserved_ -= header->size;
        std::free(header);
    }
    payload.data = nullptr;
    payload.length = 0;
    payload.pos = 0;
    payload.max_size = 0;
}

} // namespace ovra::plex::tool
