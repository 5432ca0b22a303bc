// SPDX-License-Identifier: Apache-2.0
#include "EntityTest.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>
#include <generated/vexstubif/DomeTemperaturePubSubType.hpp>
#include <plex/dds/Status.hpp>

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/Topic.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <atomic>
#include <future>
#include <unistd.h>

namespace plex::test
{

namespace dds = eprosima::fastdds::dds;
namespace ps = ovra::plex::ps;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A participant of DDS's own, with one reader or writer on the topic of a test.
class PlainPeer
{
public:
    using Type = dds::TypeSupport;

    explicit PlainPeer(const Uri& uri, const std::string& name = "plain")
    {
        auto* const factory = dds::DomainParticipantFactory::get_instance();
        dds::DomainParticipantQos qos;
        qos.name(name);
        participant_ = factory->create_participant(ovra::plex::DdsUriHelper::domain(uri, {}), qos);
        topicName_ = ovra::plex::DdsUriHelper::topic(uri, true);
    }

    PlainPeer(const PlainPeer&) = delete;
    PlainPeer& operator=(const PlainPeer&) = delete;

    ~PlainPeer()
    {
        participant_->delete_contained_entities();
        dds::DomainParticipantFactory::get_instance()->delete_participant(participant_);
    }

    dds::Topic* topic(const Type& type)
    {
        type.register_type(participant_);
        return participant_->create_topic(topicName_, type.get_type_name(), dds::TopicQos());
    }

    void write(const dds::DataWriterQos& qos, const dds::PublisherQos& publisherQos = {},
               const Type& type = altAz())
    {
        participant_->create_publisher(publisherQos)->create_datawriter(topic(type), qos);
    }

    void read(const dds::DataReaderQos& qos, const dds::SubscriberQos& subscriberQos = {},
              const Type& type = altAz())
    {
        participant_->create_subscriber(subscriberQos)->create_datareader(topic(type), qos);
    }

    static Type altAz() { return Type(new generated::dds_::vexstubif::AltAzPubSubType()); }

private:
    dds::DomainParticipant* participant_;
    std::string topicName_;
};

class StatusTest : public EntityTest
{
protected:
    /// Waits until an entity's status meets a condition. @returns it.
    template <class Entity, class Condition>
    static ps::EntityStatus statusOnce(Entity& entity, Condition condition)
    {
        ps::EntityStatus status;
        EXPECT_TRUE(waitFor([&] { return condition(status = ps::status(entity)); }));
        return status;
    }

    static std::vector<std::string> inWords(const std::vector<ps::Refusal>& refusals)
    {
        std::vector<std::string> texts;
        for (const auto& refusal : refusals) {
            texts.push_back(toString(refusal));
        }
        return texts;
    }

    static bool refusesOne(const ps::EntityStatus& status) { return status.refused.size() == 1; }

    static bool matchesOne(const ps::EntityStatus& status) { return status.matched.size() == 1; }
};

TEST_F(StatusTest, NamesTheEntityAndItsPeerInTheSameParticipant)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    const auto status = statusOnce(*publisher, matchesOne);
    EXPECT_TRUE(status.isPublisher);
    EXPECT_EQ(status.topic, ovra::plex::DdsUriHelper::topic(uri, true));
    EXPECT_EQ(status.type, "generated::dds_::vexstubif::AltAz");
    EXPECT_THAT(status.refused, IsEmpty());
    EXPECT_THAT(status.former, IsEmpty());
    EXPECT_EQ(status.matchedAltogether, 1U);
    const auto& peer = status.matched[0];
    EXPECT_EQ(peer.distance, ps::Distance::SameProcess);
    EXPECT_EQ(peer.process, std::to_string(getpid()));
    EXPECT_EQ(peer.vendor, "Fast DDS");
    EXPECT_EQ(peer.guid, ps::status(*subscriber).guid);
    EXPECT_EQ(ps::status(*subscriber).matched[0].guid, status.guid);
    EXPECT_FALSE(ps::status(*subscriber).isPublisher);
}

