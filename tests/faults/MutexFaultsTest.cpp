// SPDX-License-Identifier: Apache-2.0
// Entities are made from the engine's templates where their mutexes must be known.
#include "FaultTest.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <plex/ps/DdsPublisher.hpp>
#include <plex/ps/DdsSubscriber.hpp>
#include <plex/ps/InstanceDdsPublisher.hpp>

#include <src/engine/TopicUses.hpp>
#include <system_error>

namespace plex::test
{

using testing::ElementsAre;
using testing::IsEmpty;

class MutexFaultsTest : public FaultTest
{
protected:
    using PositionAdapter = generated::ddsimpl::vexstubif::AltAz;
    using SensorAdapter = generated::ddsimpl::keyed::Sensor;

    template <class Operation>
    static void expectUnlocked(Operation operation)
    {
        const LogCapture log;
        try {
            operation();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), std::errc::invalid_argument);
        }
        EXPECT_THAT(recordsOf(log), IsEmpty());
    }
};

TEST_F(MutexFaultsTest, NothingIsMadeWithoutTheTopicsLockAndNothingIsLeftBehind)
{
    auto holder = participant();
    {
        const Unlockable topics(ovra::plex::ps::internal::topicUses().mutex);
        expectUnlocked([&] { publisher(); });
        expectUnlocked([&] { subscriber(); });
        expectUnlocked([&] { mrvSubscriber(); });
    }
    EXPECT_NO_THROW(publisher());
    EXPECT_TRUE(releasedClean(holder));
}

TEST_F(MutexFaultsTest, PublisherThatCannotLockStaysOpen)
{
    ovra::plex::ps::DdsPublisher<AltAz, PositionAdapter> publisher(uri, {}, {}, participant(), plex);
    {
        const Unlockable locks(publisher);
        expectUnlocked([&] { publisher.close(); });
    }
    EXPECT_NO_THROW(publishPositions(publisher, 1));
}

TEST_F(MutexFaultsTest, InstancePublisherThatCannotLockRefusesEveryOperationAndStaysOpen)
{
    const auto parent = std::make_shared<ovra::plex::ps::DdsPublisher<Sensor, SensorAdapter>>(
        uri, QoSList{}, Properties{}, participant(), plex);
    ovra::plex::ps::InstanceDdsPublisher<Sensor, SensorAdapter> publisher(parent, *sensor("a"), 0);
    {
        const Unlockable locks(publisher);
        expectUnlocked([&] { publish(publisher, "a"); });
        expectUnlocked([&] { publisher.publish(1.5, *sensor("a"), 0ms); });
        expectUnlocked([&] { publisher.createDataEntity(); });
        expectUnlocked([&] { publisher.close(); });
    }
    EXPECT_NO_THROW(publish(publisher, "a"));
}

class SubscriptionMutexFaultsTest : public MutexFaultsTest
{
protected:
    using Impl = ovra::plex::ps::DdsSubscriber<AltAz, PositionAdapter>;

    /// An operation cannot lock, and calls nobody back.
    template <class Operation>
    void expectNobodyCalled(Kind kind, Operation operation)
    {
        int calls = 0;
        const auto handle = subscribe(*reader, kind, {}, [&] { ++calls; });
        const Unlockable locks(*reader->subscriptionManager());
        expectUnlocked(operation);
        EXPECT_EQ(calls, 0);
    }

    const std::unique_ptr<Writer> writer = publisher();
    const std::shared_ptr<Impl> reader = Impl::create(uri, {}, {}, participant());
};

TEST_F(SubscriptionMutexFaultsTest, ArrivingSampleIsLeftInTheReader)
{
    for (const Kind kind : {Kind::Async, Kind::Notifier}) {
        expectNobodyCalled(kind, [&] { publishPositions(*writer, 1, 7); });
        EXPECT_THAT(altitudes(reader->read(0)), ElementsAre(7));
    }
}

TEST_F(SubscriptionMutexFaultsTest, PolledSampleIsTakenAndItsLoanReturned)
{
    publishPositions(*writer, 1);
    expectNobodyCalled(Kind::Sync, [&] { reader->poll(0, patience); });
    EXPECT_THAT(reader->read(0), IsEmpty());
    EXPECT_NO_THROW(reader->close());
}

class HandleMutexFaultsTest : public SubscriptionMutexFaultsTest, public testing::WithParamInterface<Kind>
{
};

TEST_P(HandleMutexFaultsTest, NothingIsRegisteredWithoutALock)
{
    {
        const Unlockable locks(*reader->subscriptionManager());
        expectUnlocked([&] { subscribe(*reader, GetParam()); });
    }
    EXPECT_NO_THROW(subscribe(*reader, GetParam())); // nothing is there to collide with
}

TEST_P(HandleMutexFaultsTest, SubscriptionThatCannotLockStaysAndIsClosedLater)
{
    const auto handle = subscribe(*reader, GetParam());
    {
        const Unlockable locks(*reader->subscriptionManager());
        expectUnlocked([&] { handle->close(); });
    }
    EXPECT_THROW(subscribe(*reader, GetParam()), PlexException);
    handle->close();
    EXPECT_NO_THROW(subscribe(*reader, GetParam()));
}

TEST_P(HandleMutexFaultsTest, SubscriptionThatCannotLockWhenItIsDroppedEndsTheProcess)
{
    auto handle = subscribe(*reader, GetParam());
    expectDeath([&] {
        const Unlockable locks(*reader->subscriptionManager());
        handle.reset();
    });
}

INSTANTIATE_TEST_SUITE_P(Kinds, HandleMutexFaultsTest, testing::ValuesIn(allKinds),
                         testing::PrintToStringParamName());

} // namespace plex::test
