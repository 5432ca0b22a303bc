// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <generated/vexstubif/DomeTemperatureAdapter.hpp>
#include <plex/ps/internal/DdsBasePubSub.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/topic/ContentFilteredTopic.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <thread>

namespace plex::test
{

namespace
{

namespace dds = eprosima::fastdds::dds;
namespace fastdds = ovra::plex::fastdds;
namespace internal = ovra::plex::ps::internal;
namespace qos = ovra::plex::ps::qos;

/// The base entity with its state in the test's hand.
template <class T, class ST>
class Probe : public internal::DdsBasePubSub<T, ST>
{
public:
    using internal::DdsBasePubSub<T, ST>::DdsBasePubSub;
    using internal::DdsBasePubSub<T, ST>::topicName_;

    void setState(internal::EntityState state) { this->state_ = state; }
};

using PositionProbe = Probe<AltAz, generated::ddsimpl::vexstubif::AltAz>;
using TemperatureProbe = Probe<vexstubif::DomeTemperature, generated::ddsimpl::vexstubif::DomeTemperature>;

/// A type of the positions' name that no position fits.
class OtherType : public generated::dds_::vexstubif::DomeTemperaturePubSubType
{
public:
    OtherType() { setName("generated::dds_::vexstubif::AltAz"); }
};

} // namespace

class BaseEntityTest : public EntityTest
{
protected:
    std::unique_ptr<PositionProbe> probe(const QoSList& qosList = {}, const Properties& properties = {})
    {
        return std::make_unique<PositionProbe>(uri, qosList, properties, participant_);
    }

    /// Ends one use of a topic, as an entity's holder does.
    void release(dds::Topic* topic)
    {
        internal::holdTopic(participant_, topic, log4cplus::Logger::getInstance("test"), "not deleted")
            .reset();
    }

    const std::shared_ptr<dds::DomainParticipant> participant_ = participant();
    const std::string topicName_ = ovra::plex::DdsUriHelper::topic(uri, true);
};

TEST_F(BaseEntityTest, UriThatIsNoPublishSubscribeUriIsRefused)
{
    const LogCapture log;
    const Uri other("dds+rpc://7/dome");
    const auto text = thrownText<PlexException>([&] { PositionProbe(other, {}, {}, participant_); });
    EXPECT_EQ(text, "Uri dds+rpc://7/dome is not DDS PubSub profile");
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, text), 1);
    EXPECT_TRUE(participant_->find_type("generated::dds_::vexstubif::AltAz").empty());
}

TEST_F(BaseEntityTest, IllFormedUriIsRefused)
{
    EXPECT_THROW(PositionProbe(Uri("dds+ps://7/dome?x"), {}, {}, participant_), PlexException);
}

TEST_F(BaseEntityTest, TypeThatTheParticipantKnowsOtherwiseIsRefused)
{
    const LogCapture log;
    ASSERT_EQ(fastdds::code(dds::TypeSupport(new OtherType()).register_type(participant_.get())),
              fastdds::RETCODE_OK);
    const auto text = thrownText<PlexException>([&] { probe(); });
    EXPECT_EQ(text, "Failed to register a DDS type. Uri: " + uri.string() +
                        "type namegenerated::dds_::vexstubif::AltAz code:4");
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, "errMsg:" + text), 1);
}

TEST_F(BaseEntityTest, TopicNameIsTheDecodedPath)
{
    const Uri encoded("dds+ps://" + std::to_string(testDomain()) + "/dome%20one/position");
    EXPECT_EQ(PositionProbe(encoded, {}, {}, participant_).topicName_, "dome one/position");
}

TEST_F(BaseEntityTest, FirstEntityMakesTheTopicAndTheSecondFindsIt)
{
    const auto first = probe();
    const auto second = probe();
    const auto [made, isMade] = first->createTopic();
    const auto [found, isFoundMade] = second->createTopic();
    EXPECT_TRUE(isMade);
    EXPECT_FALSE(isFoundMade);
    EXPECT_EQ(made, found);
    release(made);
    EXPECT_TRUE(topicExists());
    release(found);
    EXPECT_FALSE(topicExists());
}

