// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/DataEntities.hpp>
#include <plex/ps/internal/Deletions.hpp>
#include <plex/ps/internal/Settings.hpp>
#include <plex/ps/internal/Time.hpp>

#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
DdsPublisher<T, ST>::DdsPublisher(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                                  const internal::ParticipantPointer& participant, std::shared_ptr<Plex> plex)
    : internal::DdsBasePubSub<T, ST>(uri, qos, properties, participant)
    , waitForAckTimeoutMs_(internal::waitForAckTimeoutMs(properties))
    , plex_(std::move(plex))
{
    createDdsEntities();
    this->state_ = internal::EntityState::Initialized;
    internal::recordCreated(logger_, "Publisher", uri);
}

template <class T, class ST>
DdsPublisher<T, ST>::~DdsPublisher()
{
    release();
}

template <class T, class ST>
void DdsPublisher<T, ST>::createDdsEntities()
{
    const internal::PublisherTexts texts{logger_, "Publisher waiting for acknowledgment failed",
                                         "Writer waiting for acknowledgment failed", waitForAckTimeoutMs_};
    topic_ = internal::holdTopic(this->participant_, this->createTopic().first, logger_,
                                 "Failed to delete topic for dds publisher");
    publisher_ = internal::holdPublisher(this->participant_, this->createPublisher(), texts);
    auto writer = internal::holdWriter(
        publisher_, topic_, this->createWriter(*publisher_, *topic_, logger_, historyDepth), texts);
    endpoint_ = internal::Endpoint::of(*writer);
    writer_.set(std::move(writer));
}

template <class T, class ST>
std::shared_ptr<Plex> DdsPublisher<T, ST>::getPlex() const
{
    return plex_;
}

template <class T, class ST>
std::unique_ptr<InstancePublisher<T>> DdsPublisher<T, ST>::createInstancePublisher(const T& /*instance*/)
{
    throw IllegalStateException("Not implemented");
}

template <class T, class ST>
void DdsPublisher<T, ST>::checkTimeout(const std::chrono::milliseconds& timeout) const
{
    if (timeout.count() < 0) {
        internal::throwWithUri("Negative timeout given to publish", this->uri_);
    }
}

template <class T, class ST>
void DdsPublisher<T, ST>::checkWritten(fastdds::ReturnCode result) const
{
    if (result != fastdds::RETCODE_OK) {
        internal::failWithErrMsg(
            logger_, internal::withCode(
                         internal::withUri("Writer failed to write for dds publisher", this->uri_), result));
    }
}

template <class T, class ST>
internal::SharedWriter::Use DdsPublisher<T, ST>::openWriter()
{
    auto writer = writer_.use();
    if (!writer) {
        this->failClosed();
    }
    return writer;
}

template <class T, class ST>
template <class Write>
void DdsPublisher<T, ST>::publishBy(Write write)
{
    internal::PublishScope publication;
    {
        const auto writer = openWriter();
        checkWritten(fastdds::code(write(*writer)));
        internal::count(endpoint_->counters.published);
    }
    publication.callBack(); // the last thing here, as a callback may destroy this publisher
}

template <class T, class ST>
void DdsPublisher<T, ST>::publish(const T& value, const std::chrono::milliseconds& timeout)
{
    this->checkState();
    checkTimeout(timeout);
    const ST& adapter = obtainImpl<T, ST>(value, logger_);
    publishBy([&](internal::dds::DataWriter& writer) {
        return writer.write(fastdds::asSample(&adapter.wire()), internal::dds::HANDLE_NIL);
    });
}

template <class T, class ST>
void DdsPublisher<T, ST>::publish(double sourceTimestamp, const T& value,
                                  const std::chrono::milliseconds& timeout)
{
    this->checkState();
    checkTimeout(timeout);
    const fastdds::Time_t time = internal::toSourceTime(sourceTimestamp);
    const ST& adapter = obtainImpl<T, ST>(value, logger_);
    publishBy([&](internal::dds::DataWriter& writer) {
        return writer.write_w_timestamp(fastdds::asSample(&adapter.wire()), internal::dds::HANDLE_NIL, time);
    });
}

template <class T, class ST>
std::shared_ptr<T> DdsPublisher<T, ST>::createDataEntity()
{
    this->checkState();
    return createDataEntityInternal<T, ST>();
}

template <class T, class ST>
std::shared_ptr<internal::Endpoint> DdsPublisher<T, ST>::endpoint() const
{
    this->checkState();
    return endpoint_;
}

template <class T, class ST>
History DdsPublisher<T, ST>::history()
{
    return internal::historyOf(*openWriter());
}

template <class T, class ST>
fastdds::ReturnCode DdsPublisher<T, ST>::awaitAcknowledgments(const fastdds::Duration_t& timeout)
{
    const auto writer = openWriter();
    return fastdds::code(writer->wait_for_acknowledgments(timeout));
}

template <class T, class ST>
std::vector<QosSetting> DdsPublisher<T, ST>::qosInEffect() const
{
    const auto writer = writer_.use();
    if (!writer) {
        this->failClosed();
    }
    return this->settingsOf(*writer, historyDepth);
}

template <class T, class ST>
void DdsPublisher<T, ST>::close()
{
    if (this->state_ != internal::EntityState::Closed) {
        release();
    }
}

template <class T, class ST>
void DdsPublisher<T, ST>::release()
{
    const auto closing = internal::lockToClose(closeMutex_);
    if (!closing || this->state_ == internal::EntityState::Closed) {
        return;
    }
    closeDependents();
    writer_.close();
    topic_.reset();
    this->state_ = internal::EntityState::Closed;
}

template <class T, class ST>
void DdsPublisher<T, ST>::addDependent(InstancePublisher<T>& dependent)
{
    const std::lock_guard lock(dependentsMutex_);
    if (dependentsClosed_) {
        this->failClosed();
    }
    dependents_.push_back(&dependent);
}

template <class T, class ST>
void DdsPublisher<T, ST>::removeDependent(InstancePublisher<T>& dependent)
{
    const std::lock_guard lock(dependentsMutex_);
    dependents_.remove(&dependent);
}

template <class T, class ST>
void DdsPublisher<T, ST>::closeDependents()
{
    const internal::HeldDeletions untilUnlocked; // as another thread's callback may wait for the lock
    const std::lock_guard lock(dependentsMutex_);
    for (auto* const dependent : dependents_) {
        dependent->close();
    }
    dependentsClosed_ = true;
}

} // namespace ovra::plex::ps
