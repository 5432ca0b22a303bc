// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Entities.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace ovra::plex::ps::internal
{

/// A data reader that may be closed while others use it: it is given up when it is closed and the last use is
/// over.
///
/// Threads: any, but for set(). A use costs two atomic operations; an atomic shared pointer costs four.
class SharedReader
{
public:
    /// Keeps the reader until it ends; must not outlive the shared reader.
    class Use
    {
    public:
        Use(Use&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}

        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        Use& operator=(Use&&) = delete;

        ~Use() { end(); }

        /// Whether there is a reader: it was set, not yet closed, and the use has not ended.
        explicit operator bool() const { return shared_ != nullptr; }

        dds::DataReader& operator*() const { return *shared_->reader_; }

        void end()
        {
            if (auto* const shared = std::exchange(shared_, nullptr)) {
                shared->leave();
            }
        }

    private:
        friend class SharedReader;

        explicit Use(SharedReader* shared) : shared_(shared) {}

        SharedReader* shared_;
    };

    SharedReader() = default;
    SharedReader(const SharedReader&) = delete;
    SharedReader& operator=(const SharedReader&) = delete;
    ~SharedReader() = default;

    /// To be called once, before anything else and by one thread.
    void set(std::shared_ptr<dds::DataReader> reader)
    {
        reader_ = std::move(reader);
        state_.store(0, std::memory_order_release);
    }

    Use use() { return Use(enter() ? this : nullptr); }

    /// Lets no further use begin, and gives the reader up unless a use goes on. Again is harmless.
    void close()
    {
        if (state_.fetch_or(closed, std::memory_order_acq_rel) == 0) {
            reader_.reset();
        }
    }

private:
    static constexpr std::uint32_t closed = 1;
    static constexpr std::uint32_t oneUse = 2;

    bool enter()
    {
        auto state = state_.load(std::memory_order_relaxed);
        do {
            if ((state & closed) != 0) {
                return false;
            }
        } while (!state_.compare_exchange_weak(state, state + oneUse, std::memory_order_acquire,
                                               std::memory_order_relaxed));
        return true;
    }

    void leave()
    {
        if (state_.fetch_sub(oneUse, std::memory_order_acq_rel) == oneUse + closed) {
            reader_.reset();
        }
    }

    std::shared_ptr<dds::DataReader> reader_;
    std::atomic<std::uint32_t> state_ = closed; ///< the number of uses, times two, and whether it is closed
};

} // namespace ovra::plex::ps::internal
