// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/common/UUID.hpp>

#include <utility>

namespace ovra::plex::ps
{

/// Hands what DDS reports of a reader to its subscription manager.
///
/// Fast DDS copies the reader's listener pointer and calls through it without counting, so detaching does not
/// wait for a call under way. Two things make it safe:
/// - The subscriber keeps the listener, which keeps the manager, as long as it lives, and whatever holds the
///   reader holds the subscriber, so both outlive delete_datareader(). When that returns, every call is over,
///   in both generations: those about data, deadlines and liveliness run with the RTPS reader's mutex held,
///   which the deletion takes to detach the reader's inner listener; receiving threads, in-process writers
///   and discovery reach a reader only under locks or counts that the deletion waits for before it frees it,
///   and the deadline's timer only while the event thread, for which it waits too, is busy.
/// - A call does its work under the manager's async mutex, which the shutdown takes: so no callback starts
///   once the shutdown is over.
template <class T, class ST>
class SubscriptionManager<T, ST>::SubscriptionReaderListener final : public internal::dds::DataReaderListener
{
public:
    explicit SubscriptionReaderListener(std::shared_ptr<SubscriptionManager> manager)
        : manager_(std::move(manager))
    {
    }

    [[gnu::hot]] void on_data_available(internal::dds::DataReader* /*reader*/) override
    {
        manager_->onDataAvailable();
    }

    void on_subscription_matched(internal::dds::DataReader* /*reader*/,
                                 const internal::dds::SubscriptionMatchedStatus& /*status*/) override
    {
    }

    void on_requested_deadline_missed(internal::dds::DataReader* /*reader*/,
                                      const internal::dds::RequestedDeadlineMissedStatus& /*status*/) override
    {
        LOG4CPLUS_WARN(logger_, "on_requested_deadline_missed");
    }

    void on_liveliness_changed(internal::dds::DataReader* /*reader*/,
                               const internal::dds::LivelinessChangedStatus& /*status*/) override
    {
    }

    void on_sample_rejected(internal::dds::DataReader* /*reader*/,
                            const internal::dds::SampleRejectedStatus& /*status*/) override
    {
    }

    void
    on_requested_incompatible_qos(internal::dds::DataReader* /*reader*/,
                                  const internal::dds::RequestedIncompatibleQosStatus& /*status*/) override
    {
        LOG4CPLUS_WARN(logger_, "Requested incompatible QoS ");
    }

