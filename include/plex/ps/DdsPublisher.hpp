// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Publisher.hpp>
#include <plex/ps/internal/CallbackTurn.hpp>
#include <plex/ps/internal/DdsBasePubSub.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/History.hpp>
#include <plex/ps/internal/SharedEntity.hpp>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ovra::plex::ps
{

/// Publishes values on one DDS topic, and makes the DDS entities of its instance publishers.
///
/// Applications never see it: they hold a DdsPublisherDelegator, so that instance publishers can share it.
/// Threads: as the contract says; publish() takes no lock of its own, and a publication under way keeps the
/// writer until it has written. Asynchronous callbacks for what it brings to subscribers of this process run
/// before it returns, with no lock held, unless it is called inside such a callback: they run when that is
/// over then. Ownership: owns its DDS publisher and writer, shares the topic.
template <class T, class ST>
class DdsPublisher final : public internal::DdsBasePubSub<T, ST>, public Publisher<T>
{
public:
    /// Makes all DDS entities.
    /// @throws PlexException when the URI or a property is bad or an entity cannot be made; nothing is left
    ///         behind then.
    DdsPublisher(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                 const internal::ParticipantPointer& participant, std::shared_ptr<Plex> plex);
    ~DdsPublisher() override;

    std::shared_ptr<Plex> getPlex() const override;

    /// @throws IllegalStateException always: only a delegator makes instance publishers.
    std::unique_ptr<InstancePublisher<T>> createInstancePublisher(const T& instance) override;

    void publish(const T& value, const std::chrono::milliseconds& timeout) override;
    void publish(double sourceTimestamp, const T& value, const std::chrono::milliseconds& timeout) override;
    std::shared_ptr<T> createDataEntity() override;

    /// Closes the instance publishers, then gives back the writer and the topic. From two threads at once
    /// it closes once; both return when it is done, but inside a callback.
    void close() override;

    /// The participant, for an instance publisher's entities.
    const internal::ParticipantPointer& participant() const { return this->participant_; }

    const Uri& uri() const { return this->uri_; }

    /// What is known of its writer. @throws IllegalStateException unless open.
    std::shared_ptr<internal::Endpoint> endpoint() const;

    /// What its writer keeps. @throws IllegalStateException unless open.
    History history();

    /// Waits until what was sent is acknowledged. @throws IllegalStateException unless open.
    fastdds::ReturnCode awaitAcknowledgments(const fastdds::Duration_t& timeout);

    /// What its writer is set to. @throws IllegalStateException unless open.
    std::vector<QosSetting> qosInEffect() const;

    /// Remembers an instance publisher, so that closing this publisher closes it.
    /// @throws IllegalStateException when this publisher is closed.
    void addDependent(InstancePublisher<T>& dependent);

    /// Forgets an instance publisher; an unknown one is ignored.
    void removeDependent(InstancePublisher<T>& dependent);

private:
    static constexpr std::int32_t historyDepth = 1000; ///< without profiles

    internal::SharedWriter::Use openWriter();

    template <class Write>
    void publishBy(Write write);
    void release();
    void closeDependents();
    void createDdsEntities();
    void checkTimeout(const std::chrono::milliseconds& timeout) const;
    void checkWritten(fastdds::ReturnCode result) const;

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsPublisher");
    const std::int64_t waitForAckTimeoutMs_;
    std::shared_ptr<internal::dds::Topic> topic_;
    std::shared_ptr<internal::dds::Publisher> publisher_;
    internal::SharedWriter writer_;
    std::shared_ptr<internal::Endpoint> endpoint_;
    const std::shared_ptr<Plex> plex_;
    std::mutex closeMutex_;      ///< held while closing; taken by lockToClose(), before everything else
    std::mutex dependentsMutex_; ///< guards what follows; taken before an instance publisher's mutex
    std::list<InstancePublisher<T>*> dependents_;
    bool dependentsClosed_ = false;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/DdsPublisher.inl>
