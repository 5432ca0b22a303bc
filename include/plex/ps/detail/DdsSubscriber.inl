// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/DataEntities.hpp>
#include <plex/ps/DdsLoanedDataEntity.hpp>

#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
std::shared_ptr<DdsSubscriber<T, ST>>
DdsSubscriber<T, ST>::create(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                             const internal::ParticipantPointer& participant)
{
    auto subscriber = std::make_shared<DdsSubscriber>(uri, qos, properties, participant);
    subscriber->reader_.set(subscriber->createReader());
    subscriber->state_ = internal::EntityState::Initialized;
    internal::recordCreated(subscriber->logger_, "Subscriber", uri);
    return subscriber;
}

template <class T, class ST>
DdsSubscriber<T, ST>::DdsSubscriber(const Uri& uri, const qos::QoSList& qos,
                                    const Plex::Properties& properties,
                                    const internal::ParticipantPointer& participant)
    : internal::DdsBasePubSub<T, ST>(uri, qos, properties, participant)
{
    topic_ = internal::holdTopic(this->participant_, this->createTopic().first, logger_,
                                 internal::withUri("Failed to delete topic for dds subscriber", this->uri_));
}

template <class T, class ST>
// A failure that close() would throw ends the process here, as Entities.hpp says.
DdsSubscriber<T, ST>::~DdsSubscriber() // NOLINT(bugprone-exception-escape)
{
    if (this->state_ != internal::EntityState::Closed) {
        release();
    }
}

/// Makes the reader and the manager that it hands data to. From then on each keeps the other until the
/// manager is shut down.
template <class T, class ST>
std::shared_ptr<internal::dds::DataReader> DdsSubscriber<T, ST>::createReader()
{
    auto manager = std::make_shared<Manager>(*this, this->ageLimits(), this->properties_);
    const auto listener = std::make_shared<typename Manager::SubscriptionReaderListener>(manager);
    subscriber_ = internal::holdSubscriber(this->participant_, this->createReadersSubscriber(logger_),
                                           logger_, "Failed to delete a DDS subscriber for dds subscriber");
    auto reader = internal::holdReader(
        subscriber_, topic_, internal::DdsEntityBase::createReader(*subscriber_, *topic_, logger_), listener,
        logger_, "Failed to delete a DDS data reader for dds subscriber");
    const auto result = fastdds::code(reader->set_listener(listener.get()));
    if (result != fastdds::RETCODE_OK) {
        internal::fail(logger_, internal::withCode("Failed to attach a listener to the DDS reader", result));
    }
    endpoint_ = internal::Endpoint::of(*reader);
    manager->setReader(reader, endpoint_);
    manager_ = std::move(manager);
    return reader;
}

template <class T, class ST>
std::shared_ptr<T> DdsSubscriber<T, ST>::createDataEntity()
{
    this->checkState();
    return createDataEntityInternal<T, ST>();
}

template <class T, class ST>
void DdsSubscriber<T, ST>::close()
{
    const auto closing = internal::lockToClose(closeMutex_);
    if (!closing || this->state_ == internal::EntityState::Closed) {
        internal::recordDebug(logger_, "Publisher already closed");
        return;
    }
    release();
}

template <class T, class ST>
void DdsSubscriber<T, ST>::release()
{
    closer_ = std::this_thread::get_id();
    reader_.close();
    closing_.set_trigger_value(true); // after that, as whoever is woken may read again
    if (const auto manager = manager_.load()) {
        manager->shutDown();
    }
    manager_ = nullptr;
    topic_.reset();
    this->state_ = internal::EntityState::Closed;
}

template <class T, class ST>
internal::SharedReader::Use DdsSubscriber<T, ST>::openReader() const
{
    this->checkState();
    auto reader = reader_.use();
    if (!reader) {
        this->failClosed();
    }
    return reader;
}

template <class T, class ST>
void DdsSubscriber<T, ST>::checkOpen() const
{
    this->checkState();
    if (closing_.get_trigger_value()) {
        this->failClosed();
    }
}

