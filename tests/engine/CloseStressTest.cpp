// SPDX-License-Identifier: Apache-2.0
#include "CallbackTest.hpp"

#include <atomic>
#include <thread>
#include <utility>

namespace plex::test
{

namespace
{

#if defined(__has_feature) // Clang's way to say it
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PLEX_TEST_SANITIZED 1
#endif
#endif
#if defined(PLEX_TEST_SANITIZED) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

/// How samples get to a subscriber.
enum class Path {
    Participant, ///< on the publishing thread, as both belong to one participant
    Process,     ///< on the publishing thread, from another participant
    Network      ///< on a receiving thread of DDS, as from another process
};

std::ostream& operator<<(std::ostream& out, Path path)
{
    static constexpr const char* names[] = {"Participant", "Process", "Network"};
    return out << names[static_cast<int>(path)];
}

int rounds(Path path)
{
    return (path == Path::Network ? 500 : 1000) / (sanitized ? 5 : 1);
}

Properties propertiesFor(Path path)
{
    Properties result{{"dds.wait_for_ack.timeout_ms", "0"}};
    if (path == Path::Network) {
        result["dds.qos.profile.file"] = NO_INTRAPROCESS_FILE;
    }
    return result;
}

} // namespace

/// Subscribers come and go while data arrives.
class CloseStressTest : public CallbackTest, public testing::WithParamInterface<Path>
{
protected:
    /// A subscriber with a callback and a notifier, and the moment from which none may start.
    struct Subscribed {
        std::unique_ptr<Reader> subscriber;
        std::shared_ptr<std::atomic<bool>> over = std::make_shared<std::atomic<bool>>(false);
        Handle callback;
        Handle notifier;
    };

    void SetUp() override
    {
        writer_ = std::unique_ptr<Writer>(generated_dds_Publisher_vexstubif_AltAz(writersPlex_, uri, {}, {}));
        traffic_ = std::thread([this] {
            while (!stopped_) {
                writer_->publish(*position(1), 0ms);
                std::this_thread::yield();
            }
        });
    }

    void TearDown() override
    {
        stopped_ = true;
        traffic_.join();
        EXPECT_EQ(late_, 0);
        EXPECT_GT(calls_, 0);
        EXPECT_EQ(calledByWriter_, GetParam() != Path::Network);
    }

    std::unique_ptr<Reader> open()
    {
        return std::unique_ptr<Reader>(generated_dds_Subscriber_vexstubif_AltAz(readersPlex_, uri, {}, {}));
    }

    Subscribed openAndSubscribe()
    {
        Subscribed result;
        result.subscriber = open();
        const auto count = [this, over = result.over] {
            late_ += *over ? 1 : 0;
            calledByWriter_ = std::this_thread::get_id() == traffic_.get_id();
            ++calls_;
        };
        result.callback = subscribe(*result.subscriber, Kind::Async,
                                    Filter(InstanceState::Any, {InstanceEvent::Update}), count);
        result.notifier = subscribe(*result.subscriber, Kind::Notifier,
                                    Filter(InstanceState::Any, {InstanceEvent::New}), count);
        return result;
    }

    /// Runs rounds of opening and what the test does with the subscriber; in every second one data has
    /// arrived before.
    template <class Operation>
    void repeat(Operation operation)
    {
        for (int round = 0; round < rounds(GetParam()); ++round) {
            auto subscribed = openAndSubscribe();
            if (round % 2 == 0) {
                const int before = calls_;
                ASSERT_TRUE(waitFor([&] { return calls_ > before; }));
            }
            operation(subscribed);
        }
    }

