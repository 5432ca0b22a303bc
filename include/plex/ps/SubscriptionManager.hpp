// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscriber.hpp>
#include <plex/ps/DdsDataEvent.hpp>
#include <plex/ps/DdsSubscription.hpp>
#include <plex/ps/internal/AsynchronousCallback.hpp>
#include <plex/ps/internal/DispatchMutex.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>
#include <plex/ps/internal/Matching.hpp>

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
/// Ownership: owned by its subscriber; shares the reader until it is shut down.
template <class T, class ST>
class SubscriptionManager : public std::enable_shared_from_this<SubscriptionManager<T, ST>>
{
public:
    using SubscriberPointer = std::shared_ptr<DdsSubscriber<T, ST>>;
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;
    using Filter = internal::SampleFilter<T, ST>;
    using Samples = internal::LoanedSamples<typename ST::DdsType>;

    class SubscriptionReaderListener;

    /// @param owner must outlive the shutdown.
    SubscriptionManager(DdsSubscriber<T, ST>& owner, std::shared_ptr<internal::dds::DataReader> reader);
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

    /// Each registers a callback and returns its handle.
    /// @throws PlexException when the filter intersects with a registered one.
    /// @throws IllegalStateException inside a callback under the same mutex, or after the shutdown.
    std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback& callback,
                                            SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter, Callback& callback,
                                                 SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsyncWithNotifier(const DataEventFilter<T>& filter,
                                                             Notifier& notifier,
                                                             SubscriberPointer subscriber);

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
        Filter filter;
        Callback callback;
    };

    struct NotifierSubscriptionInfo {
        Filter filter;
        Notifier notifier;
        bool matched = false; ///< whether a sample of the dispatch under way matched
    };

    template <class Info>
    using Registry = std::map<std::string, Info>;

    template <class Handle, class Info, class Function>
    std::unique_ptr<Subscription> add(internal::DispatchMutex& mutex, Registry<Info>& registry,
                                      const DataEventFilter<T>& filter, Function& function,
                                      SubscriberPointer subscriber);
    template <class Info>
    void remove(internal::DispatchMutex& mutex, Registry<Info>& registry, const std::string& id);
    template <class Info>
    void clear(internal::DispatchMutex& mutex, Registry<Info>& registry);

    /// Registers the filter under the id. @throws PlexException when it intersects with a registered one.
    void ensureUniqueFilter(const std::string& id, const Filter& filter);

    // hot: what each value passes, here and in publishers, lies together in memory, which is felt where the
    // caches are lost between two values (a round trip: 1.016 instead of 1.022 of bare Fast DDS's).
    [[gnu::hot]] void onDataAvailable();
    void dispatchToNotifiers();
    [[gnu::hot]] void dispatchToListeners();

    /// Takes the next sample, in any state, into the members for it. @returns whether there was one.
    [[gnu::hot]] bool takeNext();
    bool takeNextInAnyState();

    /// Gives samples back when it ends.
    internal::LoanGuard<typename ST::DdsType> guardLoan(Samples& samples) const;

    /// Calls back for a sample unless the QoS or the filter holds it back. @param makeData gives its value.
    template <class MakeData>
    [[gnu::hot]] void dispatch(const SubscriptionInfo& subscription, const internal::dds::SampleInfo& info,
                               MakeData makeData);

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriptionManager");
    DdsSubscriber<T, ST>& owner_;

    mutable internal::DispatchMutex asyncMutex_;        ///< guards what follows
    std::shared_ptr<internal::dds::DataReader> reader_; ///< empty after the shutdown
    Registry<SubscriptionInfo> asyncRegistry_;
    Registry<NotifierSubscriptionInfo> notifierRegistry_;
    bool moreData_ = false;               ///< data came from inside a callback
    bool notified_ = false;               ///< a notifier has been served, so samples may be marked as read
    typename ST::DdsType taken_;          ///< the sample being dispatched
    internal::dds::SampleInfo takenInfo_; ///< its info
    ST takenAdapter_;                     ///< views it
    const std::shared_ptr<T> takenData_;  ///< the adapter, which it does not own

    mutable internal::DispatchMutex syncMutex_; ///< guards the registry below
    Registry<SubscriptionInfo> syncRegistry_;

    std::mutex filtersMutex_; ///< guards what follows; taken after the others, never while a callback runs
    std::map<std::string, Filter> filters_; ///< of all registries, by id
    bool shutDown_ = false;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/SubscriptionManager.inl>
