// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/DataWait.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>

#include <algorithm>
#include <utility>

namespace ovra::plex::ps::internal
{

DataWait::DataWait(dds::DataReader& reader, dds::GuardCondition& closing, const log4cplus::Logger& logger,
                   const Uri& uri)
    : logger_(logger)
    , uri_(uri)
    , unread_(createCondition(reader))
{
    attach(*unread_);
    attach(closing);
}

DataWait::Result DataWait::wait(const fastdds::Duration_t& timeout)
{
    if (std::exchange(first_, false)) {
        return Result::Look;
    }
    dds::ConditionSeq active;
    const auto result = fastdds::code(waitSet_.wait(active, timeout));
    if (result == fastdds::RETCODE_TIMEOUT) {
        return Result::Timeout;
    }
    if (result != fastdds::RETCODE_OK) {
        fail(logger_, withCode(withUri("Wait set wait error.", uri_), result));
    }
    const bool unread = std::ranges::find(active, unread_.get()) != active.end();
    return unread ? Result::Data : Result::Nothing;
}

std::shared_ptr<dds::ReadCondition> DataWait::createCondition(dds::DataReader& reader) const
{
    auto* const condition =
        reader.create_readcondition(unreadAlive.sample, unreadAlive.view, unreadAlive.instance);
    if (condition == nullptr) {
        fail(logger_, "Failed to create a read condition");
    }
    // As with entities, a condition that cannot be deleted ends the process.
    return {condition, [&reader, logger = logger_](dds::ReadCondition* held) {
                const auto result = fastdds::code(reader.delete_readcondition(held));
                if (result != fastdds::RETCODE_OK) {
                    fail(logger, withCode("Delete read condition failed", result));
                }
            }};
}

void DataWait::attach(dds::Condition& condition)
{
    const auto result = fastdds::code(waitSet_.attach_condition(condition));
    if (result != fastdds::RETCODE_OK) {
        fail(logger_, withCode(withUri("Failed to attach a condition to a waitset.", uri_), result));
    }
}

} // namespace ovra::plex::ps::internal
