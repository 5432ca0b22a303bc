// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ChildProcess.hpp"
#include "Table.hpp"
#include "WaitFor.hpp"

#include <keyed/Channel.hpp>
#include <plex/Plex.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace plex::test::callbacks
{

using namespace std::chrono_literals;
using keyed::Channel;
using ovra::plex::IllegalStateException;
using ovra::plex::Plex;
using ovra::plex::Uri;
using Event = ovra::plex::ps::DataEvent<Channel>;
using Filter = ovra::plex::ps::DataEventFilter<Channel>;
using InstanceWriter = ovra::plex::ps::InstancePublisher<Channel>;
using Loan = ovra::plex::ps::LoanedDataEntity<Channel>;
using MostRecentReader = ovra::plex::ps::MrvSubscriber<Channel>;
using Reader = ovra::plex::ps::Subscriber<Channel>;
using Subscription = ovra::plex::ps::Subscription;
using Writer = ovra::plex::ps::Publisher<Channel>;

/// The numbers of channels tell values apart by what they are for.
namespace number
{

constexpr int own = 1;      ///< the callback under test hears it
constexpr int another = 2;  ///< another subscription hears it
constexpr int stored = 3;   ///< waits in a subscriber
constexpr int fresh = 4;    ///< a subscription that was made inside the callback hears it
constexpr int witness = 5;  ///< what was published before has been dispatched
constexpr int inside = 6;   ///< was published inside the callback
constexpr int ready = 8;    ///< from another process: no more greetings come
constexpr int greeting = 9; ///< from another process, until somebody hears it

} // namespace number

/// The ways to subscribe.
enum class Kind { Polled, Callback, Notifier };

/// A publisher and a subscriber with a callback, in which something is asked for.
///
/// Threads: the callback runs on any thread while the thread that made the stage waits for it in fire();
/// otherwise only that thread uses it.
class Stage
{
public:
    explicit Stage(Context context);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() = default;

    /// Settings for all that is made.
    static Plex::Properties properties(Thread thread);

    /// Subscribes, and has the callback run once for a value. What is asked for there happens the first time
    /// only.
    /// @returns what it threw, as "class: text"; empty when it threw nothing.
    std::string fire(std::function<void()> ask);

    /// Notes what is wrong.
    void expect(bool condition, const std::string& what);

    Kind kind() const;

    std::unique_ptr<Writer> makeWriter() const { return plex->createPublisher<Channel>(uri); }

    std::unique_ptr<Reader> makeReader() const { return plex->createSubscriber<Channel>(uri); }

    /// A publisher of one instance of the topic.
    static std::unique_ptr<InstanceWriter> makeInstanceWriter(Writer& parent, int number);

    /// The publisher of the value. It is in this process.
    InstanceWriter& source() const { return instancePublisher ? *instancePublisher : *publisher; }

    static void publish(InstanceWriter& writer, int number);

    /// Publishes with a publisher that nothing is asked of.
    void send(int number) const { publish(*tester, number); }

    /// Subscribes to a channel with a callback that counts in `heard`.
    std::unique_ptr<Subscription> subscribe(Reader& reader, Kind kind, int number);

    /// Waits until all that was published before has been dispatched to a subscriber's callbacks, polled ones
    /// too.
    void settle(Reader& reader);

    /// Checks that a value for a subscription of the reader, of the kind given, makes `heard` count exactly
    /// one more.
    void expectHeardOnce(Reader& reader, int number, Kind by);

    /// Checks that the callback runs once more when something has happened.
    void expectCalledBy(const std::function<void()>& happen);

    /// Checks that it does not run for a further value.
    void expectNoCall();

    /// How many values of a channel wait in a subscriber, which they leave.
    static int take(Reader& reader, int number);

    const Context context;
    const Uri uri;
    const Uri elsewhere; ///< of another topic
    std::atomic<int> calls = 0;
    std::atomic<int> heard = 0;
    std::vector<std::string> complaints;
    std::thread::id callbackThread; ///< of the first call

    std::shared_ptr<Plex> plex;
    std::unique_ptr<Writer> publisher; ///< of the value; for instances the one that made the next
    std::unique_ptr<InstanceWriter> instancePublisher;
    std::unique_ptr<Writer> tester;
    std::unique_ptr<Reader> subscriber;
    std::unique_ptr<Subscription> subscription;

    /// What operations need or make.
    std::shared_ptr<Plex> otherPlex;
    std::unique_ptr<Writer> otherPublisher;
    std::unique_ptr<InstanceWriter> otherInstance;
    std::unique_ptr<Reader> other;
    std::unique_ptr<Subscription> extra; ///< of the subscriber or of the other one
    std::unique_ptr<MostRecentReader> mostRecent;
    std::shared_ptr<Loan> loan;
    int noted = 0;

private:
    void meetPeer();
    void subscribeOwn(std::function<void()> ask);
    void onCallback(const std::function<void()>& ask);
    void provoke();
    void pollOwn();

    std::optional<ChildProcess> peer_;
    std::string thrown_;
    std::atomic<bool> asked_ = false;
};

/// What a process does that publishes for another one: greets until it is told numbers on its standard input,
/// each of which it publishes.
void runPeer(const std::string& uri);

} // namespace plex::test::callbacks
