// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscription.hpp>
#include <plex/ps/internal/CallbackThread.hpp>

#include <memory>
#include <string>
#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
class DdsSubscriber;
template <class T, class ST>
class SubscriptionManager;

/// A registration with a subscriber's subscription manager. Closing or dropping it ends it, also inside its
/// own callback; when the subscriber was closed before, there is nothing left to end.
template <class T, class ST>
class DdsSubscription : public Subscription
{
public:
    DdsSubscription(std::string id, std::shared_ptr<DdsSubscriber<T, ST>> subscriber)
        : id_(std::move(id))
        , subscriber_(std::move(subscriber))
    {
    }

    DdsSubscription(const DdsSubscription&) = delete;
    DdsSubscription& operator=(const DdsSubscription&) = delete;

    ~DdsSubscription() override { internal::giveUp(std::move(subscriber_)); }

protected:
    /// Removes the registration with the operation given, once.
    template <class Remove>
    void closeWith(Remove remove)
    {
        if (closed_) {
            return;
        }
        if (const auto manager = subscriber_->subscriptionManager()) {
            ((*manager).*remove)(id_);
        }
        closed_ = true;
    }

private:
    const std::string id_;
    std::shared_ptr<DdsSubscriber<T, ST>> subscriber_;
    bool closed_ = false;
};

/// Made by subscribe().
template <class T, class ST>
class SyncDdsSubscription final : public DdsSubscription<T, ST>
{
public:
    using DdsSubscription<T, ST>::DdsSubscription;
    ~SyncDdsSubscription() override;
    void close() override;
};

/// Made by subscribeAsync() with a callback.
template <class T, class ST>
class AsyncDdsSubscription final : public DdsSubscription<T, ST>
{
public:
    using DdsSubscription<T, ST>::DdsSubscription;
    ~AsyncDdsSubscription() override;
    void close() override;
};

/// Made by subscribeAsync() with a notifier.
template <class T, class ST>
class AsyncDdsSubscriptionNotifier final : public DdsSubscription<T, ST>
{
public:
    using DdsSubscription<T, ST>::DdsSubscription;
    ~AsyncDdsSubscriptionNotifier() override;
    void close() override;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsSubscription.inl>
