// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/DdsPublisher.hpp>
#include <plex/ps/InstanceDdsPublisher.hpp>
#include <plex/ps/internal/ObservedEntity.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace ovra::plex::ps
{

/// What an application holds: forwards every call to a publisher that it shares with its instance
/// publishers.
template <class T, class ST>
class DdsPublisherDelegator final : public Publisher<T>, public internal::ObservedEntity
{
public:
    /// @throws PlexException when property "dds.wait_for_ack.timeout_ms" is no number.
    DdsPublisherDelegator(std::shared_ptr<DdsPublisher<T, ST>> impl, const Plex::Properties& properties);

    std::shared_ptr<Plex> getPlex() const override;
    std::unique_ptr<InstancePublisher<T>> createInstancePublisher(const T& instance) override;
    void publish(const T& value, const std::chrono::milliseconds& timeout) override;
    void publish(double sourceTimestamp, const T& value, const std::chrono::milliseconds& timeout) override;
    std::shared_ptr<T> createDataEntity() override;
    void close() override;

    std::vector<QosSetting> qosInEffect() const override { return impl_->qosInEffect(); }

private:
    std::shared_ptr<internal::Endpoint> endpoint() const override { return impl_->endpoint(); }

    History history() const override { return impl_->history(); }

    fastdds::ReturnCode awaitAcknowledgments(const fastdds::Duration_t& timeout) override
    {
        return impl_->awaitAcknowledgments(timeout);
    }

    const std::shared_ptr<DdsPublisher<T, ST>> impl_;
    const std::int64_t waitForAckTimeoutMs_; ///< for the instance publishers
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsPublisherDelegator.inl>