TEST_F(StatusTest, NamesThePeerInAnotherParticipant)
{
    const auto subscriber = EntityTest::subscriber();
    PlainPeer peer(uri, "telescope");
    peer.write({});
    const auto status = statusOnce(*subscriber, matchesOne);
    EXPECT_EQ(status.matched[0].participant, "telescope");
    EXPECT_EQ(status.matched[0].type, "generated::dds_::vexstubif::AltAz");
    EXPECT_EQ(status.matched[0].distance, ps::Distance::SameProcess);
    EXPECT_EQ(status.matched[0].process, std::to_string(getpid()));
    EXPECT_FALSE(status.matched[0].host.empty());
}

TEST_F(StatusTest, TellsOfAMostRecentValueSubscriberToo)
{
    const auto subscriber = mrvSubscriber();
    const auto publisher = EntityTest::publisher();
    EXPECT_TRUE(ps::waitForMatched(*subscriber, 1, patience));
    EXPECT_TRUE(ps::waitForMatched(*publisher, 1, patience));
    publishPositions(*publisher, 2);
    EXPECT_THAT(subscriber->readMostRecent(0ms), SizeIs(1));
    const auto counters = ps::status(*subscriber).counters;
    EXPECT_EQ(counters.received, 1U);
    EXPECT_EQ(counters.delivered, 1U);
}

TEST_F(StatusTest, RemembersPeersThatHaveGone)
{
    const auto publisher = EntityTest::publisher();
    auto subscriber = EntityTest::subscriber();
    const auto guid = ps::status(*subscriber).guid;
    ASSERT_TRUE(ps::waitForMatched(*publisher, 1, patience));
    subscriber->close();
    const auto status = statusOnce(*publisher, [](const auto& now) { return now.matched.empty(); });
    ASSERT_THAT(status.former, SizeIs(1));
    EXPECT_EQ(status.former[0].guid, guid);
    EXPECT_EQ(status.matchedAltogether, 1U);
}

TEST_F(StatusTest, OfAClosedEntityIsRefused)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    const auto mrv = mrvSubscriber();
    publisher->close();
    subscriber->close();
    mrv->close();
    EXPECT_THROW(ps::status(*publisher), IllegalStateException);
    EXPECT_THROW(ps::status(*subscriber), IllegalStateException);
    EXPECT_THROW(ps::status(*mrv), IllegalStateException);
}

TEST_F(StatusTest, OfAnotherTransportsEntityIsRefused)
{
    struct Foreign final : ps::MrvSubscriber<AltAz> {
        void close() override {}

        std::vector<std::shared_ptr<AltAz>>
        readMostRecent(const std::chrono::milliseconds& /*timeout*/) override
        {
            return {};
        }
    } foreign;

    EXPECT_EQ(thrownText<PlexException>([&] { ps::status(foreign); }),
              "The entity is not one of the DDS transport, which alone tells a status");
}

TEST_F(StatusTest, CountsWhatIsPublishedAndRead)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    publishPositions(*publisher, 5);
    EXPECT_THAT(subscriber->read(2), SizeIs(2));
    EXPECT_NE(subscriber->loanedRead(), nullptr);
    std::vector<std::shared_ptr<ps::DataEvent<AltAz>>> events;
    EXPECT_EQ(subscriber->readDataEvents({}, events, 1, 0ms), 1U);
    EXPECT_EQ(ps::status(*publisher).counters.published, 5U);
    const auto counters = ps::status(*subscriber).counters;
    EXPECT_EQ(counters.received, 4U);
    EXPECT_EQ(counters.delivered, 4U);
    EXPECT_EQ(counters.tooOld, 0U);
}

