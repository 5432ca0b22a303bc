// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/dds/QosInEffect.hpp>
#include <plex/dds/Status.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/History.hpp>

#include <chrono>
#include <cstddef>
#include <memory>

namespace ovra::plex::ps::internal
{

/// The status operations of what an application holds, over the endpoint behind it. What it is set to, it
/// says itself.
class PLEX_EXPORT ObservedEntity : public ObservableEntity, public ConfiguredEntity
{
public:
    EntityStatus status() const final;
    bool waitForMatched(std::size_t count, std::chrono::milliseconds timeout) const final;
    Acknowledgment waitForAcknowledgments(std::chrono::milliseconds timeout) final;
    std::unique_ptr<StatusWatch> watchStatus(StatusCallback callback) final;

protected:
    ObservedEntity() = default;
    ObservedEntity(const ObservedEntity&) = default;
    ObservedEntity& operator=(const ObservedEntity&) = default;
    ~ObservedEntity() = default;

    /// What is known of the reader or writer; never null. @throws IllegalStateException when closed.
    virtual std::shared_ptr<Endpoint> endpoint() const = 0;

    /// What DDS keeps, see historyOf(). @throws IllegalStateException when closed.
    virtual History history() const = 0;

    /// Waits until what a writer has sent is acknowledged.
    /// @throws IllegalStateException for a subscriber, and when closed.
    virtual fastdds::ReturnCode awaitAcknowledgments(const fastdds::Duration_t& timeout);
};

} // namespace ovra::plex::ps::internal