    void on_sample_lost(internal::dds::DataReader* /*reader*/,
                        const internal::dds::SampleLostStatus& /*status*/) override
    {
    }

private:
    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriptionReaderListener");
    const std::shared_ptr<SubscriptionManager> manager_;
};

template <class T, class ST>
SubscriptionManager<T, ST>::SubscriptionManager(DdsSubscriber<T, ST>& owner,
                                                std::shared_ptr<internal::dds::DataReader> reader)
    : owner_(owner)
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
    const auto result = internal::code(reader_->set_listener(nullptr, internal::dds::StatusMask::none()));
    if (result != internal::RETCODE_OK) {
        LOG4CPLUS_ERROR(logger_, "errMsg:" << internal::withCode("Failed to set listener to none", result));
    }
    {
        const std::lock_guard lock(filtersMutex_);
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
                                const DataEventFilter<T>& filter, Function& function,
                                SubscriberPointer subscriber)
{
    std::unique_ptr<Handle> handle; // outlives the lock, which it takes to go where registering fails
    const auto lock = mutex.lockForChange(logger_);
    Info info{Filter(filter, logger_), std::move(function)};
    std::string id = detail::newUUID();
    handle = std::make_unique<Handle>(id, std::move(subscriber));
    ensureUniqueFilter(id, info.filter);
    registry.emplace(std::move(id), std::move(info));
    return handle;
}

template <class T, class ST>
void SubscriptionManager<T, ST>::ensureUniqueFilter(const std::string& id, const Filter& filter)
{
    const std::lock_guard lock(filtersMutex_);
    if (shutDown_) {
        owner_.failClosed();
    }
    for (const auto& [otherId, other] : filters_) {
        if (filter.intersects(other)) {
            internal::fail(logger_, "Filter intersects with an already registered subscription");
        }
    }
    filters_.emplace(id, filter);
}

template <class T, class ST>
template <class Info>
void SubscriptionManager<T, ST>::remove(internal::DispatchMutex& mutex, Registry<Info>& registry,
                                        const std::string& id)
{
    // What a callback has captured is destroyed after the locks are gone.
    typename Registry<Info>::node_type removed;
    const auto lock = mutex.lockForChange(logger_);
    const std::lock_guard filtersLock(filtersMutex_);
    removed = registry.extract(id);
    filters_.erase(id);
}

template <class T, class ST>
template <class Info>
void SubscriptionManager<T, ST>::clear(internal::DispatchMutex& mutex, Registry<Info>& registry)
{
    Registry<Info> removed; // as in remove()
    const auto lock = mutex.lockForChange(logger_);
    removed.swap(registry);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::onDataAvailable()
{
    if (asyncMutex_.isDispatchingHere()) {
        moreData_ = true;
        return;
    }
    const internal::DispatchMutex::Pass pass(asyncMutex_);
    const internal::AsynchronousCallback callbacks;
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
            subscription.matched = subscription.matched || subscription.filter.matches(samples.infos[0]);
        }
    };
    const auto result = internal::readInstances<typename ST::DdsType>(
        *reader_, internal::dds::ANY_INSTANCE_STATE, makeGuard, match);
    if (result != internal::RETCODE_OK) {
        LOG4CPLUS_ERROR(
            logger_, "errMsg:" << internal::withCode(
                         "Subscription manager failed to read data when dispatching to notifiers", result));
        return;
    }
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
            dispatch(subscription, takenInfo_, [&] { return takenData_; });
        }
    }
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::takeNext()
{
    if (notified_) {
        return takeNextInAnyState(); // a look marks samples as read, and take_next_sample() passes over these
    }
    const internal::RefusedPayloads refused; // Fast DDS passes over them here
    const auto result = internal::code(reader_->take_next_sample(&taken_, &takenInfo_));
    if (refused.areAny()) {
        internal::warnOf(refused, *reader_);
    }
    return result == internal::RETCODE_OK;
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::takeNextInAnyState()
{
    Samples samples;
    if (internal::take(*reader_, samples, 1) != internal::RETCODE_OK) {
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
internal::LoanGuard<typename ST::DdsType> SubscriptionManager<T, ST>::guardLoan(Samples& samples) const
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
    const internal::DispatchMutex::Pass pass(syncMutex_);
    for (const auto& [id, subscription] : syncRegistry_) {
        for (std::int32_t i = 0; i < samples.size(); ++i) {
            if (samples.hasValue(i)) {
                dispatch(subscription, samples.infos[i],
                         [&] { return createDataEntityFrom<T, ST>(samples.data[i]); });
            }
        }
    }
}

template <class T, class ST>
template <class MakeData>
void SubscriptionManager<T, ST>::dispatch(const SubscriptionInfo& subscription,
                                          const internal::dds::SampleInfo& info, MakeData makeData)
{
    if (owner_.isQosExceeded(info) || !subscription.filter.matches(info)) {
        return;
    }
    const DdsDataEvent<T> event(internal::toSeconds(info.source_timestamp), true, makeData(),
                                subscription.filter.instanceState(), internal::deduceInstanceEvent(info));
    subscription.callback(owner_, event);
}

template <class T, class ST>
SyncDdsSubscription<T, ST>::~SyncDdsSubscription()
{
    SyncDdsSubscription::close();
}

template <class T, class ST>
void SyncDdsSubscription<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeSync);
}

template <class T, class ST>
AsyncDdsSubscription<T, ST>::~AsyncDdsSubscription()
{
    AsyncDdsSubscription::close();
}

template <class T, class ST>
void AsyncDdsSubscription<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeAsync);
}

template <class T, class ST>
AsyncDdsSubscriptionNotifier<T, ST>::~AsyncDdsSubscriptionNotifier()
{
    AsyncDdsSubscriptionNotifier::close();
}

template <class T, class ST>
void AsyncDdsSubscriptionNotifier<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeNotifier);
}

} // namespace ovra::plex::ps
