// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/common/UUID.hpp>
#include <plex/ps/SubscriptionReaderListener.hpp>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
SubscriptionManager<T, ST>::SubscriptionManager(Subscriber<T>& owner, internal::AgeLimits ageLimits,
                                                const Plex::Properties& properties)
    : owner_(owner)
    , ageLimits_(ageLimits)
    , callbacksOn_(internal::callbacksOn(properties))
    , logsExceptions_(internal::logsCallbackExceptions(properties))
    , takenAdapter_(taken_, ovra::plex::icd::dds::Borrow{})
    , takenData_(std::shared_ptr<void>(), &takenAdapter_)
{
}

template <class T, class ST>
void SubscriptionManager<T, ST>::setReader(std::shared_ptr<internal::dds::DataReader> reader,
                                           std::shared_ptr<internal::Endpoint> endpoint)
{
    endpoint_ = std::move(endpoint);
    topicName_ = reader->get_topicdescription()->get_name();
    participant_ = reader->get_subscriber()->get_participant();
    reader_ = std::move(reader);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::shutDown()
{
    const auto result = fastdds::code(reader_->set_listener(nullptr, internal::dds::StatusMask::none()));
    if (result != fastdds::RETCODE_OK) {
        internal::recordErrMsg(logger_, internal::withCode("Failed to set listener to none", result));
    }
    {
        const std::lock_guard lock(mutex_);
        shutDown_ = true;
        filters_.clear();
    }
    removeAll(pollTurn_, syncRegistry_);
    removeAll(*this, notifierRegistry_);
    removeAll(*this, asyncRegistry_);
    serveAsWanted();
    this->end();
}

/// Given up when no thread can look at it any more.
template <class T, class ST>
void SubscriptionManager<T, ST>::release()
{
    const auto reader = std::exchange(reader_, nullptr); // which keeps this object
}

template <class T, class ST>
std::unique_ptr<Subscription> SubscriptionManager<T, ST>::subscribe(const DataEventFilter<T>& filter,
                                                                    Callback& callback,
                                                                    SubscriberPointer subscriber)
{
    return add<SyncDdsSubscription<T, ST>>(syncRegistry_, filter, callback, std::move(subscriber));
}

template <class T, class ST>
std::unique_ptr<Subscription> SubscriptionManager<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                         Callback& callback,
                                                                         SubscriberPointer subscriber)
{
    auto handle = add<AsyncDdsSubscription<T, ST>>(asyncRegistry_, filter, callback, std::move(subscriber));
    serveAsWanted();
    this->awaitTake();
    return handle;
}

