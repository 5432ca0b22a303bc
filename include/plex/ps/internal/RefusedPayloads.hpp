// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ovra::plex::ps::internal
{

/// The samples whose payload could not be decoded during a take or read of the calling thread, from the
/// making of this object to its end. Where samples are lent out, Fast DDS decodes in the taking thread and
/// does not look at the outcome (ReadTakeCommand.hpp in 2.14 and 3).
class PLEX_EXPORT RefusedPayloads // exported, so that a type and its readers meet wherever they were compiled
{
public:
    RefusedPayloads() { current() = this; }

    RefusedPayloads(const RefusedPayloads&) = delete;
    RefusedPayloads& operator=(const RefusedPayloads&) = delete;

    ~RefusedPayloads() { current() = nullptr; }

    /// Notes, if a take or read is under way on this thread, that a sample was not decoded.
    static void add(const void* sample)
    {
        if (auto* const refused = current()) {
            refused->samples_.push_back(sample);
        }
    }

    bool areAny() const { return !samples_.empty(); }

    std::size_t count() const { return samples_.size(); }

    bool contain(const void* sample) const { return std::ranges::find(samples_, sample) != samples_.end(); }

private:
    // Initial-exec: found without a call, which each take would pay for.
    static RefusedPayloads*& current()
    {
        [[gnu::tls_model("initial-exec")]] thread_local RefusedPayloads* refused = nullptr;
        return refused;
    }

    std::vector<const void*> samples_;
};

} // namespace ovra::plex::ps::internal
