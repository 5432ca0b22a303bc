// SPDX-License-Identifier: Apache-2.0
#include "SharedMemory.hpp"

#include <plex/fastdds/Generation.hpp>
#include <plex/fastdds/Transports.hpp>

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
#include <map>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <utility>
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

/// Sends messages without their statistics, and so with the length that they have; and into the queues that
/// processes have now, not into those that killed ones had before them.
///
/// Fast DDS keeps a queue that it has once opened. A process that takes a killed one's place makes a new
/// queue under the same name, and those who have opened the old one go on to fill that. So all queues are
/// opened anew, by another transport, when a process announces itself whose queue is another one than that
/// known by its name.
///
/// Threads: what changes and uses the transport to send through is called under the participant's lock of the
/// means to send.
class MendedTransport final : public rtps::ChainingTransport
{
public:
    using ChainingTransport::ChainingTransport;

    bool OpenOutputChannel(rtps::SendResourceList& senders, const rtps::Locator_t& locator) override
    {
        if (IsLocatorSupported(locator) && isQueueReplaced(locator.port)) {
            renew(locator);
        }
        return ChainingTransport::OpenOutputChannel(senders, locator);
    }

    rtps::TransportDescriptorInterface* get_configuration() override
    {
        return low_level_transport_->get_configuration();
    }

    bool send(rtps::SenderResource* sender, const std::vector<rtps::NetworkBuffer>& buffers,
              std::uint32_t totalBytes, rtps::LocatorsIterator* begin, rtps::LocatorsIterator* end,
              const std::chrono::steady_clock::time_point& timeout) override
    {
        if (renewed_.transport != nullptr) {
            sender = renewed_.senders.front().get();
        }
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

private:
    struct Output {
        std::unique_ptr<rtps::TransportInterface> transport;
        rtps::SendResourceList senders;
    };

    /// Whether the queue of that number is another one than when this was last asked.
    bool isQueueReplaced(std::uint32_t port)
    {
        const auto path =
            std::string("/dev/shm/") + fastdds::sharedMemoryPrefix + "port" + std::to_string(port);
        struct stat file{};
        const auto now = stat(path.c_str(), &file) == 0 ? file.st_ino : 0;
        const auto before = std::exchange(queues_[port], now);
        return before != 0 && before != now;
    }

    void renew(const rtps::Locator_t& locator)
    {
        Output output;
        output.transport.reset(low_level_transport_->get_configuration()->create_transport());
        if (output.transport->init() && output.transport->OpenOutputChannel(output.senders, locator)) {
            std::swap(renewed_, output);
        }
    }

    std::map<std::uint32_t, ino_t> queues_; ///< the files of those that were asked for; 0 for none
    Output renewed_;                        ///< empty while no queue was replaced
};

struct MendedTransportDescriptor final : rtps::ChainingTransportDescriptor {
    using ChainingTransportDescriptor::ChainingTransportDescriptor;

    rtps::TransportInterface* create_transport() const override { return new MendedTransport(*this); }
};

/// Of the type by which Fast DDS knows the settings of shared memory.
struct MendedSharedMemory final : rtps::SharedMemTransportDescriptor {
    explicit MendedSharedMemory(const SharedMemTransportDescriptor& settings)
        : SharedMemTransportDescriptor(settings)
    {
    }

    rtps::TransportInterface* create_transport() const override
    {
        const auto lower = std::make_shared<SharedMemTransportDescriptor>(*this);
        return MendedTransportDescriptor(lower).create_transport();
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

void mendSharedMemory(eprosima::fastdds::dds::DomainParticipantQos& qos)
{
    if (qos.transport().use_builtin_transports && !environmentMayChooseTransports()) {
        qos.setup_transports(rtps::BuiltinTransports::DEFAULT);
    }
    for (auto& transport : qos.transport().user_transports) {
        if (const auto* const sharedMemory =
                dynamic_cast<const rtps::SharedMemTransportDescriptor*>(transport.get())) {
            transport = std::make_shared<MendedSharedMemory>(*sharedMemory);
        }
    }
}

} // namespace ovra::plex

#else

void ovra::plex::mendSharedMemory(eprosima::fastdds::dds::DomainParticipantQos& /*qos*/) {}

#endif
