// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/ObservedEntity.hpp>
#include <plex/ps/internal/Time.hpp>

namespace ovra::plex::ps::internal
{

EntityStatus ObservedEntity::status() const
{
    auto status = endpoint()->status();
    status.history = history();
    return status;
}

bool ObservedEntity::waitForMatched(std::size_t count, std::chrono::milliseconds timeout) const
{
    return endpoint()->waitForMatched(count, timeout);
}

Acknowledgment ObservedEntity::waitForAcknowledgments(std::chrono::milliseconds timeout)
{
    using Outcome = Acknowledgment::Outcome;
    if (timeout.count() < 0) {
        throw PlexException("Negative timeout given to waitForAcknowledgments");
    }
    auto waitedFor = endpoint()->acknowledgingPeers();
    const auto result = awaitAcknowledgments(toDuration(timeout.count()));
    if (result != fastdds::RETCODE_OK) {
        return {Outcome::TimedOut, endpoint()->acknowledgingPeers()};
    }
    return {waitedFor.empty() ? Outcome::NobodyToAcknowledge : Outcome::Acknowledged, {}};
}

std::unique_ptr<StatusWatch> ObservedEntity::watchStatus(StatusCallback callback)
{
    return endpoint()->watch(std::move(callback));
}

fastdds::ReturnCode ObservedEntity::awaitAcknowledgments(const fastdds::Duration_t& /*timeout*/)
{
    throw IllegalStateException("A subscriber has nothing to be acknowledged");
}

} // namespace ovra::plex::ps::internal
