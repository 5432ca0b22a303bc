// SPDX-License-Identifier: Apache-2.0
#include "Cases.hpp"

#include <algorithm>
#include <array>
#include <thread>

namespace plex::test::stress
{

namespace
{

using Kind = Watched::Kind;

void readValues(Reader& reader, Ear& ear)
{
    for (const auto& value : reader.read(0)) {
        ear.hear(*value);
    }
}

void readLoans(Reader& reader, Ear& ear)
{
    while (const auto loan = reader.loanedRead()) {
        ear.hear(loan->getData());
    }
}

void readEvents(Reader& reader, Ear& ear)
{
    std::vector<std::shared_ptr<Event>> events;
    reader.readDataEvents(Filter(), events, 0, 0ms);
    reader.readDataEvents(Filter(), events, 3, 1ms);
    for (const auto& event : events) {
        ear.hear(*event->getData());
    }
}

void poll(Reader& reader, Ear& /*ear*/)
{
    reader.poll(0, 1ms);
}

/// A subscriber that hears in one way, on a thread of its own unless DDS calls it.
class Listener
{
public:
    using Look = void (*)(Reader&, Ear&);

    Listener(Run& run, Plex& plex, Look look) : reader_(plex.createSubscriber<AltAz>(run.uri())), ear_(run)
    {
        thread_ = std::jthread([this, look](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                look(*reader_, ear_);
                std::this_thread::sleep_for(100us); // for others to come to their turn
            }
        });
    }

    /// @param look may be null.
    Listener(Run& run, Plex& plex, Kind kind, Look look = nullptr)
        : Listener(run, plex, look != nullptr ? look : rest)
    {
        watched_ = std::make_unique<Watched>(run, *reader_, kind, Filter(),
                                             [this](const AltAz& value) { ear_.hear(value); });
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener() { thread_ = {}; }

    const Ear& ear() const { return ear_; }

private:
    static void rest(Reader& /*reader*/, Ear& /*ear*/) {}

    std::unique_ptr<Reader> reader_;
    Ear ear_;
    std::unique_ptr<Watched> watched_;
    std::jthread thread_;
};

/// Every way to hear values, each with a subscriber of its own.
class Listeners
{
public:
    Listeners(Run& run, Plex& plex)
        : all_{{{run, plex, readValues},
                {run, plex, readLoans},
                {run, plex, readEvents},
                {run, plex, Kind::Polled, poll},
                {run, plex, Kind::Callback},
                {run, plex, Kind::Notifier}}}
    {
    }

    /// How many values of a source all have heard.
    long count(int source) const
    {
        const auto countOf = [&](const Listener& one) {
            return one.ear().count(source);
        };
        return countOf(*std::ranges::min_element(all_, {}, countOf));
    }

    bool haveHeardEnd(int source) const
    {
        return std::ranges::all_of(all_, [&](const Listener& one) { return one.ear().hasHeardEnd(source); });
    }

private:
    std::array<Listener, 6> all_;
};

/// Publishes so that no listener falls far behind.
void publishToAll(Run& run, Plex& plex, const Listeners& listeners, int source)
{
    constexpr long window = 500;
    const auto publisher = plex.createPublisher<AltAz>(run.uri());
    long number = 0;
    for (; run.goesOn(); ++number) {
        if (!waitFor([&] { return number - listeners.count(source) < window; }, soon)) {
            run.find("a subscriber got stuck");
            break;
        }
        publisher->publish(*numbered(plex, source, number), 0ms);
        run.endRound();
    }
    publisher->publish(*numbered(plex, source, -number), 0ms);
    publisher->close();
}

void expectEnd(Run& run, const Listeners& listeners, int source)
{
    if (!waitFor([&] { return listeners.haveHeardEnd(source); }, soon)) {
        run.find("not all subscribers heard the last value of a publisher that waited for them");
    }
}

} // namespace

/// Values of a publisher of this process and of one of another, past each kind of reader.
void hearEveryValueOnce(Run& run)
{
    const auto plex = run.makePlex();
    const Listeners listeners(run, *plex);
    RemotePublisher remote(run.uri(), 2);
    if (!waitFor([&] { return listeners.count(2) > 0; }, soon)) {
        run.find("the other process is not heard");
    }
    publishToAll(run, *plex, listeners, 1);
    if (!remote.finish()) {
        run.find("the other process did not end well");
    }
    expectEnd(run, listeners, 1);
    expectEnd(run, listeners, 2);
}

namespace
{

/// A publisher of another process, which is heard a while, and then closes or is killed.
void hearOne(Run& run, const Listeners& listeners, int source, Random& random)
{
    const bool isToBeKilled = random() % 2 == 0;
    RemotePublisher remote(run.uri(), source,
                           isToBeKilled ? RemotePublisher::Over::Udp : RemotePublisher::Over::SharedMemory);
    if (!waitFor([&] { return listeners.count(source) > 0; }, soon)) {
        run.find("another process is not heard");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 200)); // its life
    if (isToBeKilled) {
        remote.kill();
        return;
    }
    if (!remote.finish()) {
        run.find("another process did not end well");
    }
    expectEnd(run, listeners, source);
}

} // namespace

void hearProcessesComeAndGo(Run& run)
{
    const auto plex = run.makePlex();
    const Listeners listeners(run, *plex);
    const auto hearSome = [&](int first) {
        auto random = run.random(static_cast<std::uint32_t>(first));
        for (int source = first; run.goesOn(); source += 2) {
            hearOne(run, listeners, source, random);
            run.endRound();
        }
    };
    run.together({[&] { hearSome(1); },
                  [&] {
                      hearSome(2);
                  }});
}

} // namespace plex::test::stress
