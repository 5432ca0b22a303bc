// SPDX-License-Identifier: Apache-2.0
#include <plex/fastdds/Generation.hpp>

#ifdef PLEX_FASTDDS_SENDS_LEFTOVERS

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <plex/dds/DdsPlex.hpp>

#include <fastdds/LibrarySettings.hpp>
#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>
#include <fastdds/rtps/transport/ChainingTransport.hpp>
#include <fastdds/rtps/transport/ChainingTransportDescriptor.hpp>
#include <fastdds/rtps/transport/SenderResource.hpp>
#include <fastdds/rtps/transport/TransportReceiverInterface.hpp>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.hpp>
#include <gtest/gtest.h>

#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace rtps = eprosima::fastdds::rtps;
using ovra::plex::DdsPlex;
using ovra::plex::Plex;

using Packet = std::vector<std::uint8_t>;

/// Packets that were received, kept by threads of DDS.
class Packets
{
public:
    void add(const std::uint8_t* data, std::size_t size)
    {
        const std::lock_guard lock(mutex_);
        packets_.emplace_back(data, data + size);
    }

    std::vector<Packet> all() const
    {
        const std::lock_guard lock(mutex_);
        return packets_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<Packet> packets_;
};

/// Keeps what it receives over shared memory, and passes it on.
class ListeningTransport final : public rtps::ChainingTransport
{
public:
    ListeningTransport(const rtps::ChainingTransportDescriptor& descriptor, Packets& packets)
        : ChainingTransport(descriptor)
        , packets_(packets)
    {
    }

    rtps::TransportDescriptorInterface* get_configuration() override
    {
        return low_level_transport_->get_configuration();
    }

    bool send(rtps::SenderResource* sender, const std::vector<rtps::NetworkBuffer>& buffers,
              std::uint32_t totalBytes, rtps::LocatorsIterator* begin, rtps::LocatorsIterator* end,
              const std::chrono::steady_clock::time_point& timeout) override
    {
        return sender->send(buffers, totalBytes, begin, end, timeout);
    }

    void receive(rtps::TransportReceiverInterface* receiver, const rtps::octet* data, std::uint32_t size,
                 const rtps::Locator_t& local, const rtps::Locator_t& remote) override
    {
        packets_.add(data, size);
        receiver->OnDataReceived(data, size, local, remote);
    }

private:
    Packets& packets_;
};

struct ListeningTransportDescriptor final : rtps::ChainingTransportDescriptor {
    explicit ListeningTransportDescriptor(Packets& packets)
        : ChainingTransportDescriptor(std::make_shared<rtps::SharedMemTransportDescriptor>())
        , packets_(packets)
    {
    }

    rtps::TransportInterface* create_transport() const override
    {
        return new ListeningTransport(*this, packets_);
    }

    Packets& packets_;
};

/// What a packet is made of (RTPS 2.5, 9.4).
struct Content {
    bool hasData = false;
    bool isWhole = false; ///< only submessages of the standard's, the last of which ends with the packet
};

Content contentOf(const Packet& packet)
{
    constexpr std::size_t messageHeader = 20;
    constexpr std::size_t submessageHeader = 4;
    constexpr std::uint8_t data = 0x15;
    static const std::set<std::uint8_t> standard{0x01, 0x06, 0x07, 0x08, 0x09, 0x0c, 0x0d,
                                                 0x0e, 0x0f, 0x12, 0x13, data, 0x16};
    Content content;
    auto at = messageHeader;
    while (at + submessageHeader <= packet.size() && standard.count(packet[at]) == 1) {
        content.hasData = content.hasData || packet[at] == data;
        at += submessageHeader + packet[at + 2] + packet[at + 3] * std::size_t{256};
    }
    content.isWhole = at == packet.size();
    return content;
}

} // namespace

/// With the library of profiles of the shipped file, or "" for none.
class SharedMemory : public testing::TestWithParam<std::string>
{
protected:
    static void SetUpTestSuite()
    {
        // Else values to readers of the same process take no transport.
        eprosima::fastdds::LibrarySettings settings;
        settings.intraprocess_delivery = eprosima::fastdds::INTRAPROCESS_OFF;
        dds::DomainParticipantFactory::get_instance()->set_library_settings(settings);
    }

    ~SharedMemory() override
    {
        receiver_->delete_contained_entities();
        dds::DomainParticipantFactory::get_instance()->delete_participant(receiver_);
        sender_->delete_contained_entities();
    }

    std::shared_ptr<dds::DomainParticipant> makeSender() const
    {
        Plex::Properties properties;
        if (!GetParam().empty()) {
            properties = {{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", GetParam()}};
        }
        return DdsPlex({}).getDomainParticipant(testUri(), properties);
    }

    dds::DomainParticipant* makeReceiver()
    {
        dds::DomainParticipantQos qos;
        qos.setup_transports(rtps::BuiltinTransports::UDPv4); // how the two find each other
        qos.transport().user_transports.push_back(std::make_shared<ListeningTransportDescriptor>(packets_));
        return dds::DomainParticipantFactory::get_instance()->create_participant(testDomain(), qos);
    }

    dds::Topic* topic(dds::DomainParticipant& participant)
    {
        type_.register_type(&participant);
        return participant.create_topic(testName(), type_.get_type_name(), dds::TOPIC_QOS_DEFAULT);
    }

    Packets packets_;
    dds::TypeSupport type_{new generated::dds_::vexstubif::AltAzPubSubType()};
    const std::shared_ptr<dds::DomainParticipant> sender_ = makeSender();
    dds::DomainParticipant* const receiver_ = makeReceiver();
};

TEST_P(SharedMemory, CarriesNothingButWhatIsSent)
{
    auto* const writer = sender_->create_publisher(dds::PUBLISHER_QOS_DEFAULT)
                             ->create_datawriter(topic(*sender_), dds::DATAWRITER_QOS_DEFAULT);
    dds::DataReaderQos overTransports;
    overTransports.data_sharing().off();
    auto* const reader = receiver_->create_subscriber(dds::SUBSCRIBER_QOS_DEFAULT)
                             ->create_datareader(topic(*receiver_), overTransports);
    const auto matched = [&] {
        dds::SubscriptionMatchedStatus ofReader;
        reader->get_subscription_matched_status(ofReader);
        dds::PublicationMatchedStatus ofWriter;
        writer->get_publication_matched_status(ofWriter);
        return ofReader.current_count == 1 && ofWriter.current_count == 1;
    };
    ASSERT_TRUE(waitFor(matched));

    const std::unique_ptr<void, std::function<void(void*)>> value(
        type_.create_data(), [this](void* data) { type_.delete_data(data); });
    writer->write(value.get());
    ASSERT_TRUE(waitFor([&] {
        const auto packets = packets_.all();
        return std::any_of(packets.begin(), packets.end(),
                           [](const Packet& packet) { return contentOf(packet).hasData; });
    }));
    for (const auto& packet : packets_.all()) {
        EXPECT_TRUE(contentOf(packet).isWhole) << testing::PrintToString(packet);
    }
}

INSTANTIATE_TEST_SUITE_P(OfParticipants, SharedMemory, testing::Values("", "reliable", "high-rate"));

} // namespace plex::test

#endif