template <class T, class ST>
std::unique_ptr<Subscription>
SubscriptionManager<T, ST>::subscribeAsyncWithNotifier(const DataEventFilter<T>& filter, Notifier& notifier,
                                                       SubscriberPointer subscriber)
{
    auto handle =
        add<AsyncDdsSubscriptionNotifier<T, ST>>(notifierRegistry_, filter, notifier, std::move(subscriber));
    serveAsWanted();
    return handle;
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeSync(const std::string& id)
{
    remove(pollTurn_, syncRegistry_, id);
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeAsync(const std::string& id)
{
    remove(*this, asyncRegistry_, id);
    this->awaitTake();
    serveAsWanted();
}

template <class T, class ST>
void SubscriptionManager<T, ST>::removeNotifier(const std::string& id)
{
    remove(*this, notifierRegistry_, id);
    serveAsWanted();
}

template <class T, class ST>
template <class Handle, class Info, class Function>
std::unique_ptr<Subscription>
SubscriptionManager<T, ST>::add(Registry<Info>& registry, const DataEventFilter<T>& filter,
                                const Function& function, SubscriberPointer subscriber)
{
    std::unique_ptr<Handle> handle; // outlives the lock, which it takes to go where registering fails
    const Function copy = function; // which is code of the application, so without the lock
    const std::lock_guard lock(mutex_);
    if (shutDown_) {
        return nullptr;
    }
    ensureUniqueFilter(filter);
    auto record = std::make_shared<Info>(detail::newUUID(), Filter(filter, logger_), copy);
    handle = std::make_unique<Handle>(record->id, std::move(subscriber));
    filters_.emplace(record->filter.instance(), &record->filter);
    registry.add(std::move(record));
    return handle;
}

/// Lets data be called back for as long as there is somebody to call.
template <class T, class ST>
void SubscriptionManager<T, ST>::serveAsWanted()
{
    std::shared_ptr<internal::DispatchThread> former; // may wait for its callbacks, so goes without the lock
    const std::lock_guard serviceLock(serviceMutex_);
    const bool isWanted = hasAsynchronousSubscriptions();
    if (isWanted == isServed_) {
        return;
    }
    isServed_ = isWanted;
    if (!isWanted) {
        former = this->stopServing();
    } else if (callbacksOn_ == internal::CallbacksOn::OwnThread) {
        this->startServing(internal::DispatchThread::of(*participant_));
    } else {
        this->startServing(nullptr);
    }
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::hasAsynchronousSubscriptions()
{
    const std::lock_guard lock(mutex_);
    return !asyncRegistry_.records().empty() || !notifierRegistry_.records().empty();
}

template <class T, class ST>
void SubscriptionManager<T, ST>::ensureUniqueFilter(const DataEventFilter<T>& filter) const
{
    auto logger = logger_;
    const auto instance = Filter(filter, logger).instance();
    if (!instance) {
        ensureUniqueFilter(filter, filters_);
        return;
    }
    const auto naming = [this](const std::optional<fastdds::InstanceHandle_t>& named) {
        const auto [begin, end] = filters_.equal_range(named);
        return std::ranges::subrange(begin, end);
    };
    ensureUniqueFilter(filter, naming(std::nullopt));
    ensureUniqueFilter(filter, naming(instance));
}

template <class T, class ST>
template <class SubscriptionMap>
void SubscriptionManager<T, ST>::ensureUniqueFilter(const DataEventFilter<T>& filter,
                                                    const SubscriptionMap& map) const
{
    for (const auto& [key, registered] : map) {
        if (internal::intersect(filter, registered->original())) {
            internal::fail(logger_, "Filter intersects with an already registered subscription");
        }
    }
}

template <class T, class ST>
template <class Turn, class Info>
void SubscriptionManager<T, ST>::remove(Turn& turn, Registry<Info>& registry, const std::string& id)
{
    std::shared_ptr<Info> record;
    {
        const std::lock_guard lock(mutex_);
        record = registry.remove(id);
        if (record) {
            record->ended = true; // before removeAll() can miss it
            forgetFilter(record->filter);
        }
    }
    if (!record) {
        turn.awaitCalls(); // it may be on the way out on another thread
    } else if (turn.endRecord(*record)) {
        record->function = nullptr; // destroyed here, not whenever the dispatch looks next
    }
}

template <class T, class ST>
template <class Turn, class Info>
void SubscriptionManager<T, ST>::removeAll(Turn& turn, Registry<Info>& registry)
{
    typename Registry<Info>::Records records;
    {
        const std::lock_guard lock(mutex_);
        records = registry.removeAll();
    }
    for (const auto& [id, record] : records) {
        if (turn.endRecord(*record)) {
            record->function = nullptr; // as in remove()
        }
    }
    turn.awaitCalls(); // of those that other threads are ending
}

template <class T, class ST>
void SubscriptionManager<T, ST>::forgetFilter(const Filter& filter)
{
    const auto [begin, end] = filters_.equal_range(filter.instance());
    const auto found = std::find_if(begin, end, [&](const auto& entry) { return entry.second == &filter; });
    if (found != end) {
        filters_.erase(found);
    }
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
void SubscriptionManager<T, ST>::callBack()
{
    if (!notifierRegistry_.current(mutex_).empty()) {
        dispatchToNotifiers();
    }
    if (!asyncRegistry_.current(mutex_).empty()) {
        dispatchToListeners();
    }
}

template <class T, class ST>
void SubscriptionManager<T, ST>::dispatchToNotifiers()
{
    const auto& subscriptions = notifierRegistry_.current(mutex_);
    for (const auto& subscription : subscriptions) {
        subscription->matched = false;
    }
    notified_ = true;
    const auto makeGuard = [&](Samples& samples) {
        return guardLoan(samples);
    };
    const auto match = [&](const Samples& samples) {
        for (const auto& subscription : subscriptions) {
            subscription->matched =
                subscription->matched || matches(samples.data[0], samples.infos[0], subscription->filter);
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
    for (const auto& subscription : subscriptions) {
        if (subscription->matched) {
            call(*this, *subscription, [&] { guarded([&] { subscription->function(owner_); }); });
        }
    }
}

template <class T, class ST>
void SubscriptionManager<T, ST>::dispatchToListeners()
{
    for (;;) {
        const auto subscriptions = takeForListeners();
        if (subscriptions.empty()) {
            return;
        }
        if (!takenInfo_.valid_data || !isFresh(takenInfo_)) {
            continue;
        }
        for (const auto& subscription : subscriptions) {
            if (wants(*subscription, taken_, takenInfo_)) {
                call(*this, *subscription,
                     [&] { guarded([&] { tell(*subscription, takenInfo_, [&] { return takenData_; }); }); });
            }
        }
    }
}

/// Subscriptions are looked up before each sample: none is taken for some that have all ended, and none is
/// told to one that was made after it was taken.
template <class T, class ST>
auto SubscriptionManager<T, ST>::takeForListeners() -> std::span<const std::shared_ptr<SubscriptionInfo>>
{
    const internal::CallbackTurn::Take take(*this);
    const auto& subscriptions = asyncRegistry_.current(mutex_);
    if (subscriptions.empty() || !takeNext()) {
        return {};
    }
    return subscriptions;
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
    if (pollTurn_.isHere()) {
        internal::fail<IllegalStateException>(logger_,
                                              "poll can not be called inside a callback that it serves");
    }
}

template <class T, class ST>
std::size_t SubscriptionManager<T, ST>::dispatchToSync(const Samples& samples)
{
    const auto count = static_cast<std::size_t>(samples.size());
    std::vector<bool> told(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(i);
        told[i] = !samples.hasValue(index) || !isFresh(samples.infos[index]);
    }
    const auto sampleAt = [&](std::size_t i) -> const DdsType& {
        return samples.data[static_cast<std::int32_t>(i)];
    };
    const auto infoAt = [&](std::size_t i) -> const internal::dds::SampleInfo& {
        return samples.infos[static_cast<std::int32_t>(i)];
    };
    try {
        tellPolled(told, sampleAt, infoAt);
    } catch (...) {
        for (std::size_t i = 0; i < count; ++i) {
            if (!told[i]) {
                untold_.push_back({sampleAt(i), infoAt(i)});
            }
        }
        hasUntold_ = !untold_.empty();
        throw;
    }
    return count;
}

template <class T, class ST>
std::size_t SubscriptionManager<T, ST>::dispatchUntold(std::size_t maxCount)
{
    const auto count = maxCount == 0 ? untold_.size() : std::min(maxCount, untold_.size());
    std::vector<bool> told(count);
    std::deque<UntoldSample> samples;
    std::move(untold_.begin(), untold_.begin() + static_cast<std::ptrdiff_t>(count),
              std::back_inserter(samples));
    untold_.erase(untold_.begin(), untold_.begin() + static_cast<std::ptrdiff_t>(count));
    hasUntold_ = !untold_.empty();
    try {
        tellPolled(
            told, [&](std::size_t i) -> const DdsType& { return samples[i].sample; },
            [&](std::size_t i) -> const internal::dds::SampleInfo& { return samples[i].info; });
    } catch (...) {
        for (auto i = count; i-- > 0;) {
            if (!told[i]) {
                untold_.push_front(std::move(samples[i]));
            }
        }
        hasUntold_ = !untold_.empty();
        throw;
    }
    return count;
}

template <class T, class ST>
template <class SampleAt, class InfoAt>
void SubscriptionManager<T, ST>::tellPolled(std::vector<bool>& told, SampleAt sampleAt, InfoAt infoAt)
{
    for (const auto& subscription : syncRegistry_.current(mutex_)) {
        for (std::size_t i = 0; i < told.size(); ++i) {
            if (told[i] || !wants(*subscription, sampleAt(i), infoAt(i))) {
                continue;
            }
            call(pollTurn_, *subscription, [&] {
                told[i] = true;
                tell(*subscription, infoAt(i), [&] { return createDataEntityFrom<T, ST>(sampleAt(i)); });
            });
        }
    }
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::isFresh(const internal::dds::SampleInfo& info) const
{
    internal::count(endpoint_->counters.received);
    if (!ageLimits_.areExceededBy(info)) {
        return true;
    }
    internal::count(endpoint_->counters.tooOld);
    return false;
}

template <class T, class ST>
bool SubscriptionManager<T, ST>::wants(const SubscriptionInfo& subscription, const DdsType& sample,
                                       const internal::dds::SampleInfo& info) const
{
    return !ageLimits_.areExceededBy(info) && matches(sample, info, subscription.filter);
}

template <class T, class ST>
template <class MakeData>
void SubscriptionManager<T, ST>::tell(SubscriptionInfo& subscription, const internal::dds::SampleInfo& info,
                                      MakeData makeData)
{
    const DdsDataEvent<T> event(internal::toSeconds(info.source_timestamp), true, makeData(),
                                subscription.filter.instanceState(), internal::deduceInstanceEvent(info));
    internal::count(endpoint_->counters.delivered);
    subscription.function(owner_, event);
}

template <class T, class ST>
template <class Turn, class Info, class Run>
void SubscriptionManager<T, ST>::call(Turn& turn, Info& record, Run run)
{
    struct Call {
        Turn& turn;
        Info& record;
        const bool mayRun = turn.beginCall(record);

        ~Call()
        {
            if (mayRun && record.ended) {
                record.function = nullptr; // by the one who has just called it, as it has ended itself
            }
            turn.endCall();
        }
    };

    const Call call{turn, record};
    if (call.mayRun) {
        run();
    }
}

template <class T, class ST>
template <class Run>
void SubscriptionManager<T, ST>::guarded(Run run)
{
    try {
        run();
    } catch (...) {
        internal::count(endpoint_->counters.callbacksThrew);
        if (!logsExceptions_) {
            throw;
        }
        internal::recordCallbackFailure(logger_, topicName_);
    }
}

} // namespace ovra::plex::ps
