// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Entities.hpp>

#include <fastdds/dds/core/condition/GuardCondition.hpp>
#include <fastdds/dds/core/condition/WaitSet.hpp>
#include <fastdds/dds/subscriber/ReadCondition.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace ovra::plex::ps::internal
{

using WallClock = std::chrono::system_clock;

/// The point in time when a timeout from now has run out; later than a century is a century.
inline WallClock::time_point endOf(std::chrono::milliseconds timeout)
{
    constexpr std::chrono::hours century{24 * 36525};
    return WallClock::now() + std::min<std::chrono::milliseconds>(timeout, century);
}

/// The shortest wait, 100 nanoseconds.
inline Duration_t shortWait()
{
    return {0, 100};
}

/// A wait for what is left of a timeout. The milliseconds beyond whole seconds go into the nanoseconds as
/// they are, and less than 100 ms is the shortest wait.
inline Duration_t waitFor(std::chrono::nanoseconds remaining)
{
    using namespace std::chrono_literals;
    if (remaining < 100ms) {
        return shortWait();
    }
    const auto milliseconds = static_cast<std::int32_t>(
        std::min<std::int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(remaining).count(),
                               std::numeric_limits<std::int32_t>::max()));
    return {milliseconds / 1000, static_cast<std::uint32_t>(milliseconds % 1000)};
}

/// Waits for unread samples of instances that are alive, or for the closing of their subscriber.
///
/// One thread at a time. Must not outlive the reader and the closing condition.
class DataWait
{
public:
    enum class Result {
        Timeout, ///< neither came in time
        Nothing, ///< woke for something else: wait again
        Data     ///< there may be samples; another thread may have taken them meanwhile
    };

    /// @throws PlexException when a condition cannot be made or attached.
    DataWait(dds::DataReader& reader, dds::GuardCondition& closing, const log4cplus::Logger& logger,
             const Uri& uri)
        : logger_(logger)
        , uri_(uri)
        , unread_(createCondition(reader))
    {
        attach(*unread_);
        attach(closing);
    }

    /// The first call never waits. Fast DDS works out a new condition's first value before it makes it known
    /// to arriving samples, so one that comes in between would go unnoticed until the next.
    /// @throws PlexException when DDS refuses to wait.
    Result wait(const Duration_t& timeout)
    {
        if (std::exchange(first_, false)) {
            return Result::Data;
        }
        dds::ConditionSeq active;
        const auto result = code(waitSet_.wait(active, timeout));
        if (result == RETCODE_TIMEOUT) {
            return Result::Timeout;
        }
        if (result != RETCODE_OK) {
            fail(logger_, withCode(withUri("Wait set wait error.", uri_), result));
        }
        const bool unread = std::ranges::find(active, unread_.get()) != active.end();
        return unread ? Result::Data : Result::Nothing;
    }

private:
    std::shared_ptr<dds::ReadCondition> createCondition(dds::DataReader& reader) const
    {
        auto* const condition = reader.create_readcondition(dds::NOT_READ_SAMPLE_STATE, dds::ANY_VIEW_STATE,
                                                            dds::ALIVE_INSTANCE_STATE);
        if (condition == nullptr) {
            fail(logger_, "Failed to create a read condition");
        }
        // As with entities, a condition that cannot be deleted ends the process.
        return {condition, [&reader, logger = logger_](dds::ReadCondition* held) {
                    const auto result = code(reader.delete_readcondition(held));
                    if (result != RETCODE_OK) {
                        fail(logger, withCode("Delete read condition failed", result));
                    }
                }};
    }

    void attach(dds::Condition& condition)
    {
        const auto result = code(waitSet_.attach_condition(condition));
        if (result != RETCODE_OK) {
            fail(logger_, withCode(withUri("Failed to attach a condition to a waitset.", uri_), result));
        }
    }

    const log4cplus::Logger& logger_;
    const Uri& uri_;
    const std::shared_ptr<dds::ReadCondition> unread_;
    dds::WaitSet waitSet_; ///< gone before its conditions
    bool first_ = true;
};

} // namespace ovra::plex::ps::internal