TEST_F(BaseEntityTest, TopicThatComesAndGoesOnTwoThreadsLivesWhileItIsUsed)
{
    const auto work = [this](PositionProbe& entity) {
        for (int i = 0; i < 300; ++i) {
            dds::Topic* const topic = entity.createTopic().first;
            EXPECT_EQ(topic->get_name(), topicName_);
            release(topic);
        }
    };
    const auto first = probe();
    const auto second = probe();
    std::thread other([&] { work(*second); });
    work(*first);
    other.join();
    EXPECT_FALSE(topicExists());
}

TEST_F(BaseEntityTest, TopicOfTheApplicationIsUsedAndLeftInPlace)
{
    const auto entity = probe();
    dds::Topic* const topic =
        participant_->create_topic(topicName_, "generated::dds_::vexstubif::AltAz", dds::TopicQos());
    EXPECT_EQ(entity->createTopic(), std::pair(topic, false));
    release(topic);
    EXPECT_TRUE(topicExists());
    EXPECT_EQ(fastdds::code(participant_->delete_topic(topic)), fastdds::RETCODE_OK);
}

TEST_F(BaseEntityTest, TopicOfAnotherTypeIsRefused)
{
    const LogCapture log;
    TemperatureProbe temperature(uri, {}, {}, participant_);
    dds::Topic* const topic = temperature.createTopic().first;
    const auto text = thrownText<PlexException>([&] { probe()->createTopic(); });
    EXPECT_EQ(text, "Failed to create topic with Uri: " + uri.string());
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, text), 1);
    release(topic);
    EXPECT_FALSE(topicExists());
}

TEST_F(BaseEntityTest, ContentFilteredTopicOfTheNameIsRefused)
{
    const auto entity = probe();
    dds::Topic* const related =
        participant_->create_topic("related", "generated::dds_::vexstubif::AltAz", dds::TopicQos());
    auto* const filtered = participant_->create_contentfilteredtopic(topicName_, related, "", {});
    ASSERT_NE(filtered, nullptr);
    EXPECT_EQ(thrownText<PlexException>([&] { entity->createTopic(); }),
              "Failed to create topic with Uri: " + uri.string());
    participant_->delete_contentfilteredtopic(filtered);
    participant_->delete_topic(related);
}

TEST_F(BaseEntityTest, StateDecidesWhetherAnOperationMayGoOn)
{
    const LogCapture log;
    const auto entity = probe();
    const auto fresh = thrownText<IllegalStateException>([&] { entity->checkState(); });
    EXPECT_EQ(fresh, "Entity is not INITIALIZED. Uri: " + uri.string());
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, fresh), 1);

    entity->setState(internal::EntityState::Initialized);
    EXPECT_NO_THROW(entity->checkState());

    entity->setState(internal::EntityState::Closed);
    const auto closed = thrownText<IllegalStateException>([&] { entity->checkState(); });
    EXPECT_EQ(closed, "Entity closed Uri: " + uri.string());
    EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, closed), 1);
}

TEST_F(BaseEntityTest, QosLibraryIsGivenByPresenceOnly)
{
    EXPECT_EQ(probe()->getQosLibraryName(), nullptr);
    EXPECT_STREQ(probe({}, {{"dds.qos.profile.library", ""}})->getQosLibraryName(), "");
    EXPECT_STREQ(probe({}, {{"dds.qos.profile.library", "dome"}})->getQosLibraryName(), "dome");
}

TEST_F(BaseEntityTest, MissingProfilesAreNamed)
{
    const LogCapture log;
    const auto entity = probe({}, {{"dds.qos.profile.library", "none"}});
    const std::string behind = " Uri: " + uri.string();
    const auto topic = thrownText<PlexException>([&] { entity->createTopic(); });
    const auto publisher = thrownText<PlexException>([&] { entity->createPublisher(); });
    const auto subscriber = thrownText<PlexException>([&] { entity->createSubscriber(); });
    EXPECT_EQ(topic, "Failed to create topic with profile:none.topic" + behind);
    EXPECT_EQ(publisher, "Failed to create publisher with profile:none.publisher" + behind);
    EXPECT_EQ(subscriber, "Failed to create subscriber with profile:none.subscriber" + behind);
    for (const auto& text : {topic, publisher, subscriber}) {
        EXPECT_EQ(log.count("plexDdsBasePubSub", log4cplus::ERROR_LOG_LEVEL, text), 1);
    }
}

