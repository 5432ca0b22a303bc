// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/common/UUID.hpp>
#include <plex/ps/SubscriptionReaderListener.hpp>

#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
SubscriptionManager<T, ST>::SubscriptionManager(Subscriber<T>& owner, internal::AgeLimits ageLimits,
                                                std::shared_ptr<internal::dds::DataReader> reader)
    : owner_(owner)
    , ageLimits_(ageLimits)
    , reader_(std::move(reader))
    , takenAdapter_(taken_, ovra::plex::icd::dds::Borrow{})
    , takenData_(std::shared_ptr<void>(), &takenAdapter_)
{
}

template <class T, class ST>
std::unique_ptr<typename SubscriptionManager<T, ST>::SubscriptionReaderListener>
SubscriptionManager<T, ST>::createListener()
{
    return std::make_unique<SubscriptionReaderListener>(this->shared_from_this());
}

template <class T, class ST>
void SubscriptionManager<T, ST>::shutDown()
{
    const auto result = fastdds::code(reader_->set_listener(nullptr, internal::dds::StatusMask::none()));
    if (result != fastdds::RETCODE_OK) {
        internal::recordErrMsg(logger_, internal::withCode("Failed to set listener to none", result));
    }
    {
        const std::lock_guard lock(registriesMutex_);
        shutDown_ = true;
    }
    clear(syncMutex_, syncRegistry_);
    clear(asyncMutex_, notifierRegistry_);
    clear(asyncMutex_, asyncRegistry_);
    // Given up here, so that a call of the listener that is just leaving can not be the last to hold it.
    const auto lock = asyncMutex_.lockForChange(logger_);
    reader_.reset();
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::isDispatchingHere() const
{
    return asyncMutex_.isDispatchingHere() || syncMutex_.isDispatchingHere();
}

template <class T, class ST>
std::unique_ptr<Subscription> SubscriptionManager<T, ST>::subscribe(const DataEventFilter<T>& filter,
                                                                    Callback& callback,
                                                                    SubscriberPointer subscriber)
{
    return add<SyncDdsSubscription<T, ST>>(syncMutex_, syncRegistry_, filter, callback,
                                           std::move(subscriber));
}

template <class T, class ST>
std::unique_ptr<Subscription> SubscriptionManager<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                         Callback& callback,
                                                                         SubscriberPointer subscriber)
{
    return add<AsyncDdsSubscription<T, ST>>(asyncMutex_, asyncRegistry_, filter, callback,
                                            std::move(subscriber));
}

