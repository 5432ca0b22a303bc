// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ChildProcess.hpp"
#include "WaitFor.hpp"
#include "Watchdog.hpp"

#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace plex::test::stress
{

using namespace std::chrono_literals;
using ovra::plex::IllegalStateException;
using ovra::plex::Plex;
using ovra::plex::PlexException;
using ovra::plex::Uri;
using ovra::plex::ps::InstanceEvent;
using ovra::plex::ps::InstanceState;
using ovra::plex::ps::Subscription;
using vexstubif::AltAz;
using Event = ovra::plex::ps::DataEvent<AltAz>;
using Filter = ovra::plex::ps::DataEventFilter<AltAz>;
using Loan = ovra::plex::ps::LoanedDataEntity<AltAz>;
using MostRecentReader = ovra::plex::ps::MrvSubscriber<AltAz>;
using Reader = ovra::plex::ps::Subscriber<AltAz>;
using Random = std::mt19937;
using Writer = ovra::plex::ps::Publisher<AltAz>;

/// How long something may take that must happen.
inline constexpr std::chrono::seconds soon{10};

/// How a case is to run.
struct Order {
    std::string name;
    bool ownThread; ///< property "dds.callback.thread"
    std::chrono::milliseconds time;
    std::uint32_t seed;
};

/// One run of a case: its settings, its figures, and what it has found. Rounds that take too long end the
/// process.
///
/// Threads: any.
class Run
{
public:
    explicit Run(Order order);
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() = default;

    /// Whether there is time for another round. It begins with the first.
    bool goesOn();

    /// Counts a round.
    void endRound();

    /// Numbers for one of several uses, the same for the same seed.
    Random random(std::uint32_t use) const { return Random(order.seed * 31 + use); }

    /// With reliable delivery.
    std::shared_ptr<Plex> makePlex() const;

    /// Without profiles: a subscriber gets the first value at once, not with the next heartbeat.
    std::shared_ptr<Plex> makePlainPlex() const;

    Uri uri(const std::string& topic = "topic") const;

    /// Runs functions on a thread each until all have ended. What they throw is a finding.
    void together(const std::vector<std::function<void()>>& functions);

    /// Notes something that must not be.
    void find(const std::string& what);

    /// Prints the figures. @returns whether nothing was found.
    bool report() const;

    /// Publishes a value that so many callbacks or reads must give, counted in `values`.
    void send(Writer& writer, const AltAz& value, int subscribers);

    /// Waits until what was sent has been heard to a few hundred values, so that no subscriber overflows.
    void awaitRoom();

    /// Waits until what was sent has been heard. Counts what is lost.
    void awaitAll();

    const Order order;
    std::atomic<long> values = 0; ///< that were heard
    std::atomic<long> lost = 0;
    std::atomic<long> twice = 0; ///< or out of order
    std::atomic<long> late = 0;  ///< callbacks that started after their subscription had been closed

private:
    std::shared_ptr<Plex> makePlex(Plex::Properties properties) const;

    std::once_flag begun_;
    std::chrono::steady_clock::time_point end_;
    std::atomic<long> rounds_ = 0;
    std::atomic<long> sent_ = 0;
    std::mutex mutex_;
    std::vector<std::string> findings_;
    Watchdog watchdog_;
};

/// Values say who published them, and which number they have of that one's.
std::unique_ptr<AltAz> numbered(Plex& plex, int source, long number);

/// One who hears values of several sources, each of which counts up from any number.
///
/// Threads: any.
class Ear
{
public:
    explicit Ear(Run& run) : run_(run) {}

    void hear(const AltAz& value);

    /// How far a source has counted; 0 when it was not heard.
    long count(int source) const;

    /// Whether the last value of a source was heard.
    bool hasHeardEnd(int source) const;

    /// Forgets all sources, as when values were given to others meanwhile.
    void restart();

private:
    /// The number of the last value of a source, if any was heard.
    std::optional<long> last(int source) const;

    Run& run_;
    mutable std::mutex mutex_;
    std::map<int, long> last_;
};

/// A subscription that notices when its callback starts although it is over.
class Watched
{
public:
    /// The ways to subscribe.
    enum class Kind { Polled, Callback, Notifier };

    /// @param heard is called with each value; a notifier takes them. May be empty.
    Watched(Run& run, Reader& reader, Kind kind, const Filter& filter,
            std::function<void(const AltAz&)> heard);
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

    ~Watched() { drop(); }

    void close();
    void drop();

    /// How often the callback has run.
    long calls() const { return state_->calls; }

private:
    /// Outlives the subscription, so that a late callback is counted and does not crash.
    struct State {
        std::atomic<bool> over = false;
        std::atomic<long> calls = 0;
    };

    const std::shared_ptr<State> state_ = std::make_shared<State>();
    std::unique_ptr<Subscription> subscription_;
};

/// Publishes counted values on a thread while it lives, at a pace at which no subscriber overflows in a
/// round.
class Traffic
{
public:
    /// @param mayGoOn is asked before each value, with its number; empty for always.
    Traffic(Run& run, std::unique_ptr<Writer> publisher, int source, std::function<bool(long)> mayGoOn = {});
    Traffic(const Traffic&) = delete;
    Traffic& operator=(const Traffic&) = delete;
    ~Traffic();

private:
    void publish();

    Run& run_;
    const std::unique_ptr<Writer> publisher_;
    const int source_;
    const std::function<bool(long)> mayGoOn_;
    std::atomic<bool> stopped_ = false;
    std::thread thread_;
};

/// A publisher in another process. It counts up while it lives, and ends with a value that has the negative
/// of how many there were.
class RemotePublisher
{
public:
    /// How it reaches others. One that is to be killed has UDP only: what Fast DDS shares with a process that
    /// is killed can hold up the others for seconds, which is nothing that this program could find.
    enum class Over { SharedMemory, Udp };

    RemotePublisher(const Uri& uri, int source, Over over = Over::SharedMemory);

    /// Has it close its publisher and end. @returns whether it ended well.
    bool finish();

    /// Ends it without a chance to tidy up.
    void kill();

private:
    ChildProcess process_;
};

/// What the other process does.
void runRemotePublisher(const std::string& uri, int source, const std::string& profiles);

} // namespace plex::test::stress
