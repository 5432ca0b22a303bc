// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscriber.hpp>
#include <plex/ps/DdsDataEvent.hpp>
#include <plex/ps/DdsSubscription.hpp>
#include <plex/ps/internal/CallbackTurn.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>
#include <plex/ps/internal/PollTurn.hpp>
#include <plex/ps/internal/SampleFilter.hpp>
#include <plex/ps/internal/Settings.hpp>
#include <plex/ps/internal/SubscriptionRegistry.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/subscriber/DataReaderListener.hpp>

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace ovra::plex::ps
{

/// The callback subscriptions of one subscriber, and their dispatch.
///
/// No two subscriptions have intersecting filters, whatever their kinds, so a sample belongs to at most one.
///
/// Threads: every operation may be called from any thread, inside callbacks too. Callbacks run with no lock
/// of this library held. One thread at a time runs those of asynchronous subscriptions and notifiers (see
/// CallbackTurn for which), one those of polled ones. What a callback changes of the subscriptions holds at
/// once: none that it has ended is called any more, and its filter is free; a new one takes part from the
/// next sample on. Exceptions of callbacks end the dispatch and pass to its caller, poll()'s, publish()'s or
/// DDS, unless those of asynchronous callbacks are to be logged. Ownership: shared by its subscriber and the
/// reader's listener, so by the reader; shares the reader until it is shut down and no thread has the turn.
template <class T, class ST>
class SubscriptionManager : public internal::CallbackTurn
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
    /// @throws PlexException when property "dds.callback.thread" or "dds.callback.exceptions" has no meaning.
    SubscriptionManager(Subscriber<T>& owner, internal::AgeLimits ageLimits,
                        const Plex::Properties& properties);
    SubscriptionManager(const SubscriptionManager&) = delete;
    SubscriptionManager& operator=(const SubscriptionManager&) = delete;
    ~SubscriptionManager() override = default;

    /// Sets what it reads from, whose listener is to hand data to this manager. To be called once, before
    /// anything else.
    void setReader(std::shared_ptr<internal::dds::DataReader> reader,
                   std::shared_ptr<internal::Endpoint> endpoint);

    /// Detaches the listener and forgets all subscriptions. Outside callbacks, waits for those that run on
    /// other threads; none starts once this has returned.
    void shutDown();

    /// Each registers a copy of a callback and returns its handle; null after the shutdown.
    /// @throws PlexException when the filter intersects with a registered one; nothing is registered then.
    std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback& callback,
                                            SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter, Callback& callback,
                                                 SubscriberPointer subscriber);
    std::unique_ptr<Subscription> subscribeAsyncWithNotifier(const DataEventFilter<T>& filter,
                                                             Notifier& notifier,
                                                             SubscriberPointer subscriber);

    /// Checks that a filter intersects with none that is registered, or with none of some. The caller holds
    /// the registries' mutex.
    /// @throws PlexException, logged, when it does.
    void ensureUniqueFilter(const DataEventFilter<T>& filter) const;
    template <class SubscriptionMap>
    void ensureUniqueFilter(const DataEventFilter<T>& filter, const SubscriptionMap& map) const;

    /// Whether a sample's view state is among a filter's events; an empty set wants all.
    static bool matchInstanceEvent(const DdsType& sample, const internal::dds::SampleInfo& info,
                                   const DataEventFilter<T>& filter);

    /// Whether a sample passes a filter.
    static bool matches(const DdsType& sample, const internal::dds::SampleInfo& info, const Filter& filter);

    /// Each forgets a registration; an unknown id is no error. Outside callbacks, waits for a callback of it
    /// that runs; none starts once this has returned.
    void removeSync(const std::string& id);
    void removeAsync(const std::string& id);
    void removeNotifier(const std::string& id);

    /// @throws IllegalStateException inside a synchronous callback, logged: poll() would hang there.
    void checkNotInSyncCallback() const;

    internal::PollTurn& pollTurn() { return pollTurn_; }

    /// Each calls the synchronous subscriptions' callbacks: for samples just taken, or for those that a
    /// callback that threw has left untold, at most so many (0: any number). The caller has the poll turn.
    /// @returns the number of samples.
    std::size_t dispatchToSync(const Samples& samples);
    std::size_t dispatchUntold(std::size_t maxCount);

    /// Whether there are samples that a callback that threw has left untold.
    bool hasUntold() const { return hasUntold_; }