template <class T, class ST>
bool DdsSubscriber<T, ST>::checkTaken(fastdds::ReturnCode result, const char* failureText) const
{
    if (result != fastdds::RETCODE_OK && result != fastdds::RETCODE_NO_DATA) {
        internal::failWithErrMsg(logger_,
                                 internal::withCode(internal::withUri(failureText, this->uri_), result));
    }
    return result == fastdds::RETCODE_OK;
}

template <class T, class ST>
bool DdsSubscriber<T, ST>::isDeliverable(const Samples& samples, std::int32_t index,
                                         internal::Tally& tally) const
{
    if (!samples.hasValue(index)) {
        return false;
    }
    ++tally.received;
    if (this->isQosExceeded(samples.infos[index])) {
        ++tally.tooOld;
        return false;
    }
    return true;
}

template <class T, class ST>
std::shared_ptr<internal::Endpoint> DdsSubscriber<T, ST>::endpoint() const
{
    this->checkState();
    return endpoint_;
}

template <class T, class ST>
History DdsSubscriber<T, ST>::history()
{
    return internal::historyOf(*openReader());
}

template <class T, class ST>
std::vector<QosSetting> DdsSubscriber<T, ST>::qosInEffect() const
{
    return this->settingsOf(*openReader());
}

template <class T, class ST>
template <class Take>
std::size_t DdsSubscriber<T, ST>::takeValues(internal::dds::DataReader& reader,
                                             std::vector<std::shared_ptr<T>>& values, Take take) const
{
    Samples samples;
    const auto result = take(samples);
    try {
        if (!checkTaken(result, "Reader take failed for dds subscriber.")) {
            return 0;
        }
    } catch (const PlexException&) {
        if (values.empty()) {
            throw;
        }
        return 0; // what was taken is not lost with it: a failure that lasts meets the next call
    }
    const internal::LoanGuard guard(reader, samples, logger_, internal::loanNotReturned);
    internal::Tally tally(endpoint_->counters);
    for (std::int32_t i = 0; i < samples.size(); ++i) {
        if (isDeliverable(samples, i, tally)) {
            values.push_back(createDataEntityFrom<T, ST>(samples.data[i]));
            ++tally.delivered;
        }
    }
    return static_cast<std::size_t>(samples.size());
}

template <class T, class ST>
std::vector<std::shared_ptr<T>> DdsSubscriber<T, ST>::read(std::size_t maxCount)
{
    const auto reader = openReader();
    std::vector<std::shared_ptr<T>> values;
    if (maxCount == 0) {
        internal::ArrivedSamples arrived(*reader);
        const auto take = [&](Samples& samples) {
            return arrived.take(samples);
        };
        while (takeValues(*reader, values, take) > 0 && !closing_.get_trigger_value()) {
        }
        return values;
    }
    std::size_t left = maxCount;
    const auto take = [&](Samples& samples) {
        return samples.take(*reader, internal::sampleLimit(left));
    };
    while (left > 0) {
        const auto taken = takeValues(*reader, values, take);
        if (taken == 0) {
            break;
        }
        left -= taken;
    }
    return values;
}

template <class T, class ST>
std::shared_ptr<T> DdsSubscriber<T, ST>::readInstance(const T& value)
{
    const auto reader = openReader();
    const auto handle = lookupInstance(value);
    if (handle == internal::dds::HANDLE_NIL) {
        return nullptr;
    }
    Samples samples;
    const auto result = samples.takeInstance(*reader, handle);
    if (!checkTaken(result, "Reader take failed for dds subscriber's readInstance.")) {
        return nullptr;
    }
    const internal::LoanGuard guard(*reader, samples, logger_, internal::loanNotReturned);
    internal::Tally tally(endpoint_->counters);
    for (std::int32_t i = 0; i < samples.size(); ++i) {
        if (isDeliverable(samples, i, tally)) {
            ++tally.delivered;
            return createDataEntityFrom<T, ST>(samples.data[i]);
        }
    }
    return nullptr;
}