template <class T, class ST>
std::unique_ptr<Subscription>
SubscriptionManager<T, ST>::subscribeAsyncWithNotifier(const DataEventFilter<T>& filter, Notifier& notifier,
                                                       SubscriberPointer subscriber)
{
    return add<AsyncDdsSubscriptionNotifier<T, ST>>(asyncMutex_, notifierRegistry_, filter, notifier,
                                                    std::move(subscriber));
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeSync(const std::string& id)
{
    remove(syncMutex_, syncRegistry_, id);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeAsync(const std::string& id)
{
    remove(asyncMutex_, asyncRegistry_, id);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeNotifier(const std::string& id)
{
    remove(asyncMutex_, notifierRegistry_, id);
}

template <class T, class ST>
template <class Handle, class Info, class Function>
std::unique_ptr<Subscription>
SubscriptionManager<T, ST>::add(internal::DispatchMutex& mutex, Registry<Info>& registry,
                                const DataEventFilter<T>& filter, const Function& function,
                                SubscriberPointer subscriber)
{
    std::unique_ptr<Handle> handle; // outlives the locks, which it takes to go where registering fails
    const auto lock = mutex.lockForChange(logger_);
    const std::lock_guard registriesLock(registriesMutex_);
    if (shutDown_) {
        return nullptr;
    }
    ensureUniqueFilter(filter);
    Info info{detail::newUUID(), Filter(filter, logger_), function};
    handle = std::make_unique<Handle>(info.id, std::move(subscriber));
    registry.emplace(info.id, std::move(info));
    return handle;
}

template <class T, class ST>
void SubscriptionManager<T, ST>::ensureUniqueFilter(const DataEventFilter<T>& filter) const
{
    ensureUniqueFilter(filter, asyncRegistry_);
    ensureUniqueFilter(filter, notifierRegistry_);
    ensureUniqueFilter(filter, syncRegistry_);
}

template <class T, class ST>
template <class SubscriptionMap>
void SubscriptionManager<T, ST>::ensureUniqueFilter(const DataEventFilter<T>& filter,
                                                    const SubscriptionMap& map) const
{
    for (const auto& [id, subscription] : map) {
        if (internal::intersect(filter, subscription.filter.original())) {
            internal::fail(logger_, "Filter intersects with an already registered subscription");
        }
    }
}

template <class T, class ST>
template <class Info>
void SubscriptionManager<T, ST>::remove(internal::DispatchMutex& mutex, Registry<Info>& registry,
                                        const std::string& id)
{
    // What a callback has captured is destroyed after the locks are gone.
    typename Registry<Info>::node_type removed;
    const auto lock = mutex.lockForChange(logger_);
    const std::lock_guard registriesLock(registriesMutex_);
    removed = registry.extract(id);
}

template <class T, class ST>
template <class Info>
void SubscriptionManager<T, ST>::clear(internal::DispatchMutex& mutex, Registry<Info>& registry)
{
    Registry<Info> removed; // as in remove()
    const auto lock = mutex.lockForChange(logger_);
    const std::lock_guard registriesLock(registriesMutex_);
    removed.swap(registry);
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::matchInstanceEvent(const DdsType& /*sample*/,
                                                    const internal::dds::SampleInfo& info,
                                                    const DataEventFilter<T>& filter)
{
    const auto& wanted = filter.events;
    return wanted.empty() ||
           (info.view_state == internal::dds::NEW_VIEW_STATE && wanted.contains(InstanceEvent::New)) ||
           (info.view_state == internal::dds::NOT_NEW_VIEW_STATE && wanted.contains(InstanceEvent::Update));
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::matches(const DdsType& sample, const internal::dds::SampleInfo& info,
                                         const Filter& filter)
{
    return filter.wantsInstance(info) && matchInstanceEvent(sample, info, filter.original());
}

template <class T, class ST>
void SubscriptionManager<T, ST>::onDataAvailable()
{
    if (asyncMutex_.isDispatchingHere()) {
        moreData_ = true;
        return;
    }
    const internal::DispatchMutex::DispatchLock lock(asyncMutex_);
    const internal::CallbackScope callbacks;
    if (!reader_) {
        return;
    }
    do {
        moreData_ = false;
        if (!notifierRegistry_.empty()) {
            dispatchToNotifiers();
        }
        if (!asyncRegistry_.empty()) {
            dispatchToListeners();
        }
    } while (moreData_);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::dispatchToNotifiers()
{
    for (auto& [id, subscription] : notifierRegistry_) {
        subscription.matched = false;
    }
    notified_ = true;
    const auto makeGuard = [&](Samples& samples) {
        return guardLoan(samples);
    };
    const auto match = [&](const Samples& samples) {
        for (auto& [id, subscription] : notifierRegistry_) {
            subscription.matched =
                subscription.matched || matches(samples.data[0], samples.infos[0], subscription.filter);
        }
    };
    // One sample of each instance is enough: what filters look at is the same for all samples of an instance.
    const auto result =
        internal::readInstances<DdsType>(*reader_, internal::dds::ANY_INSTANCE_STATE, 1, makeGuard, match);
    if (result != fastdds::RETCODE_OK) {
        internal::recordErrMsg(
            logger_, internal::withCode(
                         "Subscription manager failed to read data when dispatching to notifiers", result));
        return;
    }
    // The loans are back by now: there is one for each instance, and a reader has a limited number of them.
    for (const auto& [id, subscription] : notifierRegistry_) {
        if (subscription.matched) {
            subscription.notifier(owner_);
        }
    }
}

template <class T, class ST>
void SubscriptionManager<T, ST>::dispatchToListeners()
{
    while (takeNext()) {
        if (!takenInfo_.valid_data) {
            continue;
        }
        for (const auto& [id, subscription] : asyncRegistry_) {
            dispatch(subscription, taken_, takenInfo_, [&] { return takenData_; });
        }
    }
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::takeNext()
{
    if (notified_) {
        return takeNextInAnyState(); // a look marks samples as read, and take_next_sample() passes over these
    }
    return internal::takeNextSample(*reader_, &taken_, takenInfo_);
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::takeNextInAnyState()
{
    Samples samples;
    if (samples.take(*reader_, 1) != fastdds::RETCODE_OK) {
        return false;
    }
    const auto guard = guardLoan(samples);
    takenInfo_ = samples.infos[0];
    takenInfo_.valid_data = samples.hasValue(0);
    if (takenInfo_.valid_data) {
        taken_ = samples.data[0];
    }
    return true;
}

template <class T, class ST>
internal::LoanGuard SubscriptionManager<T, ST>::guardLoan(Samples& samples) const
{
    return internal::LoanGuard(
        *reader_, samples, logger_,
        "Subscription manager listener failed to return loaned data back to the middle-layer",
        internal::OnRefusal::GoOn);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::checkNotInSyncCallback() const
{
    if (syncMutex_.isDispatchingHere()) {
        internal::fail<IllegalStateException>(logger_,
                                              "poll can not be called inside a callback that it serves");
    }
}

template <class T, class ST>
void SubscriptionManager<T, ST>::dispatchToSync(const Samples& samples)
{
    const internal::DispatchMutex::DispatchLock lock(syncMutex_);
    for (const auto& [id, subscription] : syncRegistry_) {
        for (std::int32_t i = 0; i < samples.size(); ++i) {
            if (samples.hasValue(i)) {
                dispatch(subscription, samples.data[i], samples.infos[i],
                         [&] { return createDataEntityFrom<T, ST>(samples.data[i]); });
            }
        }
    }
}

template <class T, class ST>
template <class MakeData>
void SubscriptionManager<T, ST>::dispatch(const SubscriptionInfo& subscription, const DdsType& sample,
                                          const internal::dds::SampleInfo& info, MakeData makeData)
{
    if (ageLimits_.areExceededBy(info) || !matches(sample, info, subscription.filter)) {
        return;
    }
    const DdsDataEvent<T> event(internal::toSeconds(info.source_timestamp), true, makeData(),
                                subscription.filter.instanceState(), internal::deduceInstanceEvent(info));
    subscription.callback(owner_, event);
}

} // namespace ovra::plex::ps