TEST_F(StatusTest, CountsWhatCallbacksGetAndThrow)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber({}, {{"dds.callback.exceptions", "log"}});
    const auto handle = subscriber->subscribeAsync({}, [](auto&, const ps::DataEvent<AltAz>& event) {
        if (event.getData()->getAlt() == 1) {
            throw std::runtime_error("no");
        }
    });
    publishPositions(*publisher, 3);
    const auto counters = ps::status(*subscriber).counters;
    EXPECT_EQ(counters.received, 3U);
    EXPECT_EQ(counters.delivered, 3U);
    EXPECT_EQ(counters.callbacksThrew, 1U);
}

TEST_F(StatusTest, CountsWhatIsTooOld)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber =
        EntityTest::subscriber({std::make_shared<ps::qos::Latency>(std::chrono::milliseconds(1000))});
    publisher->publish(1.0, *position(1), 0ms);
    EXPECT_THAT(subscriber->read(0), IsEmpty());
    const auto counters = ps::status(*subscriber).counters;
    EXPECT_EQ(counters.received, 1U);
    EXPECT_EQ(counters.tooOld, 1U);
    EXPECT_EQ(counters.delivered, 0U);
}

// --- Refusals
// -------------------------------------------------------------------------------------------------

/// The quality of service of a plain peer.
struct PeerQos {
    dds::DataWriterQos writer;
    dds::PublisherQos publisher;
    dds::DataReaderQos reader;
    dds::SubscriberQos subscriber;
};

/// A way in which a peer does not fit, and what is said of it.
struct Mismatch {
    const char* name;
    void (*change)(PeerQos&);
    bool isOurWriter; ///< whether the publisher is ours, and the reader the peer's
    bool isRefused;   ///< by Fast DDS, too
    const char* reason;
    const char* profile = nullptr; ///< of ours
};

std::ostream& operator<<(std::ostream& out, const Mismatch& mismatch)
{
    return out << mismatch.name;
}

class RefusalTest : public StatusTest, public testing::WithParamInterface<Mismatch>
{
protected:
    template <class Entity>
    void expectReason(Entity& entity)
    {
        if (GetParam().isRefused) {
            const auto status = statusOnce(entity, refusesOne);
            EXPECT_THAT(status.matched, IsEmpty());
            EXPECT_THAT(inWords(status.refused.at(0).refusals), ElementsAre(GetParam().reason));
        } else {
            const auto status = statusOnce(entity, matchesOne);
            EXPECT_THAT(status.refused, IsEmpty());
            EXPECT_THAT(inWords(status.matched.at(0).refusals), ElementsAre(GetParam().reason));
        }
    }

    Properties properties() const
    {
        if (GetParam().profile == nullptr) {
            return {};
        }
        return {{"dds.qos.profile.library", GetParam().profile}, {"dds.qos.profile.file", PROFILE_FILE}};
    }
};

TEST_P(RefusalTest, IsSaidWithItsReason)
{
    PeerQos qos;
    GetParam().change(qos);
    PlainPeer peer(uri);
    if (GetParam().isOurWriter) {
        const auto publisher = EntityTest::publisher({}, properties());
        peer.read(qos.reader, qos.subscriber);
        expectReason(*publisher);
    } else {
        const auto subscriber = EntityTest::subscriber({}, properties());
        peer.write(qos.writer, qos.publisher);
        expectReason(*subscriber);
    }
}

