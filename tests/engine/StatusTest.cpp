// SPDX-License-Identifier: Apache-2.0
#include "StatusTest.hpp"

#include "ForeignMrvSubscriber.hpp"

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>
#include <unistd.h>

namespace plex::test
{

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

/// Peers that the participant discovers while it has no entity of this library.
class EarlierPeerTest : public StatusTest
{
protected:
    /// By means of DDS alone.
    void discover(PlainPeer& peer)
    {
        peer.write({});
        const auto type = PlainPeer::altAz();
        type.register_type(shared_.get());
        auto* const topic = shared_->create_topic(ovra::plex::DdsUriHelper::topic(uri, true),
                                                  type.get_type_name(), dds::TopicQos());
        auto* const reader = shared_->create_subscriber({})->create_datareader(topic, {});
        EXPECT_TRUE(waitFor([&] {
            dds::SubscriptionMatchedStatus status;
            reader->get_subscription_matched_status(status);
            return status.total_count > 0;
        }));
        shared_->delete_contained_entities();
    }

    void expectNamed()
    {
        PlainPeer peer(uri, "telescope");
        discover(peer);
        const auto subscriber = EntityTest::subscriber();
        const auto status = statusOnce(*subscriber, matchesOne);
        EXPECT_EQ(status.matched[0].participant, "telescope");
        EXPECT_EQ(status.matched[0].type, "generated::dds_::vexstubif::AltAz");
    }

private:
    const std::shared_ptr<dds::DomainParticipant> shared_ = participant();
};

TEST_F(EarlierPeerTest, IsNamedThoughItCameBeforeTheFirstEntity)
{
    expectNamed();
}

TEST_F(EarlierPeerTest, IsNamedThoughItCameAfterTheLastEntity)
{
    EntityTest::subscriber()->close();
    expectNamed();
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
    ForeignMrvSubscriber foreign;
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

TEST_F(StatusTest, CountsNoPartBeforeItsWhole)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    std::atomic<bool> isOver = false;
    auto looking = std::async(std::launch::async, [&] {
        while (!isOver) {
            const auto counters = ps::status(*subscriber).counters;
            ASSERT_LE(counters.delivered + counters.tooOld, counters.received);
            ASSERT_LE(counters.received, ps::status(*publisher).counters.published);
        }
    });
    for (int i = 0; i < 300; ++i) {
        publishPositions(*publisher, 3);
        EXPECT_THAT(subscriber->read(0), SizeIs(3));
    }
    isOver = true;
    looking.get();
    EXPECT_EQ(ps::status(*subscriber).counters.delivered, 900U);
}

TEST_F(StatusTest, TellsWhatHistoriesHold)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    const auto mostRecent = mrvSubscriber();
    publishPositions(*publisher, 3);
    EXPECT_EQ(ps::status(*subscriber).history.unread, 3U);
    EXPECT_EQ(ps::status(*mostRecent).history.unread, 1U);
    EXPECT_EQ(ps::status(*publisher).history.unread, 0U);
    EXPECT_THAT(subscriber->read(2), SizeIs(2));
    EXPECT_THAT(mostRecent->readMostRecent(0ms), SizeIs(1));
    EXPECT_EQ(ps::status(*subscriber).history.unread, 1U);
    EXPECT_EQ(ps::status(*mostRecent).history.unread, 0U);
    EXPECT_EQ(ps::status(*publisher).history.most, 40000U);
    EXPECT_EQ(ps::status(*subscriber).history.most, 40000U);
    EXPECT_EQ(ps::status(*mostRecent).history.most, 1U);
    const Properties latched{{"dds.qos.profile.library", "latched"}, {"dds.qos.profile.file", PROFILE_FILE}};
    const auto keepsLast = ps::status(*EntityTest::publisher({}, latched)).history;
    EXPECT_EQ(keepsLast.most, 100U);
    EXPECT_EQ(keepsLast.mostOfInstance, 100U);
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
    const auto matched =
        "The subscriber of topic " + topic + " is matched with the publisher in the same process";
    EXPECT_TRUE(
        waitFor([&] { return log.count("plexDdsDiscovery", log4cplus::INFO_LOG_LEVEL, matched) == 1; }));
    EXPECT_EQ(log.count("plexDdsDiscovery", log4cplus::WARN_LOG_LEVEL, text), 1);
}

} // namespace plex::test
