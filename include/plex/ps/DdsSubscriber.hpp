// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Subscriber.hpp>
#include <plex/ps/internal/DdsBasePubSub.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::ps
{

/// Receives values from one DDS topic.
///
/// Applications never see it: they hold a DdsSubscriberDelegator, so that loans and subscriptions can share
/// it. Threads: all operations may be called from several threads at once; an operation under way keeps the
/// reader until it is done. Ownership: owns its DDS subscriber and reader, shares the topic; loans share the
/// reader.
template <class T, class ST>
class DdsSubscriber : public std::enable_shared_from_this<DdsSubscriber<T, ST>>,
                      public Subscriber<T>,
                      protected internal::DdsBasePubSub<T, ST>
{
public:
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;

    /// A subscriber with its reader, ready for use.
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

    /// Gives back reader and topic; outstanding loans keep the reader until they are back. From two threads
    /// at once it closes once; both return when it is done.
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

private:
    using DdsType = typename ST::DdsType;
    using Samples = internal::LoanedSamples<DdsType>;
    using ReaderPointer = std::shared_ptr<internal::dds::DataReader>;

    class DdsLoanedDataEntity;

    void createReader();
    std::shared_ptr<internal::dds::Subscriber> createReadersSubscriber();
    internal::dds::DataReader* createDataReader(internal::dds::Subscriber& subscriber);

    /// The reader, held for one operation. @throws IllegalStateException unless open.
    ReaderPointer openReader() const;

    /// The key hash of a value, computed without asking the reader.
    /// @throws IllegalStateException for another transport's value; PlexException when the type has no key.
    internal::InstanceHandle_t lookupInstance(const T& value);

    /// @throws PlexException when the reader refuses its loan.
    void returnLoan(internal::dds::DataReader& reader, Samples& samples);

    /// Whether a take or read brought samples. @throws PlexException on any failure but NO_DATA.
    bool checkTaken(internal::ReturnCode result, const char* failureText) const;

    /// Whether a sample has a value that the QoS lets pass.
    bool isDeliverable(const internal::dds::SampleInfo& info) const;

    /// The loan's first deliverable sample as the loan's value, or empty.
    std::shared_ptr<LoanedDataEntity<T>> present(std::shared_ptr<DdsLoanedDataEntity> loan) const;

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriber");
    std::shared_ptr<internal::dds::Topic> topic_;
    std::shared_ptr<internal::dds::Subscriber> subscriber_;
    std::atomic<ReaderPointer> reader_; ///< empty before create() and after close()
    std::mutex closeMutex_;             ///< held while closing; taken before everything else
};

/// What an application holds: forwards every call to a subscriber that it shares with its loans and
/// subscriptions. Dropping it does not close the subscriber while one of these is left.
template <class T, class ST>
class DdsSubscriberDelegator : public Subscriber<T>
{
public:
    using Callback = typename Subscriber<T>::Callback;
    using Notifier = typename Subscriber<T>::Notifier;

    explicit DdsSubscriberDelegator(std::shared_ptr<DdsSubscriber<T, ST>> impl);

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

private:
    const std::shared_ptr<DdsSubscriber<T, ST>> impl_;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsSubscriber.inl>
