// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>

#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;
namespace dds = eprosima::fastdds::dds;
namespace fastdds = ovra::plex::fastdds;
namespace internal = ovra::plex::ps::internal;

/// Writes positions that no reader can decode where the altitude is negative: as a peer would whose type goes
/// by the same name and is another one.
class SpoilingType final : public generated::dds_::vexstubif::AltAzPubSubType
{
public:
    using AltAzPubSubType::serialize;

    bool serialize(void* data, fastdds::SerializedPayload_t* payload,
                   fastdds::DataRepresentationId representation) override
    {
        const bool done = AltAzPubSubType::serialize(data, payload, representation);
        if (static_cast<const type*>(data)->alt() < 0) {
            payload->data[1] = 0x03; // the identifier of parameter lists
        }
        return done;
    }
};

/// A subscriber beside a writer that sends what cannot be decoded, in between what can.
class UndecodableTest : public CallbackTest
{
protected:
    static constexpr double spoilt = -1;

    UndecodableTest()
    {
        const dds::TypeSupport type(new SpoilingType());
        type.register_type(participant_.get());
        topic_ = participant_->create_topic(ovra::plex::DdsUriHelper::topic(uri, true), type.get_type_name(),
                                            dds::TopicQos());
        publisher_ = participant_->create_publisher(dds::PublisherQos());
        dds::DataWriterQos qos;
        qos.data_sharing().off(); // which overwrites what has not been read yet
        writer_ = publisher_->create_datawriter(topic_, qos);
    }

    ~UndecodableTest() override
    {
        publisher_->delete_datawriter(writer_);
        participant_->delete_publisher(publisher_);
        participant_->delete_topic(topic_);
    }

    void write(double alt)
    {
        generated::dds_::vexstubif::AltAz value;
        value.alt(alt);
        writer_->write(fastdds::asSample(&value));
    }

    void write(std::initializer_list<double> alts)
    {
        for (const double alt : alts) {
            write(alt);
        }
    }

    /// Writes zeros until one has arrived; after that, what is written arrives before write() returns.
    template <class Arrived>
    void connect(Arrived arrived)
    {
        ASSERT_TRUE(waitFor([&] {
            write(0);
            return arrived();
        }));
    }

    void connect(Reader& subscriber)
    {
        connect([&] { return !subscriber.read(0).empty(); });
    }

    std::string warning(const std::string& count) const
    {
        return "Passed over " + count + " samples of topic " + ovra::plex::DdsUriHelper::topic(uri, true) +
               " that can not be decoded as generated::dds_::vexstubif::AltAz";
    }

private:
    const std::shared_ptr<ovra::plex::DdsPlex> peer_ = std::make_shared<ovra::plex::DdsPlex>(Properties{});
    const std::shared_ptr<dds::DomainParticipant> participant_ = peer_->getDomainParticipant(uri, {});
    dds::Topic* topic_;
    dds::Publisher* publisher_;
    dds::DataWriter* writer_;
};

TEST_F(UndecodableTest, ReadPassesOverIt)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    write({1, spoilt, 2});
    EXPECT_THAT(altitudes(subscriber->read(0)), ElementsAre(1, 2));
}

TEST_F(UndecodableTest, LoanIsNotGivenOut)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    write({spoilt, 1});
    EXPECT_EQ(subscriber->loanedRead(), nullptr);
    EXPECT_EQ(subscriber->loanedRead()->getData().getAlt(), 1);
}

TEST_F(UndecodableTest, EventReadPassesOverIt)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    write({1, spoilt, 2});
    Events events;
    EXPECT_EQ(subscriber->readDataEvents({}, events, 2, 10s), 2U);
    EXPECT_THAT(altitudes(events), ElementsAre(1, 2));
}

TEST_F(UndecodableTest, PolledCallbackIsNotCalled)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribe({}, hearing(heard));
    write({1, spoilt, 2});
    EXPECT_EQ(subscriber->poll(0, 1ms), 3U);
    EXPECT_THAT(altitudesOf(heard), ElementsAre(1, 2));
}

TEST_F(UndecodableTest, AsynchronousCallbackIsNotCalled)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    std::vector<Heard> heard;
    const auto handle = subscriber->subscribeAsync({}, hearing(heard));
    write({1, spoilt, 2});
    EXPECT_THAT(altitudesOf(heard), ElementsAre(1, 2));
}

TEST_F(UndecodableTest, AsynchronousCallbackIsNotCalledAfterANotifierEither)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    subscriber->subscribeAsync({}, [](Reader&) {})->close();
    std::vector<Heard> heard;
    const auto notifier = subscriber->subscribeAsync(Filter(InstanceState::Disposed, {}), [](Reader&) {});
    const auto handle = subscriber->subscribeAsync({}, hearing(heard));
    write({1, spoilt, 2});
    EXPECT_THAT(altitudesOf(heard), ElementsAre(1, 2));
}

TEST_F(UndecodableTest, IsNoMostRecentValue)
{
    const auto subscriber = mrvSubscriber();
    connect([&] { return !subscriber->readMostRecent(0ms).empty(); });
    write({1, spoilt});
    EXPECT_THAT(subscriber->readMostRecent(0ms), IsEmpty());
    write(2);
    EXPECT_THAT(altitudes(subscriber->readMostRecent(0ms)), ElementsAre(2));
}

TEST_F(UndecodableTest, IsLoggedAsAWarning)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    write({spoilt, spoilt});
    const LogCapture log;
    EXPECT_THAT(subscriber->read(0), IsEmpty());
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::WARN_LOG_LEVEL, warning("2")), 1);
}

TEST_F(UndecodableTest, IsLoggedAsAWarningBeforeACallbackToo)
{
    const auto subscriber = this->subscriber();
    connect(*subscriber);
    const auto handle = subscriber->subscribeAsync({}, [](Reader&, const Event&) {});
    const LogCapture log;
    write(spoilt);
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::WARN_LOG_LEVEL, warning("1")), 1);
}

} // namespace plex::test
