// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Entities.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace ovra::plex::ps::internal
{

/// A DDS entity that may be closed while others use it: it is given up when it is closed and the last use is
/// over.
///
/// Threads: any, but for set(). A use costs two atomic operations; an atomic shared pointer costs four.
template <class Entity>
class SharedEntity
{
public:
    /// Keeps the entity until it ends; must not outlive the shared entity.
    class Use
    {
    public:
        Use(Use&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}

        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        Use& operator=(Use&&) = delete;

        ~Use() { end(); }

        /// Whether there is an entity: it was set, not yet closed, and the use has not ended.
        explicit operator bool() const { return shared_ != nullptr; }

        Entity& operator*() const { return *shared_->entity_; }

        Entity* operator->() const { return shared_->entity_.get(); }

        void end()
        {
            if (auto* const shared = std::exchange(shared_, nullptr)) {
                shared->leave();
            }
        }

    private:
        friend class SharedEntity;

        explicit Use(const SharedEntity* shared) : shared_(shared) {}

        const SharedEntity* shared_;
    };

    SharedEntity() = default;
    SharedEntity(const SharedEntity&) = delete;
    SharedEntity& operator=(const SharedEntity&) = delete;
    ~SharedEntity() = default;

    /// To be called once, before anything else and by one thread.
    void set(std::shared_ptr<Entity> entity)
    {
        entity_ = std::move(entity);
        state_.store(0, std::memory_order_release);
    }

    Use use() const { return Use(enter() ? this : nullptr); }

    /// Lets no further use begin, and gives the entity up unless a use goes on. Again is harmless.
    void close()
    {
        if (state_.fetch_or(closed, std::memory_order_acq_rel) == 0) {
            entity_.reset();
        }
    }

private:
    static constexpr std::uint32_t closed = 1;
    static constexpr std::uint32_t oneUse = 2;

    bool enter() const
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

    void leave() const
    {
        if (state_.fetch_sub(oneUse, std::memory_order_acq_rel) == oneUse + closed) {
            entity_.reset();
        }
    }

    // A use changes nothing of what others see of it.
    mutable std::shared_ptr<Entity> entity_;
    mutable std::atomic<std::uint32_t> state_ =
        closed; ///< the number of uses, times two, and whether it is closed
};

using SharedReader = SharedEntity<dds::DataReader>;
using SharedWriter = SharedEntity<dds::DataWriter>;

} // namespace ovra::plex::ps::internal
