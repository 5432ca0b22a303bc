// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/InstancePublisher.hpp>
#include <plex/ps/DdsPublisher.hpp>
#include <plex/ps/internal/ObservedEntity.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ovra::plex::ps
{

/// Publishes values of one keyed instance through a writer of its own.
///
/// The instance is registered once; it is neither unregistered nor disposed of on close, the writer's end
/// ends it.
/// Threads: all operations may be called from several threads at once, which its mutex serializes, but for
/// the callbacks that a publication brings about and for closing inside a callback; a publication under way
/// keeps the writer until it has written. Ownership: shares its parent, which knows it without owning it;
/// owns its DDS publisher and writer.
template <class T, class ST>
class InstanceDdsPublisher final : public InstancePublisher<T>, public internal::ObservedEntity
{
public:
    /// Registers the instance whose key the value carries, and makes itself known to the parent.
    /// @throws IllegalStateException when the parent is closed, the type has no key or the value is another
    ///         transport's; PlexException when a DDS entity cannot be made. Nothing is left behind then.
    InstanceDdsPublisher(std::shared_ptr<DdsPublisher<T, ST>> parent, const T& value,
                         std::int64_t waitForAckTimeoutMs);
    InstanceDdsPublisher(const InstanceDdsPublisher&) = delete;
    InstanceDdsPublisher& operator=(const InstanceDdsPublisher&) = delete;
    ~InstanceDdsPublisher() override;

    /// A new value that carries the instance's key.
    /// @throws PlexException when DDS does not tell the key; IllegalStateException as publish().
    std::shared_ptr<T> createDataEntity() override;

    std::shared_ptr<Plex> getPlex() const override;

    /// @throws IllegalStateException also when DDS refuses the value, logged.
    void publish(const T& value, const std::chrono::milliseconds& timeout) override;
    void publish(double sourceTimestamp, const T& value, const std::chrono::milliseconds& timeout) override;

    void close() override;

    std::vector<QosSetting> qosInEffect() const override;

private:
    std::shared_ptr<internal::Endpoint> endpoint() const override;
    History history() const override;
    fastdds::ReturnCode awaitAcknowledgments(const fastdds::Duration_t& timeout) override;

    template <class Write>
    void publishBy(Write write);
    internal::SharedWriter::Use openWriter() const;
    void release();
    void createDdsEntities(const T& value);
    [[noreturn]] void failClosed() const;
    static void checkTimeout(const std::chrono::milliseconds& timeout);
    void checkWritten(fastdds::ReturnCode result) const;

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsInstancePublisher");
    const std::shared_ptr<DdsPublisher<T, ST>> parent_;
    std::shared_ptr<internal::dds::Topic> topic_;
    std::shared_ptr<internal::dds::Publisher> publisher_;
    mutable internal::SharedWriter writer_; ///< counts its uses
    std::shared_ptr<internal::Endpoint> endpoint_;
    fastdds::InstanceHandle_t instanceHandle_;
    std::atomic<bool> closed_ = false;
    std::mutex mutex_; ///< taken by lockToClose() for closing
    const std::int64_t waitForAckTimeoutMs_;
};

} // namespace ovra::plex::ps

#include <plex/ps/detail/InstanceDdsPublisher.inl>