const auto mismatches = std::to_array<Mismatch>({
    {"ReliabilityAsked",
     [](PeerQos& qos) { qos.writer.reliability().kind = dds::BEST_EFFORT_RELIABILITY_QOS; }, false, true,
     "reliability: reliable asked for, best-effort offered", "reliable"},
    {"DurabilityAskedOfUs",
     [](PeerQos& qos) { qos.reader.durability().kind = dds::TRANSIENT_LOCAL_DURABILITY_QOS; }, true, true,
     "durability: transient-local asked for, volatile offered", "reliable"},
    {"DurabilityAskedByUs", [](PeerQos& qos) { qos.writer.durability().kind = dds::VOLATILE_DURABILITY_QOS; },
     false, true, "durability: transient-local asked for, volatile offered", "latched"},
    {"DeadlineAskedOfUs", [](PeerQos& qos) { qos.reader.deadline().period = {0, 500000000}; }, true, true,
     "deadline: 0.5 s asked for, infinite offered"},
    {"LatencyBudgetOffered", [](PeerQos& qos) { qos.writer.latency_budget().duration = {2, 0}; }, false,
     false, "latency budget: 0 s asked for, 2 s offered"},
    {"LivelinessAskedOfUs",
     [](PeerQos& qos) { qos.reader.liveliness().kind = dds::MANUAL_BY_TOPIC_LIVELINESS_QOS; }, true, true,
     "liveliness: manual by topic, lease infinite asked for, automatic, lease infinite offered"},
    {"LeaseAskedOfUs", [](PeerQos& qos) { qos.reader.liveliness().lease_duration = {3, 0}; }, true, true,
     "liveliness: automatic, lease 3 s asked for, automatic, lease infinite offered"},
    {"OwnershipAskedOfUs", [](PeerQos& qos) { qos.reader.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS; },
     true, true, "ownership: exclusive asked for, shared offered"},
    {"OwnershipOffered", [](PeerQos& qos) { qos.writer.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS; },
     false, true, "ownership: shared asked for, exclusive offered"},
    {"PresentationAskedOfUs",
     [](PeerQos& qos) {
         qos.subscriber.presentation().access_scope = dds::TOPIC_PRESENTATION_QOS;
         qos.subscriber.presentation().coherent_access = true;
     },
     true, false, "presentation: topic, coherent asked for, instance offered"},
    {"PartitionAskedOfUs", [](PeerQos& qos) { qos.subscriber.partition().push_back("north*"); }, true, true,
     "partition: \"north*\" asked for, \"\" offered"},
    {"PartitionOffered", [](PeerQos& qos) { qos.publisher.partition().push_back("south"); }, false, true,
     "partition: \"\" asked for, \"south\" offered"},
    {"RepresentationOffered",
     [](PeerQos& qos) { ovra::plex::fastdds::offer(qos.writer, dds::XCDR2_DATA_REPRESENTATION, true); },
     false, true, "data representation: xcdr1 asked for, xcdr2 offered"},
    {"RepresentationAskedOfUs",
     [](PeerQos& qos) {
         ovra::plex::fastdds::representationOf(qos.reader).m_value = {dds::XCDR2_DATA_REPRESENTATION};
     },
     true, true, "data representation: xcdr2 asked for, xcdr1 offered"},
});

