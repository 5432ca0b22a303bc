// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ovra::plex::ps::internal
{

/// The subscriptions of one kind, and those among them that the thread with the turn looks through.
///
/// Threads: changes and lookups by id are made under the mutex of the subscription manager, which is held for
/// nothing else; the rest belongs to the thread that has the turn. So callbacks run without a lock, and may
/// change the registry that they are called from.
/// @tparam Info a CallRecord.
template <class Info>
class SubscriptionRegistry
{
public:
    using Records = std::map<std::string, std::shared_ptr<Info>>;

    const Records& records() const { return records_; }

    void add(std::shared_ptr<Info> record)
    {
        records_.emplace(record->id, std::move(record));
        ++version_;
    }

    /// @returns the record, null for an unknown id.
    std::shared_ptr<Info> remove(const std::string& id)
    {
        auto node = records_.extract(id);
        ++version_;
        return node ? std::move(node.mapped()) : nullptr;
    }

    Records removeAll()
    {
        ++version_;
        return std::exchange(records_, {});
    }

    /// The records in the order of their ids, looked up anew if they have changed. Those that have ended
    /// meanwhile may be among them.
    const std::vector<std::shared_ptr<Info>>& current(std::mutex& mutex)
    {
        if (version_.load(std::memory_order_seq_cst) !=
            currentVersion_) { // after what CallbackTurn::Take stores
            lookUp(mutex);
        }
        return current_;
    }

private:
    void lookUp(std::mutex& mutex)
    {
        auto former = std::exchange(current_, {}); // goes without the lock
        const std::lock_guard lock(mutex);
        current_.reserve(records_.size());
        for (const auto& [id, record] : records_) {
            current_.push_back(record);
        }
        currentVersion_ = version_.load(std::memory_order_relaxed);
    }

    Records records_;
    std::atomic<std::uint32_t> version_ = 0;
    std::vector<std::shared_ptr<Info>> current_;
    std::uint32_t currentVersion_ = 0;
};

} // namespace ovra::plex::ps::internal
