// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/DdsSubscriber.hpp>
#include <plex/ps/internal/ObservedEntity.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

namespace ovra::plex::ps
{

/// What an application holds: forwards every call to a subscriber that it shares with its loans and
/// subscriptions. Dropping it does not close the subscriber while one of these is left.
template <class T, class ST>
class DdsSubscriberDelegator final : public Subscriber<T>, public internal::ObservedEntity
{
public:
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;

    explicit DdsSubscriberDelegator(std::shared_ptr<DdsSubscriber<T, ST>> impl);
    DdsSubscriberDelegator(const DdsSubscriberDelegator&) = delete;
    DdsSubscriberDelegator& operator=(const DdsSubscriberDelegator&) = delete;

    ~DdsSubscriberDelegator() override { internal::giveUp(impl_); }

    std::shared_ptr<T> createDataEntity() override;
    void close() override;
    std::vector<std::shared_ptr<T>> read(std::size_t maxCount) override;
    std::shared_ptr<T> readInstance(const T& value) override;
    bool readInstance(const T& value, T& out) override;
    std::shared_ptr<LoanedDataEntity<T>> loanedRead() override;
    std::shared_ptr<LoanedDataEntity<T>> loanedReadInstance(const T& value) override;
    std::size_t readDataEvents(const DataEventFilter<T>& filter,
                               std::vector<std::shared_ptr<DataEvent<T>>>& events, std::size_t maxEvents,
                               const std::chrono::milliseconds& timeout) override;
    std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback callback) override;
    std::size_t poll(std::size_t maxCount, const std::chrono::milliseconds& timeout) override;
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                 Callback callback) override;
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                 Notifier notifier) override;

    std::vector<QosSetting> qosInEffect() const override { return impl_->qosInEffect(); }

private:
    std::shared_ptr<internal::Endpoint> endpoint() const override { return impl_->endpoint(); }

    History history() const override { return impl_->history(); }

    const std::shared_ptr<DdsSubscriber<T, ST>> impl_;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsSubscriberDelegator.inl>