INSTANTIATE_TEST_SUITE_P(Policies, RefusalTest, testing::ValuesIn(mismatches),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(StatusTest, NamesBothTypesOfATopic)
{
    const auto subscriber = EntityTest::subscriber();
    PlainPeer peer(uri);
    peer.write({}, {}, PlainPeer::Type(new generated::dds_::vexstubif::DomeTemperaturePubSubType()));
    const auto status = statusOnce(*subscriber, refusesOne);
    EXPECT_THAT(inWords(status.refused[0].refusals),
                ElementsAre("type name: generated::dds_::vexstubif::AltAz asked for, "
                            "generated::dds_::vexstubif::DomeTemperature offered"));
}

TEST_F(StatusTest, NamesEveryReasonOfAPair)
{
    const auto publisher = EntityTest::publisher();
    PlainPeer peer(uri);
    dds::DataReaderQos qos;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    qos.deadline().period = {1, 0};
    peer.read(qos);
    EXPECT_THAT(inWords(statusOnce(*publisher, refusesOne).refused[0].refusals),
                ElementsAre("deadline: 1 s asked for, infinite offered",
                            "ownership: exclusive asked for, shared offered"));
}

TEST_F(StatusTest, SaysWhenAPeerHasChangedItsMind)
{
    const auto publisher = EntityTest::publisher();
    {
        PlainPeer peer(uri);
        dds::DataReaderQos qos;
        qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
        peer.read(qos);
        statusOnce(*publisher, refusesOne);
    }
    statusOnce(*publisher, [](const auto& status) { return status.refused.empty(); });
    PlainPeer fitting(uri);
    fitting.read({});
    EXPECT_THAT(statusOnce(*publisher, matchesOne).refused, IsEmpty());
}

TEST_F(StatusTest, KnowsPeersThatWereThereBefore)
{
    PlainPeer peer(uri);
    dds::DataReaderQos qos;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    peer.read(qos);
    const auto first = EntityTest::publisher();
    statusOnce(*first, refusesOne);
    const auto second = EntityTest::publisher();
    EXPECT_THAT(ps::status(*second).refused, SizeIs(1));
}

// --- Waiting
// --------------------------------------------------------------------------------------------------

TEST_F(StatusTest, WaitingForMatchesEndsInTime)
{
    const auto publisher = EntityTest::publisher();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(ps::waitForMatched(*publisher, 1, 30ms));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
    EXPECT_TRUE(ps::waitForMatched(*publisher, 0, 0ms));
    EXPECT_EQ(thrownText<PlexException>([&] { ps::waitForMatched(*publisher, 1, -1ms); }),
              "Negative timeout given to waitForMatched");
}

TEST_F(StatusTest, WaitingForMatchesEndsWithTheEntity)
{
    const auto publisher = EntityTest::publisher();
    auto waiting =
        std::async(std::launch::async, [&] { return ps::waitForMatched(*publisher, 1, patience); });
    publisher->close();
    try {
        EXPECT_FALSE(waiting.get());
    } catch (
        const IllegalStateException&) { // NOLINT(bugprone-empty-catch): it was closed before the wait began
    }
}

TEST_F(StatusTest, WaitingForMatchesWakesUp)
{
    const auto publisher = EntityTest::publisher();
    auto waiting =
        std::async(std::launch::async, [&] { return ps::waitForMatched(*publisher, 2, patience); });
    const auto first = EntityTest::subscriber();
    const auto second = mrvSubscriber();
    EXPECT_TRUE(waiting.get());
}

TEST_F(StatusTest, AcknowledgmentsAreToldApart)
{
    using Outcome = ps::Acknowledgment::Outcome;
    const Properties reliable{{"dds.qos.profile.library", "reliable"},
                              {"dds.qos.profile.file", PROFILE_FILE}};
    const auto publisher = EntityTest::publisher({}, reliable);
    publishPositions(*publisher, 1);
    EXPECT_EQ(ps::waitForAcknowledgments(*publisher, 100ms).outcome, Outcome::NobodyToAcknowledge);
    const auto subscriber = EntityTest::subscriber({}, reliable);
    ASSERT_TRUE(ps::waitForMatched(*publisher, 1, patience));
    publishPositions(*publisher, 1);
    EXPECT_EQ(ps::waitForAcknowledgments(*publisher, patience).outcome, Outcome::Acknowledged);
    EXPECT_EQ(thrownText<IllegalStateException>([&] { ps::waitForAcknowledgments(*subscriber, 0ms); }),
              "A subscriber has nothing to be acknowledged");
    EXPECT_EQ(thrownText<PlexException>([&] { ps::waitForAcknowledgments(*publisher, -1ms); }),
              "Negative timeout given to waitForAcknowledgments");
}

// --- Changes
// --------------------------------------------------------------------------------------------------

TEST_F(StatusTest, ChangesAreTold)
{
    const auto publisher = EntityTest::publisher();
    std::atomic<std::size_t> matched = 99;
    const auto watch =
        ps::watchStatus(*publisher, [&](const ps::EntityStatus& status) { matched = status.matched.size(); });
    EXPECT_TRUE(waitFor([&] { return matched == 0; }));
    auto subscriber = EntityTest::subscriber();
    EXPECT_TRUE(waitFor([&] { return matched == 1; }));
    subscriber.reset();
    EXPECT_TRUE(waitFor([&] { return matched == 0; }));
}

TEST_F(StatusTest, NothingIsToldOnceTheWatchHasGone)
{
    const auto publisher = EntityTest::publisher();
    std::atomic<int> calls = 0;
    auto watch = ps::watchStatus(*publisher, [&](const auto&) { ++calls; });
    EXPECT_TRUE(waitFor([&] { return calls > 0; }));
    watch.reset();
    const int before = calls;
    std::atomic<bool> told = false;
    const auto other =
        ps::watchStatus(*publisher, [&](const auto& status) { told = status.matched.size() == 1; });
    const auto subscriber = EntityTest::subscriber();
    EXPECT_TRUE(waitFor([&] { return told.load(); }));
    EXPECT_EQ(calls, before);
}

TEST_F(StatusTest, AnythingMayBeDoneWhereChangesAreTold)
{
    auto publisher = EntityTest::publisher();
    std::unique_ptr<ps::StatusWatch> watch;
    std::promise<void> done;
    std::promise<void> made;
    watch = ps::watchStatus(*publisher, [&, isDone = false](const auto&) mutable {
        if (!isDone) {
            isDone = true;
            made.get_future().wait(); // so that the watch is there
            const auto subscriber = EntityTest::subscriber();
            publishPositions(*publisher, 1);
            EXPECT_THAT(subscriber->read(0), SizeIs(1));
            publisher.reset();
            watch.reset();
            done.set_value();
        }
    });
    made.set_value();
    EXPECT_EQ(done.get_future().wait_for(patience), std::future_status::ready);
}

TEST_F(StatusTest, AnExceptionWhereChangesAreToldIsLogged)
{
    const LogCapture log;
    const auto publisher = EntityTest::publisher();
    const auto watch = ps::watchStatus(*publisher, [](const auto&) { throw std::runtime_error("no"); });
    const auto text = "A callback of topic " + ovra::plex::DdsUriHelper::topic(uri, true) + " has thrown: no";
    EXPECT_TRUE(waitFor([&] { return log.count("plexDdsDiscovery", log4cplus::ERROR_LOG_LEVEL, text) > 0; }));
}

// --- Records
// --------------------------------------------------------------------------------------------------

TEST_F(StatusTest, AMatchAndItsEndAreRecordedOnce)
{
    const LogCapture log;
    const auto topic = ovra::plex::DdsUriHelper::topic(uri, true);
    const auto recorded = [&](const std::string& text) {
        return log.count("plexDdsDiscovery", log4cplus::INFO_LOG_LEVEL, text);
    };
    const auto subscriber = EntityTest::subscriber();
    const std::string peer = " matched with the publisher in the same process";
    {
        const auto publisher = EntityTest::publisher();
        EXPECT_TRUE(
            waitFor([&] { return recorded("The subscriber of topic " + topic + " is" + peer) == 1; }));
    }
    EXPECT_TRUE(
        waitFor([&] { return recorded("The subscriber of topic " + topic + " is no longer" + peer) == 1; }));
    const auto all = log.allRecords();
    EXPECT_EQ(std::count_if(all.begin(), all.end(),
                            [](const auto& record) { return record.logger == "plexDdsDiscovery"; }),
              2);
}

TEST_F(StatusTest, ARefusedPairIsRecordedOnce)
{
    const LogCapture log;
    const auto topic = ovra::plex::DdsUriHelper::topic(uri, true);
    const auto subscriber = EntityTest::subscriber();
    PlainPeer peer(uri);
    dds::DataWriterQos qos;
    qos.ownership().kind = dds::EXCLUSIVE_OWNERSHIP_QOS;
    peer.write(qos);
    const auto text =
        "The subscriber of topic " + topic +
        " and the publisher in the same process do not match: ownership: shared asked for, exclusive offered";
    EXPECT_TRUE(waitFor([&] { return log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, text) == 1; }));
    const auto publisher = EntityTest::publisher(); // another change
    ASSERT_TRUE(ps::waitForMatched(*subscriber, 1, patience));
    EXPECT_TRUE(waitFor([&] { return !log.allRecords().empty(); }));
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, text), 1);
}

} // namespace plex::test