    std::atomic<int> calls_ = 0;
    std::atomic<int> late_ = 0;
    std::atomic<bool> calledByWriter_ = false;

private:
    const std::shared_ptr<ovra::plex::DdsPlex> readersPlex_ =
        std::make_shared<ovra::plex::DdsPlex>(propertiesFor(GetParam()));
    const std::shared_ptr<ovra::plex::DdsPlex> writersPlex_ =
        GetParam() == Path::Participant ? readersPlex_
                                        : std::make_shared<ovra::plex::DdsPlex>(propertiesFor(GetParam()));
    /// Holds the participant between the rounds.
    const std::shared_ptr<void> participant_ =
        readersPlex_->getDomainParticipant(uri, propertiesFor(GetParam()));
    std::unique_ptr<Writer> writer_;
    std::atomic<bool> stopped_ = false;
    std::thread traffic_;
};

TEST_P(CloseStressTest, ClosingTheSubscriberFirst)
{
    repeat([](Subscribed& subscribed) {
        subscribed.subscriber->close();
        *subscribed.over = true;
    });
}

TEST_P(CloseStressTest, ClosingTheSubscriptionsFirst)
{
    repeat([](Subscribed& subscribed) {
        subscribed.callback->close();
        subscribed.notifier->close();
        *subscribed.over = true;
        subscribed.subscriber->close();
    });
}

TEST_P(CloseStressTest, DroppingTheSubscriptionsFirst)
{
    repeat([](Subscribed& subscribed) {
        subscribed.notifier.reset();
        subscribed.callback.reset();
        *subscribed.over = true;
        subscribed.subscriber.reset();
    });
}

TEST_P(CloseStressTest, DroppingTheSubscriberFirst)
{
    repeat([](Subscribed& subscribed) {
        subscribed.subscriber.reset();
        subscribed.callback.reset();
        subscribed.notifier.reset();
        *subscribed.over = true;
    });
}

TEST_P(CloseStressTest, ClosingOnTwoThreadsAtOnce)
{
    repeat([](Subscribed& subscribed) {
        std::thread other([&] {
            subscribed.subscriber->close();
            *subscribed.over = true;
        });
        subscribed.subscriber->close();
        *subscribed.over = true;
        other.join();
    });
}

TEST_P(CloseStressTest, ClosingTheSubscriberWhileTheSubscriptionsAreDropped)
{
    repeat([](Subscribed& subscribed) {
        std::thread other([&] {
            subscribed.callback.reset();
            subscribed.notifier.reset();
        });
        subscribed.subscriber->close();
        *subscribed.over = true;
        other.join();
    });
}

TEST_P(CloseStressTest, ClosingWithALoanOut)
{
    repeat([](Subscribed& subscribed) {
        subscribed.callback->close(); // it takes all samples
        std::shared_ptr<ovra::plex::ps::LoanedDataEntity<AltAz>> loan;
        ASSERT_TRUE(waitFor([&] { return (loan = subscribed.subscriber->loanedRead()) != nullptr; }));
        subscribed.subscriber->close();
        *subscribed.over = true;
        EXPECT_EQ(loan->getData().getAlt(), 1);
    });
}

TEST_P(CloseStressTest, ClosingWhileAnotherThreadReads)
{
    repeat([](Subscribed& subscribed) {
        std::thread other([&] {
            Events events;
            try {
                for (;;) {
                    subscribed.subscriber->read(1);
                    subscribed.subscriber->loanedRead();
                    subscribed.subscriber->readDataEvents({}, events, 1, 1ms);
                    subscribed.subscriber->poll(1, 1ms);
                }
            } catch (const IllegalStateException&) {
                EXPECT_THROW(subscribed.subscriber->read(0), IllegalStateException);
            }
        });
        subscribed.subscriber->close();
        *subscribed.over = true;
        other.join();
    });
}

INSTANTIATE_TEST_SUITE_P(Inside, CloseStressTest, testing::Values(Path::Participant, Path::Process),
                         testing::PrintToStringParamName());
// Last, as switching to the network is for the rest of the process.
INSTANTIATE_TEST_SUITE_P(Outside, CloseStressTest, testing::Values(Path::Network),
                         testing::PrintToStringParamName());

} // namespace plex::test