private:
    template <class Function>
    struct Registration : internal::CallRecord {
        Registration(std::string newId, Filter wanted, Function called)
            : id(std::move(newId))
            , filter(std::move(wanted))
            , function(std::move(called))
        {
        }

        const std::string id;
        const Filter filter;
        Function function;    ///< empty when it has ended and no call of it runs
        bool matched = false; ///< whether a sample of the notifiers' dispatch under way matched
    };

    using SubscriptionInfo = Registration<Callback>;
    using NotifierSubscriptionInfo = Registration<Notifier>;

    /// A sample that was taken for polled callbacks but not told.
    struct UntoldSample {
        DdsType sample;
        internal::dds::SampleInfo info;
    };

    template <class Info>
    using Registry = internal::SubscriptionRegistry<Info>;

    /// The filters of all registrations by the instance that they name: those that name different ones need
    /// not be compared.
    using Filters = std::multimap<std::optional<fastdds::InstanceHandle_t>, const Filter*>;

    template <class Handle, class Info, class Function>
    std::unique_ptr<Subscription> add(Registry<Info>& registry, const DataEventFilter<T>& filter,
                                      const Function& function, SubscriberPointer subscriber);
    template <class Turn, class Info>
    void remove(Turn& turn, Registry<Info>& registry, const std::string& id);
    template <class Turn, class Info>
    void removeAll(Turn& turn, Registry<Info>& registry);
    void forgetFilter(const Filter& filter);
    void serveAsWanted();
    bool hasAsynchronousSubscriptions();

    void callBack() override;
    void release() override;
    void dispatchToNotifiers();
    void dispatchToListeners();

    /// Takes the next sample, in any state, into the members for it, if there is one and a subscription for
    /// it.
    /// @returns the subscriptions; none where no sample was taken.
    std::span<const std::shared_ptr<SubscriptionInfo>> takeForListeners();

    /// As above, whoever it is for. @returns whether there was one.
    bool takeNext();
    bool takeNextInAnyState();

    /// Gives samples back when it ends.
    internal::LoanGuard guardLoan(Samples& samples) const;

    /// Whether a sample that was taken is young enough to be told; counted.
    bool isFresh(const internal::dds::SampleInfo& info) const;

    /// Whether a subscription is told of a sample: by its age and the filter.
    bool wants(const SubscriptionInfo& subscription, const DdsType& sample,
               const internal::dds::SampleInfo& info) const;

    /// Tells a subscription of a sample. @param makeData gives its value.
    template <class MakeData>
    void tell(SubscriptionInfo& subscription, const internal::dds::SampleInfo& info, MakeData makeData);

    /// Calls polled callbacks. @param sampleAt gives a sample by its index, infoAt its info.
    /// @param told which are not to be told; marks those that are.
    template <class SampleAt, class InfoAt>
    void tellPolled(std::vector<bool>& told, SampleAt sampleAt, InfoAt infoAt);

    /// Runs a record's function unless the record has ended.
    template <class Turn, class Info, class Run>
    void call(Turn& turn, Info& record, Run run);

    /// Runs an asynchronous callback, and logs what it throws where that is wanted.
    template <class Run>
    void guarded(Run run);

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriptionManager");
    Subscriber<T>& owner_;
    const internal::AgeLimits ageLimits_;
    const internal::CallbacksOn callbacksOn_;
    const bool logsExceptions_;
    std::shared_ptr<internal::dds::DataReader> reader_; ///< empty when it is released
    std::shared_ptr<internal::Endpoint> endpoint_;
    std::string topicName_;
    const internal::dds::DomainParticipant* participant_ = nullptr;

    std::mutex mutex_; ///< guards the next five, but for what the threads with the turns look through
    Registry<SubscriptionInfo> asyncRegistry_;
    Registry<NotifierSubscriptionInfo> notifierRegistry_;
    Registry<SubscriptionInfo> syncRegistry_;
    Filters filters_;
    bool shutDown_ = false;
    std::mutex serviceMutex_; ///< guards the next; taken before the other
    bool isServed_ = false;

    // What the asynchronous dispatch works with.
    bool notified_ = false;               ///< a notifier has been served, so samples may be marked as read
    DdsType taken_;                       ///< the sample being dispatched
    internal::dds::SampleInfo takenInfo_; ///< its info
    ST takenAdapter_;                     ///< views it
    const std::shared_ptr<T> takenData_;  ///< the adapter, which it does not own

    // What the polled one does.
    internal::PollTurn pollTurn_;
    std::deque<UntoldSample> untold_; ///< belongs to the thread that has the poll turn
    std::atomic<bool> hasUntold_ = false;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/SubscriptionManager.inl>