template <class T, class ST>
bool DdsSubscriber<T, ST>::readInstance(const T& value, T& out)
{
    this->checkState();
    const auto found = this->readInstance(value);
    if (!found) {
        return false;
    }
    ST::copy(*found, out);
    return true;
}

template <class T, class ST>
std::shared_ptr<LoanedDataEntity<T>> DdsSubscriber<T, ST>::loanedRead()
{
    auto reader = openReader();
    auto loan = std::make_shared<DdsLoanedDataEntity>(this->shared_from_this(), std::move(reader));
    const auto result = loan->samples().take(loan->reader(), 1);
    if (!checkTaken(result, "Reader take failed for dds subscriber's loanedRead.") ||
        !viewFirstDeliverable(*loan)) {
        return nullptr;
    }
    return loan;
}

template <class T, class ST>
std::shared_ptr<LoanedDataEntity<T>> DdsSubscriber<T, ST>::loanedReadInstance(const T& value)
{
    auto reader = openReader();
    const auto handle = lookupInstance(value);
    if (handle == internal::dds::HANDLE_NIL) {
        return nullptr;
    }
    auto loan = std::make_shared<DdsLoanedDataEntity>(this->shared_from_this(), std::move(reader));
    const auto result = loan->samples().takeInstance(loan->reader(), handle);
    if (!checkTaken(result, "Reader take failed for dds subscriber's loanedReadInstance.") ||
        !viewFirstDeliverable(*loan)) {
        return nullptr;
    }
    return loan;
}

template <class T, class ST>
bool DdsSubscriber<T, ST>::viewFirstDeliverable(DdsLoanedDataEntity& loan) const
{
    Samples& samples = loan.samples();
    internal::Tally tally(endpoint_->counters);
    for (std::int32_t i = 0; i < samples.size(); ++i) {
        if (isDeliverable(samples, i, tally)) {
            loan.view(samples.data[i]);
            ++tally.delivered;
            return true;
        }
    }
    return false;
}

template <class T, class ST>
void DdsSubscriber<T, ST>::returnLoan(internal::dds::DataReader& reader, Samples& samples)
{
    const auto result = samples.giveBack(reader);
    if (result != fastdds::RETCODE_OK) {
        internal::failWithErrMsg(
            logger_,
            internal::withCode(internal::withUri("Failed to return loan back to middle-layer.", this->uri_),
                               result));
    }
}

template <class T, class ST>
fastdds::InstanceHandle_t DdsSubscriber<T, ST>::lookupInstance(const T& value)
{
    const ST& adapter = obtainImpl<T, ST>(value, logger_);
    typename ST::PubSubType type;
    fastdds::InstanceHandle_t handle;
    if (!type.getKey(fastdds::asSample(&adapter.wire()), &handle, false)) {
        internal::failWithErrMsg(logger_, internal::withCode("Lookup instance key failed", 0));
    }
    return handle;
}

template <class T, class ST>
std::shared_ptr<SubscriptionManager<T, ST>> DdsSubscriber<T, ST>::openManager() const
{
    checkOpen();
    auto manager = manager_.load();
    if (!manager) {
        this->failClosed();
    }
    return manager;
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriber<T, ST>::registered(std::unique_ptr<Subscription> handle) const
{
    if (!handle) {
        this->failClosed();
    }
    return handle;
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriber<T, ST>::subscribe(const DataEventFilter<T>& filter,
                                                              Callback callback)
{
    return registered(openManager()->subscribe(filter, callback, this->shared_from_this()));
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriber<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                   Callback callback)
{
    return registered(openManager()->subscribeAsync(filter, callback, this->shared_from_this()));
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriber<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                   Notifier notifier)
{
    return registered(openManager()->subscribeAsyncWithNotifier(filter, notifier, this->shared_from_this()));
}

} // namespace ovra::plex::ps