TEST_F(BaseEntityTest, EmptyLibraryNameStillMeansProfiles)
{
    EXPECT_EQ(thrownText<PlexException>([&] { probe({}, {{"dds.qos.profile.library", ""}})->createTopic(); }),
              "Failed to create topic with profile:.topic Uri: " + uri.string());
}

TEST_F(BaseEntityTest, DeadlinePeriodTakesMillisecondsAsNanoseconds)
{
    const auto entity = probe({std::make_shared<qos::Deadline>(1500ms)});
    EXPECT_EQ(internal::deadlinePeriod(1500), fastdds::Duration_t(1, 500));
}

TEST_F(BaseEntityTest, LastLatencyAndLastDeadlineOfTheListCount)
{
    const auto latency = [](int ms) {
        return std::make_shared<qos::Latency>(std::chrono::milliseconds(ms));
    };
    const auto deadline = [](int ms) {
        return std::make_shared<qos::Deadline>(std::chrono::milliseconds(ms));
    };
    const auto durations = [](const QoSList& list) {
        return PositionProbe::getDeadlineAndLatencyDuration(list);
    };

    class OtherQos : public qos::DurationBasedQoS
    {
    public:
        OtherQos() : DurationBasedQoS(7ms) {}
    };

    EXPECT_EQ(durations({}), std::pair(0, 0));
    EXPECT_EQ(durations({latency(1), deadline(2)}), std::pair(1, 2));
    EXPECT_EQ(durations({deadline(2), nullptr, deadline(3), latency(4), latency(0)}), std::pair(0, 3));
    EXPECT_EQ(durations({deadline(-5)}), std::pair(0, -5));
    EXPECT_EQ(durations({std::make_shared<OtherQos>()}), std::pair(0, 0));
}

TEST_F(BaseEntityTest, QosIsExceededByTheSamplesOwnTime)
{
    dds::SampleInfo old;
    old.source_timestamp = fastdds::SampleTime(internal::WallTime::now().seconds - 10, 0U);
    const auto exceeded = [&](const QoSList& list) {
        return probe(list)->isQosExceeded(old);
    };

    EXPECT_FALSE(exceeded({}));
    EXPECT_TRUE(exceeded({std::make_shared<qos::Latency>(1000ms)}));
    EXPECT_FALSE(exceeded({std::make_shared<qos::Latency>(60000ms)}));
    EXPECT_TRUE(exceeded({std::make_shared<qos::Deadline>(1000ms)}));
    EXPECT_FALSE(exceeded({std::make_shared<qos::Deadline>(60000ms)}));
    EXPECT_FALSE(exceeded({std::make_shared<qos::Latency>(0ms), std::make_shared<qos::Deadline>(-1000ms)}));
}

TEST(SampleAgeTest, SampleAtItsDeadlineIsPastIt)
{
    const internal::WallTime sample{100, 700'000'000};
    EXPECT_FALSE(internal::isPastDeadline(sample, 1500, {102, 199'999'999}));
    EXPECT_TRUE(internal::isPastDeadline(sample, 1500, {102, 200'000'000}));
    EXPECT_TRUE(internal::isPastDeadline(sample, 1500, {103, 0}));
}

TEST(SampleAgeTest, SampleAsOldAsTheLatencyIsNotTooOld)
{
    const internal::WallTime sample{100, 700'000'000};
    EXPECT_FALSE(internal::isOlderThan(sample, 1500, {102, 200'999'999}));
    EXPECT_TRUE(internal::isOlderThan(sample, 1500, {102, 201'000'000}));
}

TEST(SampleAgeTest, AgeAcrossAWrapOfTheMillisecondCountIsNotTooOld)
{
    // 4294967.295 s is the last millisecond before the 32-bit count wraps.
    EXPECT_FALSE(internal::isOlderThan({4294967, 0}, 100, {4294968, 0}));
    EXPECT_TRUE(internal::isOlderThan({4294966, 0}, 100, {4294967, 0}));
}

TEST(SampleAgeTest, SampleFromTheFutureIsNeverTooOld)
{
    EXPECT_FALSE(internal::isOlderThan({200, 0}, 100, {100, 0}));
    EXPECT_FALSE(internal::isPastDeadline({200, 0}, 100, {100, 0}));
}

} // namespace plex::test
