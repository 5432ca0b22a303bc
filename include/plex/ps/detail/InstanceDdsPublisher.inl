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
InstanceDdsPublisher<T, ST>::InstanceDdsPublisher(std::shared_ptr<DdsPublisher<T, ST>> parent, const T& value,
                                                  std::int64_t waitForAckTimeoutMs)
    : parent_(std::move(parent))
    , waitForAckTimeoutMs_(waitForAckTimeoutMs)
{
    parent_->checkState();
    internal::checkMayMakeEntities(logger_, parent_->uri());
    createDdsEntities(value);
    parent_->addDependent(*this);
}

template <class T, class ST>
InstanceDdsPublisher<T, ST>::~InstanceDdsPublisher()
{
    release();
    parent_->removeDependent(*this);
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::createDdsEntities(const T& value)
{
    const internal::PublisherTexts texts{logger_, "Instance publisher waiting for acknowledgment failed",
                                         "Instance writer waiting for acknowledgment failed",
                                         waitForAckTimeoutMs_};
    const auto& participant = parent_->participant();
    topic_ = internal::holdTopic(participant, parent_->createTopic().first, logger_,
                                 "Failed to delete topic for dds publisher");
    publisher_ = internal::holdPublisher(participant, parent_->createPublisher(), texts);
    auto writer = internal::holdWriter(
        publisher_, topic_, parent_->createWriter(*publisher_, *topic_, logger_, std::nullopt), texts);

    // DDS keeps what it is given as the instance's key value, so it is given nothing but the key.
    const auto key = obtainImpl<T, ST>(value, logger_).cloneKey();
    const ST& adapter = obtainImpl<T, ST>(*key, logger_);
    instanceHandle_ = writer->register_instance(fastdds::asSample(&adapter.wire()));
    if (!instanceHandle_.isDefined() && instanceHandle_ == internal::dds::HANDLE_NIL) {
        internal::fail<IllegalStateException>(logger_, "Key instance not created");
    }
    endpoint_ = internal::Endpoint::of(*writer);
    writer_.set(std::move(writer));
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::failClosed() const
{
    internal::fail<IllegalStateException>(logger_, "InstancePublisher already closed");
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::checkTimeout(const std::chrono::milliseconds& timeout)
{
    if (timeout.count() < 0) {
        throw PlexException("Negative timeout given to publish instance");
    }
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::checkWritten(fastdds::ReturnCode result) const
{
    if (result != fastdds::RETCODE_OK) {
        internal::failWithErrMsg<IllegalStateException>(logger_,
                                                        internal::withCode("Publish failed", result));
    }
}

template <class T, class ST>
std::shared_ptr<Plex> InstanceDdsPublisher<T, ST>::getPlex() const
{
    return parent_->getPlex();
}

template <class T, class ST>
internal::SharedWriter::Use InstanceDdsPublisher<T, ST>::openWriter() const
{
    auto writer = writer_.use();
    if (!writer) {
        failClosed();
    }
    return writer;
}

template <class T, class ST>
template <class Write>
void InstanceDdsPublisher<T, ST>::publishBy(Write write)
{
    internal::PublishScope publication;
    {
        const std::lock_guard lock(mutex_);
        const auto writer = openWriter();
        checkWritten(fastdds::code(write(*writer)));
        internal::count(endpoint_->counters.published);
    }
    publication.callBack(); // the last thing here, as a callback may destroy this publisher
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::publish(const T& value, const std::chrono::milliseconds& timeout)
{
    publishBy([&](internal::dds::DataWriter& writer) {
        checkTimeout(timeout);
        const ST& adapter = obtainImpl<T, ST>(value, logger_);
        return writer.write(fastdds::asSample(&adapter.wire()), instanceHandle_);
    });
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::publish(double sourceTimestamp, const T& value,
                                          const std::chrono::milliseconds& timeout)
{
    publishBy([&](internal::dds::DataWriter& writer) {
        checkTimeout(timeout);
        const fastdds::Time_t time = internal::toSourceTime(sourceTimestamp);
        const ST& adapter = obtainImpl<T, ST>(value, logger_);
        return writer.write_w_timestamp(fastdds::asSample(&adapter.wire()), instanceHandle_, time);
    });
}

template <class T, class ST>
std::shared_ptr<T> InstanceDdsPublisher<T, ST>::createDataEntity()
{
    const std::lock_guard lock(mutex_);
    const auto writer = openWriter();
    auto entity = createDataEntityInternal<T, ST>();
    auto& wire = obtainImpl<T, ST>(*entity, logger_).wire();
    const auto result = fastdds::code(writer->get_key_value(&wire, instanceHandle_));
    if (result != fastdds::RETCODE_OK) {
        internal::failWithErrMsg(logger_, internal::withCode("Getting instance key failed", result));
    }
    return entity;
}

template <class T, class ST>
std::shared_ptr<internal::Endpoint> InstanceDdsPublisher<T, ST>::endpoint() const
{
    if (closed_) {
        failClosed();
    }
    return endpoint_;
}

template <class T, class ST>
History InstanceDdsPublisher<T, ST>::history() const
{
    return internal::historyOf(*openWriter());
}

template <class T, class ST>
fastdds::ReturnCode InstanceDdsPublisher<T, ST>::awaitAcknowledgments(const fastdds::Duration_t& timeout)
{
    return fastdds::code(openWriter()->wait_for_acknowledgments(timeout));
}

template <class T, class ST>
std::vector<QosSetting> InstanceDdsPublisher<T, ST>::qosInEffect() const
{
    return parent_->settingsOf(*openWriter(), std::nullopt);
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::close()
{
    release();
}

template <class T, class ST>
void InstanceDdsPublisher<T, ST>::release()
{
    const internal::HeldDeletions untilUnlocked; // as another thread's callback may wait for the lock
    const auto lock = internal::lockToClose(mutex_);
    if (!closed_.exchange(true)) {
        writer_.close();
        topic_.reset();
    }
}

} // namespace ovra::plex::ps
