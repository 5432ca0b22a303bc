// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscriber.hpp>
#include <plex/ps/SubscriptionManager.hpp>
#include <plex/ps/internal/DataWait.hpp>
#include <plex/ps/internal/DdsBasePubSub.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/History.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>
#include <plex/ps/internal/SharedEntity.hpp>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ovra::plex::ps
{

/// Receives values from one DDS topic.
///
/// Applications never see it: they hold a DdsSubscriberDelegator, so that loans and subscriptions can share
/// it. Threads: all operations may be called from several threads at once; an operation under way keeps the
/// reader until it is done. Ownership: owns its DDS subscriber, reader and subscription manager, shares the
/// topic; loans share the reader, and they and subscriptions the subscriber.
template <class T, class ST>
class DdsSubscriber final : public std::enable_shared_from_this<DdsSubscriber<T, ST>>,
                            public Subscriber<T>,
                            protected internal::DdsBasePubSub<T, ST>
{
public:
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;
    using Events = std::vector<std::shared_ptr<DataEvent<T>>>;

    /// A subscriber with its reader and subscription manager, ready for use.
    /// @throws PlexException when the URI or a property is bad or an entity cannot be made; nothing is left
    ///         behind then.
    static std::shared_ptr<DdsSubscriber> create(const Uri& uri, const qos::QoSList& qos,
                                                 const Plex::Properties& properties,
                                                 const internal::ParticipantPointer& participant);

    /// Makes the topic only; create() does the rest.
    DdsSubscriber(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                  const internal::ParticipantPointer& participant);
    ~DdsSubscriber() override;

    std::shared_ptr<T> createDataEntity() override;

    /// Ends all subscriptions and waiting operations, then gives back reader and topic; outstanding loans
    /// keep the reader until they are back. From two threads at once it closes once; both return when it is
    /// done.
    /// Inside a callback it waits for nothing: other threads' callbacks may go on, and poll() returns what it
    /// has polled when its own callback closes the subscriber.
    void close() override;

    std::vector<std::shared_ptr<T>> read(std::size_t maxCount) override;
    std::shared_ptr<T> readInstance(const T& value) override;
    bool readInstance(const T& value, T& out) override;
    std::shared_ptr<LoanedDataEntity<T>> loanedRead() override;
    std::shared_ptr<LoanedDataEntity<T>> loanedReadInstance(const T& value) override;
    std::size_t readDataEvents(const DataEventFilter<T>& filter, Events& events, std::size_t eventCountLimit,
                               const std::chrono::milliseconds& timeout) override;
    std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback callback) override;
    std::size_t poll(std::size_t maxCount, const std::chrono::milliseconds& timeout) override;
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                 Callback callback) override;
    std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                 Notifier notifier) override;

    /// The manager of the callback subscriptions; empty once closed.
    std::shared_ptr<SubscriptionManager<T, ST>> subscriptionManager() const { return manager_.load(); }

    /// What is known of its reader. @throws IllegalStateException unless open.
    std::shared_ptr<internal::Endpoint> endpoint() const;

    /// What its reader keeps. @throws IllegalStateException unless open.
    History history();

    /// What its reader is set to. @throws IllegalStateException unless open.
    std::vector<QosSetting> qosInEffect() const;

