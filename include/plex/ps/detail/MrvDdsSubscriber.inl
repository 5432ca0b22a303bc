// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/DataEntities.hpp>

#include <thread>

namespace ovra::plex::ps
{

template <class T, class ST>
MrvDdsSubscriber<T, ST>::MrvDdsSubscriber(const Uri& uri, const qos::QoSList& qos,
                                          const Plex::Properties& properties,
                                          const internal::ParticipantPointer& participant)
    : internal::DdsBasePubSub<T, ST>(uri, qos, properties, participant)
    , m_topic(makeTopic())
    , m_subscriber(this->createSubscriber())
    , m_reader(makeReader())
    , m_endpoint(internal::Endpoint::of(*m_reader))
    , m_observed(m_reader)
{
    this->state_ = internal::EntityState::Initialized;
}

template <class T, class ST>
MrvDdsSubscriber<T, ST>::~MrvDdsSubscriber()
{
    release();
}

template <class T, class ST>
std::shared_ptr<internal::Endpoint> MrvDdsSubscriber<T, ST>::endpoint() const
{
    this->checkState();
    return m_endpoint;
}

template <class T, class ST>
History MrvDdsSubscriber<T, ST>::history() const
{
    const auto reader = m_observed.load().lock();
    if (!reader) {
        this->failClosed();
    }
    return internal::historyOf(*reader);
}

template <class T, class ST>
std::vector<QosSetting> MrvDdsSubscriber<T, ST>::qosInEffect() const
{
    const auto reader = m_observed.load().lock();
    if (!reader) {
        this->failClosed();
    }
    return this->mostRecentSettingsOf(*reader);
}

template <class T, class ST>
std::shared_ptr<internal::dds::Topic> MrvDdsSubscriber<T, ST>::makeTopic()
{
    return internal::holdTopic(
        this->participant_, this->createTopic().first, m_logger,
        internal::withUri("Failed to delete topic for Mrv dds subscriber.", this->uri_));
}

template <class T, class ST>
std::shared_ptr<internal::dds::DataReader> MrvDdsSubscriber<T, ST>::makeReader()
{
    auto* const reader = this->createMostRecentReader(*m_subscriber, *m_topic);
    if (reader == nullptr) {
        internal::fail(m_logger,
                       internal::withUri("Failed to create data reader for Mrv dds subscriber.", this->uri_));
    }
    return internal::holdReader(
        m_subscriber, m_topic, reader, nullptr, m_logger,
        internal::withUri("Failed to delete datareader for Mrv dds subscriber.", this->uri_));
}

template <class T, class ST>
void MrvDdsSubscriber<T, ST>::release()
{
    m_observed.store({}); // which keeps what deletes the reader, and so the topic
    m_reader.reset();
    m_topic.reset();
    this->state_ = internal::EntityState::Closed;
}

template <class T, class ST>
void MrvDdsSubscriber<T, ST>::close()
{
    const auto closing = internal::lockToClose(m_closeMutex);
    if (!closing || this->state_ == internal::EntityState::Closed) {
        internal::recordDebug(m_logger, "MrvSubscriber already closed");
        return;
    }
    release();
}

template <class T, class ST>
std::vector<std::shared_ptr<T>>
MrvDdsSubscriber<T, ST>::readMostRecent(const std::chrono::milliseconds& timeout)
{
    using Samples = internal::LoanedSamples<typename ST::DdsType>;
    this->checkState();
    if (timeout.count() < 0) {
        internal::throwWithUri("Negative timeout given to Mrv subscriber readMostRecent.", this->uri_);
    }
    std::this_thread::sleep_for(timeout);

    const auto makeGuard = [this](Samples& samples) {
        return internal::LoanGuard(
            *m_reader, samples, m_logger,
            "Reader failed to return loaned data back to the middle-layer for Mrv dds subscriber");
    };
    std::vector<std::shared_ptr<T>> values;
    internal::Tally tally(m_endpoint->counters);
    const auto append = [&](const Samples& samples) {
        if (!samples.hasValue(0)) {
            return; // a change of state only, as when one of several writers went, or what can not be decoded
        }
        tally.received += samples.countUnread();
        auto value = createDataEntityInternal<T, ST>();
        obtainImpl<T, ST>(*value, m_logger).assign(samples.data[0]);
        values.push_back(std::move(value));
        ++tally.delivered;
    };
    const auto result = internal::readInstances<typename ST::DdsType>(
        *m_reader, internal::dds::ALIVE_INSTANCE_STATE, internal::dds::LENGTH_UNLIMITED, makeGuard, append);
    if (result != fastdds::RETCODE_OK) {
        internal::failWithErrMsg(
            m_logger,
            internal::withCode(internal::withUri("Read failed for Mrv dds subscriber.", this->uri_), result));
    }
    return values;
}

} // namespace ovra::plex::ps
