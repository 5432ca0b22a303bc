// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/Entities.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/core/condition/GuardCondition.hpp>
#include <fastdds/dds/core/condition/WaitSet.hpp>
#include <fastdds/dds/subscriber/ReadCondition.hpp>

#include <memory>

namespace ovra::plex::ps::internal
{

/// Waits for unread samples of instances that are alive, or for the closing of their subscriber.
///
/// One thread at a time. Must not outlive the reader and the closing condition.
class PLEX_EXPORT DataWait
{
public:
    enum class Result {
        Timeout, ///< neither came in time
        Nothing, ///< woke for something else: wait again
        Look,    ///< look for samples in the states that are waited for; where there is none, wait again
        Data     ///< there may be samples; another thread may have taken them meanwhile
    };

    /// @throws PlexException when a condition cannot be made or attached.
    DataWait(dds::DataReader& reader, dds::GuardCondition& closing, const log4cplus::Logger& logger,
             const Uri& uri);

    /// The first call never waits but asks for a look. Fast DDS works out a new condition's first value
    /// before it makes it known to arriving samples, so one that comes in between would go unnoticed until
    /// the next.
    /// @throws PlexException when DDS refuses to wait.
    Result wait(const fastdds::Duration_t& timeout);

private:
    std::shared_ptr<dds::ReadCondition> createCondition(dds::DataReader& reader) const;
    void attach(dds::Condition& condition);

    const log4cplus::Logger& logger_;
    const Uri& uri_;
    const std::shared_ptr<dds::ReadCondition> unread_;
    dds::WaitSet waitSet_; ///< gone before its conditions
    bool first_ = true;
};

} // namespace ovra::plex::ps::internal
