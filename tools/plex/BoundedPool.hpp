// SPDX-License-Identifier: Apache-2.0
// The memory for samples that have been received and not been taken yet.
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <atomic>
#include <cstddef>

namespace ovra::plex::tool
{

/// Payloads of all readers of a program, which together have a largest size: what does not fit is refused,
/// and so lost. One payload is always had, whatever its size. Any threads may use it at once.
class BoundedPool final : public fastdds::PayloadPool
{
public:
    /// @param largest the bytes that all payloads together may have.
    explicit BoundedPool(std::size_t largest) : largest_(largest) {}

    bool reserve(std::uint32_t size, fastdds::SerializedPayload_t& payload) override;
    void share(const fastdds::SerializedPayload_t& payload,
               fastdds::SerializedPayload_t& another) noexcept override;
    void release(fastdds::SerializedPayload_t& payload) noexcept override;

private:
    const std::size_t largest_;
    std::atomic<std::size_t> reserved_ = 0; ///< bytes
};

} // namespace ovra::plex::tool
