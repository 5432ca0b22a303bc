// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/MrvSubscriber.hpp>
#include <plex/ps/internal/CallbackThread.hpp>
#include <plex/ps/internal/DdsBasePubSub.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>
#include <plex/ps/internal/ObservedEntity.hpp>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace ovra::plex::ps
{

/// Gives the latest sample of every alive instance of a DDS topic, by reading without taking.
///
/// Its reader's quality of service is fixed: best effort, volatile, the last sample of each instance.
/// Threads and ownership: as the contract says.
template <class T, class ST>
class MrvDdsSubscriber final : public MrvSubscriber<T>,
                               public internal::ObservedEntity,
                               protected internal::DdsBasePubSub<T, ST>
{
public:
    /// Makes all DDS entities.
    /// @throws PlexException when the URI or a property is bad or an entity cannot be made; nothing is left
    ///         behind then.
    MrvDdsSubscriber(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                     const internal::ParticipantPointer& participant);
    ~MrvDdsSubscriber() override;

    /// Gives back reader and topic. From two threads at once it closes once.
    void close() override;

    std::vector<std::shared_ptr<T>> readMostRecent(const std::chrono::milliseconds& timeout) override;

    std::vector<QosSetting> qosInEffect() const override;

private:
    std::shared_ptr<internal::Endpoint> endpoint() const override;
    History history() const override;
    std::shared_ptr<internal::dds::Topic> makeTopic();
    std::shared_ptr<internal::dds::DataReader> makeReader();
    void release();

    log4cplus::Logger m_logger = log4cplus::Logger::getInstance("plexDdsMrvSubscriber");
    std::shared_ptr<internal::dds::Topic> m_topic;
    std::shared_ptr<internal::dds::Subscriber> m_subscriber;
    std::shared_ptr<internal::dds::DataReader> m_reader;
    std::shared_ptr<internal::Endpoint> m_endpoint;
    /// The reader, for status() while another thread closes.
    std::atomic<std::weak_ptr<internal::dds::DataReader>> m_observed;
    std::mutex m_closeMutex; ///< held while closing
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/MrvDdsSubscriber.inl>
