// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscriber.hpp>
#include <plex/ps/DdsDataEvent.hpp>
#include <plex/ps/DdsSubscription.hpp>
#include <plex/ps/internal/CallbackScope.hpp>
#include <plex/ps/internal/DispatchMutex.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>
#include <plex/ps/internal/SampleFilter.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/subscriber/DataReaderListener.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace ovra::plex::ps
{

/// The callback subscriptions of one subscriber, and their dispatch.
///
/// No two subscriptions have intersecting filters, whatever their kinds, so a sample belongs to at most one.
///
/// Threads: every operation may be called from any thread. Callbacks of asynchronous subscriptions and
/// notifiers run on a thread of DDS (inside the process, on the publishing thread) under the async mutex,
/// those of synchronous ones on the thread that polls, under the sync mutex; no path holds both. Inside a
/// callback, changing subscriptions of a kind that the same mutex guards is refused. A publication to the
/// same topic inside an asynchronous callback is dispatched when the callback has returned.
/// Exceptions of callbacks end the dispatch and pass to its caller: to poll()'s, or to DDS.
/// Ownership: owned by its subscriber; shares the reader until it is shut down. The listener is the
/// subscriber's, as it must outlive the reader.
template <class T, class ST>
class SubscriptionManager : public std::enable_shared_from_this<SubscriptionManager<T, ST>>
{
public:
    using SubscriberPointer = std::shared_ptr<DdsSubscriber<T, ST>>;
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;
    using Filter = internal::SampleFilter<T, ST>;
    using DdsType = typename ST::DdsType;
    using Samples = internal::LoanedSamples<DdsType>;

    class SubscriptionReaderListener;

    /// @param owner is what callbacks are given; must outlive the shutdown.
    /// @param ageLimits older samples are dropped.
    SubscriptionManager(Subscriber<T>& owner, internal::AgeLimits ageLimits,
                        std::shared_ptr<internal::dds::DataReader> reader);
    SubscriptionManager(const SubscriptionManager&) = delete;
    SubscriptionManager& operator=(const SubscriptionManager&) = delete;
    ~SubscriptionManager() = default;

    /// A listener that dispatches to this manager as data arrives. It must live until the reader is
    /// deleted.
    std::unique_ptr<SubscriptionReaderListener> createListener();

    /// Detaches the listener and forgets all subscriptions. Waits for callbacks that run on other threads;
    /// none starts once this has returned. Must not be called inside a callback.
    void shutDown();

    /// Whether the calling thread is inside a callback of one of these subscriptions.
    bool isDispatchingHere() const;

    /// Each registers a copy of a callback and returns its handle; null after the shutdown.
    /// @throws PlexException when the filter intersects with a registered one; nothing is registered then.
    /// @throws IllegalStateException inside a callback under the same mutex.
    std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback& callback,
                                            SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter, Callback& callback,
                                                 SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsyncWithNotifier(const DataEventFilter<T>& filter,
                                                             Notifier& notifier,
                                                             SubscriberPointer subscriber);

    /// Checks that a filter intersects with none that is registered, in any registry or in one. The caller
    /// holds the registries' mutex.
    /// @throws PlexException, logged, when it does.
    void ensureUniqueFilter(const DataEventFilter<T>& filter) const;
    template <class SubscriptionMap>
    void ensureUniqueFilter(const DataEventFilter<T>& filter, const SubscriptionMap& map) const;

    /// Whether a sample's view state is among a filter's events; an empty set wants all.
    static bool matchInstanceEvent(const DdsType& sample, const internal::dds::SampleInfo& info,
                                   const DataEventFilter<T>& filter);

    /// Whether a sample passes a filter.
    static bool matches(const DdsType& sample, const internal::dds::SampleInfo& info, const Filter& filter);

    /// Each forgets a registration; an unknown id is no error.
    /// @throws IllegalStateException inside a callback under the same mutex.
    void removeSync(const std::string& id);
    void removeAsync(const std::string& id);
    void removeNotifier(const std::string& id);

    /// @throws IllegalStateException inside a synchronous callback, logged: poll() would hang there.
    void checkNotInSyncCallback() const;

    /// Calls the synchronous subscriptions' callbacks for samples just taken. Must not be called inside one.
    void dispatchToSync(const Samples& samples);

private:
    struct SubscriptionInfo {
        std::string id;
        Filter filter;
        Callback callback;
    };

    struct NotifierSubscriptionInfo {
        std::string id;
        Filter filter;
        Notifier notifier;
        bool matched = false; ///< whether a sample of the dispatch under way matched
    };

    template <class Info>
    using Registry = std::map<std::string, Info>;

    template <class Handle, class Info, class Function>
    std::unique_ptr<Subscription> add(internal::DispatchMutex& mutex, Registry<Info>& registry,
                                      const DataEventFilter<T>& filter, const Function& function,
                                      SubscriberPointer subscriber);
    template <class Info>
    void remove(internal::DispatchMutex& mutex, Registry<Info>& registry, const std::string& id);
    template <class Info>
    void clear(internal::DispatchMutex& mutex, Registry<Info>& registry);

    void onDataAvailable();
    void dispatchToNotifiers();
    void dispatchToListeners();

    /// Takes the next sample, in any state, into the members for it. @returns whether there was one.
    bool takeNext();
    bool takeNextInAnyState();

    /// Gives samples back when it ends.
    internal::LoanGuard guardLoan(Samples& samples) const;

    /// Calls back for a sample unless its age or the filter holds it back. @param makeData gives its value.
    template <class MakeData>
    void dispatch(const SubscriptionInfo& subscription, const DdsType& sample,
                  const internal::dds::SampleInfo& info, MakeData makeData);

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriptionManager");
    Subscriber<T>& owner_;
    const internal::AgeLimits ageLimits_;
    std::shared_ptr<internal::dds::DataReader> reader_; ///< empty after the shutdown

    mutable internal::DispatchMutex
        asyncMutex_; ///< guards reader_, the next two and what the dispatch works with
    Registry<SubscriptionInfo> asyncRegistry_;
    Registry<NotifierSubscriptionInfo> notifierRegistry_;
    mutable internal::DispatchMutex syncMutex_; ///< guards the next
    Registry<SubscriptionInfo> syncRegistry_;

    /// Guards changes of all three registries beside each one's own mutex, so that whoever holds either may
    /// look at a registry; taken after these, never while a callback runs.
    std::mutex registriesMutex_;
    bool shutDown_ = false; ///< guarded by it

    // What the dispatch works with.
    bool moreData_ = false;               ///< data came from inside a callback
    bool notified_ = false;               ///< a notifier has been served, so samples may be marked as read
    DdsType taken_;                       ///< the sample being dispatched
    internal::dds::SampleInfo takenInfo_; ///< its info
    ST takenAdapter_;                     ///< views it
    const std::shared_ptr<T> takenData_;  ///< the adapter, which it does not own
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/SubscriptionManager.inl>