private:
    using DdsType = typename ST::DdsType;
    using Manager = SubscriptionManager<T, ST>;
    using Filter = internal::SampleFilter<T, ST>;
    using Samples = internal::LoanedSamples<DdsType>;

    class DdsLoanedDataEntity;

    /// What one event read takes and appends.
    struct EventRead {
        Filter filter;
        Events& events;
        const char* takeFailed;
        const char* loanNotReturned;
        std::size_t remaining = std::numeric_limits<std::size_t>::max(); ///< events until the limit
    };

    std::size_t readDataEventsCache(const DataEventFilter<T>& filter, Events& events);
    std::size_t readDataEventsUntilTimeout(const DataEventFilter<T>& filter, Events& events,
                                           const std::chrono::milliseconds& timeout);
    std::size_t readDataEventsUntilEventCountLimit(const DataEventFilter<T>& filter, Events& events,
                                                   std::size_t eventCountLimit);
    std::size_t readDataEventsUntilEventCountLimitOrTimeout(const DataEventFilter<T>& filter, Events& events,
                                                            std::size_t eventCountLimit,
                                                            const std::chrono::milliseconds& timeout);

    /// Takes samples by the function given, once, and appends those that pass. @returns whether there were
    /// any.
    template <class Take>
    bool takeEvents(internal::dds::DataReader& reader, EventRead& read, Take take) const;

    /// Takes what had arrived when the call began, and appends what passes. Ends early when closing begins.
    void takeEventsArrived(internal::dds::DataReader& reader, EventRead& read) const;

    /// Takes what a wait has woken for, no more than is wanted, and appends what passes.
    void takeEventsWanted(internal::DataWait::Result woken, internal::dds::DataReader& reader,
                          EventRead& read) const;
    void appendEvents(const Samples& samples, EventRead& read) const;

    /// What a wait comes to: takes, by the function given, what it woke for. @returns whether there was any.
    template <class Take>
    bool takeWoken(internal::DataWait::Result woken, Take take) const;

    std::size_t takePolled(internal::dds::DataReader& reader, Manager& manager, std::size_t maxCount,
                           const internal::SampleStates& states, internal::WallClock::time_point end) const;

    /// Takes samples by the function given, once, and appends their values. @returns how many samples there
    /// were.
    template <class Take>
    std::size_t takeValues(internal::dds::DataReader& reader, std::vector<std::shared_ptr<T>>& values,
                           Take take) const;

    /// @throws PlexException when the timeout is negative.
    void checkTimeout(const std::chrono::milliseconds& timeout, const char* failureText) const;

    /// The manager, for one operation. @throws IllegalStateException unless open.
    std::shared_ptr<SubscriptionManager<T, ST>> openManager() const;

    /// A handle that the manager gave. @throws IllegalStateException for none, as the subscriber is closed
    /// then.
    std::unique_ptr<Subscription> registered(std::unique_ptr<Subscription> handle) const;

    void release();
    std::shared_ptr<internal::dds::DataReader> createReader();

    /// The reader, held for one operation. @throws IllegalStateException unless open.
    internal::SharedReader::Use openReader() const;

    /// For operations that wait. @throws IllegalStateException unless open, and as soon as closing begins.
    void checkOpen() const;

    /// The key hash of a value, computed without asking the reader.
    /// @throws IllegalStateException for another transport's value; PlexException when the type has no key.
    fastdds::InstanceHandle_t lookupInstance(const T& value);

    /// @throws PlexException when the reader refuses its loan.
    void returnLoan(internal::dds::DataReader& reader, Samples& samples);

    /// Whether a take or read brought samples. @throws PlexException on any failure but NO_DATA.
    bool checkTaken(fastdds::ReturnCode result, const char* failureText) const;

    /// Whether a sample has a value that the QoS lets pass; counted.
    bool isDeliverable(const Samples& samples, std::int32_t index, internal::Tally& tally) const;

    /// Makes the first deliverable sample of a loan its value. @returns whether there is one.
    bool viewFirstDeliverable(DdsLoanedDataEntity& loan) const;

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriber");
    std::shared_ptr<internal::dds::Topic> topic_;
    std::shared_ptr<internal::dds::Subscriber> subscriber_;
    std::shared_ptr<internal::Endpoint> endpoint_;
    internal::SharedReader reader_; ///< closed before create() and after close()
    std::atomic<std::shared_ptr<SubscriptionManager<T, ST>>> manager_; ///< empty then
    internal::dds::GuardCondition closing_; ///< wakes the operations that wait for data
    std::mutex closeMutex_; ///< held while closing; taken by lockToClose(), before everything else
    std::atomic<std::thread::id> closer_; ///< the thread that has closed
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsSubscriber.inl>
#include <plex/ps/detail/DdsSubscriberEvents.inl>
