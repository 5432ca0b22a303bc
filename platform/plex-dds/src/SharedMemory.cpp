// SPDX-License-Identifier: Apache-2.0
#include "SharedMemory.hpp"

#include <plex/fastdds/Generation.hpp>

#ifdef PLEX_FASTDDS_SENDS_LEFTOVERS

#include <fastdds/rtps/transport/ChainingTransport.hpp>
#include <fastdds/rtps/transport/ChainingTransportDescriptor.hpp>
#include <fastdds/rtps/transport/SenderResource.hpp>
#include <fastdds/rtps/transport/TransportReceiverInterface.hpp>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.hpp>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

namespace ovra::plex
{

namespace rtps = eprosima::fastdds::rtps;

namespace
{

/// Whether these bytes are the statistics at the end of a message: one submessage of the vendor's own
/// (RTPS 2.5, 9.4.5.1.1), which Fast DDS numbers 0x80 and writes in the byte order of the machine.
bool isStatistics(const rtps::NetworkBuffer& buffer)
{
    struct Header {
        std::uint8_t kind;
        std::uint8_t flags;
        std::uint16_t length;
    } header{};

    if (buffer.size < sizeof header) {
        return false;
    }
    std::memcpy(&header, buffer.buffer, sizeof header);
    return header.kind == 0x80 && header.length == buffer.size - sizeof header;
}

/// Sends messages without their statistics, and so with the length that they have.
class ExactTransport final : public rtps::ChainingTransport
{
public:
    using ChainingTransport::ChainingTransport;

    rtps::TransportDescriptorInterface* get_configuration() override
    {
        return low_level_transport_->get_configuration();
    }

    bool send(rtps::SenderResource* sender, const std::vector<rtps::NetworkBuffer>& buffers,
              std::uint32_t totalBytes, rtps::LocatorsIterator* begin, rtps::LocatorsIterator* end,
              const std::chrono::steady_clock::time_point& timeout) override
    {
        if (buffers.empty() || !isStatistics(buffers.back())) {
            return sender->send(buffers, totalBytes, begin, end, timeout);
        }
        const std::vector message(buffers.begin(), std::prev(buffers.end()));
        return sender->send(message, totalBytes - buffers.back().size, begin, end, timeout);
    }

    void receive(rtps::TransportReceiverInterface* receiver, const rtps::octet* data, std::uint32_t size,
                 const rtps::Locator_t& local, const rtps::Locator_t& remote) override
    {
        receiver->OnDataReceived(data, size, local, remote);
    }
};

struct ExactTransportDescriptor final : rtps::ChainingTransportDescriptor {
    using ChainingTransportDescriptor::ChainingTransportDescriptor;

    rtps::TransportInterface* create_transport() const override { return new ExactTransport(*this); }
};

/// Of the type by which Fast DDS knows the settings of shared memory.
struct ExactSharedMemory final : rtps::SharedMemTransportDescriptor {
    explicit ExactSharedMemory(const SharedMemTransportDescriptor& settings)
        : SharedMemTransportDescriptor(settings)
    {
    }

    rtps::TransportInterface* create_transport() const override
    {
        const auto lower = std::make_shared<SharedMemTransportDescriptor>(*this);
        return ExactTransportDescriptor(lower).create_transport();
    }
};

bool environmentMayChooseTransports()
{
    const auto isSet = [](const char* variable) {
        return std::getenv(variable) != nullptr; // NOLINT(concurrency-mt-unsafe): read only
    };
    return isSet("FASTDDS_BUILTIN_TRANSPORTS") || isSet("FASTDDS_ENVIRONMENT_FILE");
}

} // namespace

void sendNoLeftovers(eprosima::fastdds::dds::DomainParticipantQos& qos)
{
    if (qos.transport().use_builtin_transports && !environmentMayChooseTransports()) {
        qos.setup_transports(rtps::BuiltinTransports::DEFAULT);
    }
    for (auto& transport : qos.transport().user_transports) {
        if (const auto* const sharedMemory =
                dynamic_cast<const rtps::SharedMemTransportDescriptor*>(transport.get())) {
            transport = std::make_shared<ExactSharedMemory>(*sharedMemory);
        }
    }
}

} // namespace ovra::plex

#else

void ovra::plex::sendNoLeftovers(eprosima::fastdds::dds::DomainParticipantQos& /*qos*/) {}

#endif
