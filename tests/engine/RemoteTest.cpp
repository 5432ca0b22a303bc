// SPDX-License-Identifier: Apache-2.0
#include "DyingProcess.hpp"
#include "KeyedTest.hpp"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace plex::test
{

using testing::ElementsAre;

/// What is sent by shared memory or network, as between processes: callbacks run on threads of DDS.
class RemoteTest : public KeyedTest
{
protected:
    void SetUp() override
    {
        // Loading the file switches for the process, and must come before any participant.
        sendersParticipant_ =
            sendersPlex_->getDomainParticipant(uri, {{"dds.qos.profile.file", NO_INTRAPROCESS_FILE}});
    }

    std::unique_ptr<Writer> remotePublisher()
    {
        return std::unique_ptr<Writer>(generated_dds_Publisher_vexstubif_AltAz(sendersPlex_, uri, {}, {}));
    }

    std::unique_ptr<SensorWriter> remoteSensorPublisher()
    {
        return std::unique_ptr<SensorWriter>(generated_dds_Publisher_keyed_Sensor(sendersPlex_, uri, {}, {}));
    }

    const std::shared_ptr<ovra::plex::DdsPlex> sendersPlex_ =
        std::make_shared<ovra::plex::DdsPlex>(Properties{{"dds.wait_for_ack.timeout_ms", "0"}});
    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> sendersParticipant_;
};

TEST_F(RemoteTest, CallbackRunsOnAThreadOfDds)
{
    const auto subscriber = this->subscriber();
    std::atomic<int> elsewhere = 0;
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&, here = std::this_thread::get_id()] {
        elsewhere += std::this_thread::get_id() == here ? 0 : 1;
    });
    const auto publisher = remotePublisher();
    EXPECT_TRUE(waitFor([&] {
        publishPositions(*publisher, 1);
        return elsewhere > 0;
    }));
}

TEST_F(RemoteTest, NoEntityIsMadeOnAThreadOfDds)
{
    const auto subscriber = this->subscriber();
    std::mutex mutex;
    std::string refusal;
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] {
        const std::lock_guard lock(mutex);
        refusal = thrownText<IllegalStateException>([&] { publisher(); });
    });
    const auto publisher = remotePublisher();
    EXPECT_TRUE(waitFor([&] {
        publishPositions(*publisher, 1);
        const std::lock_guard lock(mutex);
        return !refusal.empty();
    }));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(refusal,
              "Publishers and subscribers can not be made inside an asynchronous callback on a thread of "
              "DDS, but with property dds.callback.thread=own Uri:" +
                  uri.string());
}

TEST_F(RemoteTest, AllMayBeClosedAndDroppedOnAThreadOfDds)
{
    auto subscriber = this->subscriber();
    auto other = this->subscriber();
    auto writer = this->publisher();
    auto mrvSubscriber = this->mrvSubscriber();
    std::atomic<bool> done = false;
    Handle handle;
    handle = subscribe(*subscriber, Kind::Async, {}, [&] {
        other.reset();
        writer.reset();
        mrvSubscriber.reset();
        subscriber->close();
        subscriber.reset();
        handle.reset();
        done = true;
    });
    const auto publisher = remotePublisher();
    EXPECT_TRUE(waitFor([&] {
        publishPositions(*publisher, done ? 0 : 1);
        return done.load();
    }));
    EXPECT_TRUE(waitFor([&] { return !topicExists(); }));
}

TEST_F(RemoteTest, CallbackOnAThreadOfItsOwnMayMakeEntities)
{
    const auto subscriber = this->subscriber({}, {{"dds.callback.thread", "own"}});
    std::atomic<bool> made = false;
    const auto handle = subscribe(*subscriber, Kind::Async, {}, [&] {
        publisher();
        this->subscriber();
        made = true;
    });
    const auto publisher = remotePublisher();
    EXPECT_TRUE(waitFor([&] {
        publishPositions(*publisher, 1);
        return made.load();
    }));
}

TEST_F(RemoteTest, InstancesAreToldByTheirKeys)
{
    const auto subscriber = sensorSubscriber();
    std::mutex mutex;
    std::vector<Reading> heard;
    const auto handle = subscriber->subscribeAsync(of("b"), [&](SensorReader&, const SensorEvent& event) {
        const std::lock_guard lock(mutex);
        heard.push_back(reading(*event.getData()));
    });
    const auto publisher = remoteSensorPublisher();
    EXPECT_TRUE(waitFor([&] {
        publish(*publisher, "a", 1);
        publish(*publisher, "b", 2);
        const std::lock_guard lock(mutex);
        return !heard.empty();
    }));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(heard.front(), (Reading{"b", 2}));
}

TEST_F(RemoteTest, InstanceIsReadByItsKey)
{
    const auto subscriber = sensorSubscriber();
    const auto publisher = remoteSensorPublisher();
    std::shared_ptr<Sensor> value;
    EXPECT_TRUE(waitFor([&] {
        publish(*publisher, "a", 1);
        publish(*publisher, "b", 2);
        return (value = subscriber->readInstance(*sensor("b"))) != nullptr;
    }));
    EXPECT_EQ(reading(*value), (Reading{"b", 2}));
}

TEST_F(RemoteTest, DisposalIsHeardForItsInstance)
{
    const auto publisher = remoteSensorPublisher();
    const auto subscriber = sensorSubscriber();
    std::atomic<int> ofA = 0;
    std::atomic<int> ofB = 0;
    const auto a =
        subscriber->subscribeAsync(of("a", InstanceState::Disposed), [&](SensorReader&) { ++ofA; });
    const auto b =
        subscriber->subscribeAsync(of("b", InstanceState::Disposed), [&](SensorReader&) { ++ofB; });
    PlainWriter writer(*this, sendersParticipant_);
    EXPECT_TRUE(waitFor([&] {
        writer.write("a");
        writer.write("b");
        writer.dispose("b");
        return ofB > 0;
    }));
    EXPECT_EQ(ofA, 0);
}

class RemoteDeathTest : protected DyingProcess, public RemoteTest
{
};

TEST_F(RemoteDeathTest, ExceptionOfACallbackEndsTheProcess)
{
    const auto publisher = remotePublisher();
    const auto subscriber = this->subscriber();
    const auto handle =
        subscribe(*subscriber, Kind::Async, {}, [] { throw std::runtime_error("callback failed"); });
    const auto provoke = [&] {
        leaveNothingBehind();
        waitFor([&] {
            publishPositions(*publisher, 1);
            return false;
        });
    };
    EXPECT_DEATH(provoke(), "callback failed");
}

} // namespace plex::test
