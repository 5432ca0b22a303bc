// SPDX-License-Identifier: Apache-2.0
#include "Cases.hpp"

#include <thread>
#include <utility>

namespace plex::test::stress
{

namespace
{

using Kind = Watched::Kind;

/// What no value here passes.
Filter disposed()
{
    return Filter(InstanceState::Disposed);
}

/// Two topics, each with a publisher and a subscriber.
struct Pair {
    explicit Pair(Run& run) : Pair(run, run.makePlex(), nullptr) {}

    /// @param other for the second subscriber and the first publisher; null for the same.
    Pair(Run& run, std::shared_ptr<Plex> one, const std::shared_ptr<Plex>& other)
        : plex(std::move(one))
        , otherPlex(other ? other : plex)
        , firstReader(plex->createSubscriber<AltAz>(run.uri("first")))
        , secondReader(otherPlex->createSubscriber<AltAz>(run.uri("second")))
        , firstWriter(otherPlex->createPublisher<AltAz>(run.uri("first")))
        , secondWriter(plex->createPublisher<AltAz>(run.uri("second")))
    {
    }

    const std::shared_ptr<Plex> plex;
    const std::shared_ptr<Plex> otherPlex;
    const std::unique_ptr<Reader> firstReader;
    const std::unique_ptr<Reader> secondReader;
    const std::unique_ptr<Writer> firstWriter;
    const std::unique_ptr<Writer> secondWriter;
};

/// Publishes while there is time. @param subscribers how many each value has.
void publishOn(Run& run, Plex& plex, Writer& writer, int subscribers = 1)
{
    const auto value = numbered(plex, 1, 0);
    while (run.goesOn()) {
        run.awaitRoom();
        run.send(writer, *value, subscribers);
        run.endRound();
    }
}

/// Publishes on both topics at once, so that the callbacks of both run at once.
void publishOnBoth(Run& run, Pair& pair)
{
    run.together({[&] { publishOn(run, *pair.plex, *pair.firstWriter); },
                  [&] {
                      publishOn(run, *pair.plex, *pair.secondWriter);
                  }});
    run.awaitAll();
}

void readFrom(Run& run, Reader& reader)
{
    run.values += static_cast<long>(reader.read(0).size());
}

/// Each callback reads the other's subscriber.
void readEachOther(Run& run, Pair& pair)
{
    const auto reading = [&](Reader& reader) {
        return [&run, &reader](const AltAz&) {
            readFrom(run, reader);
            ++run.values;
        };
    };
    const Watched first(run, *pair.firstReader, Kind::Callback, Filter(), reading(*pair.secondReader));
    const Watched second(run, *pair.secondReader, Kind::Callback, Filter(), reading(*pair.firstReader));
    publishOnBoth(run, pair);
}

/// Waits until a subscriber of another participant has been found, and until it has nothing left to read of
/// what was published for that.
void meet(Run& run, Plex& plex, Writer& writer, Reader& reader)
{
    const bool met = waitFor(
        [&] {
            writer.publish(*numbered(plex, 1, 0), 0ms);
            return !reader.read(0).empty();
        },
        soon);
    if (!met) {
        run.find("publisher and subscriber of two participants do not meet");
        return;
    }
    constexpr long last = 1;
    writer.publish(*numbered(plex, 1, last), 0ms);
    waitFor(
        [&] {
            const auto values = reader.read(0);
            return !values.empty() && values.back()->getAz() == static_cast<double>(last);
        },
        soon);
}

} // namespace

void readEachOther(Run& run)
{
    Pair pair(run);
    readEachOther(run, pair);
}

void readEachOtherAcrossParticipants(Run& run)
{
    Pair pair(run, run.makePlex(), run.makePlex());
    meet(run, *pair.plex, *pair.firstWriter, *pair.firstReader);
    meet(run, *pair.plex, *pair.secondWriter, *pair.secondReader);
    readEachOther(run, pair);
}

/// An asynchronous callback changes polled subscriptions of another subscriber, while a polled callback of
/// that one reads and publishes to the topic.
void changePolledWhilePolling(Run& run)
{
    const auto plex = run.makePlex();
    const auto reader = plex->createSubscriber<AltAz>(run.uri());
    const auto pollingReader = plex->createSubscriber<AltAz>(run.uri());
    const auto writer = plex->createPublisher<AltAz>(run.uri());
    const Watched changing(run, *reader, Kind::Callback, Filter(), [&](const AltAz&) {
        Watched(run, *pollingReader, Kind::Polled, disposed(), nullptr).close();
        ++run.values;
    });
    const Watched polled(run, *pollingReader, Kind::Polled, Filter(), [&](const AltAz& value) {
        readFrom(run, *reader);
        if (value.getAlt() == 1) { // not to answers
            run.send(*writer, *numbered(*plex, 2, 0), 2);
        }
        ++run.values;
    });
    std::atomic<bool> published = false;
    const auto poll = [&] {
        while (!published) {
            pollingReader->poll(0, 1ms);
        }
        while (pollingReader->poll(0, 100ms) > 0) { // the rest, and the answers to it
        }
    };
    const auto publish = [&] {
        publishOn(run, *plex, *writer, 2);
        published = true;
    };
    run.together({publish, poll});
    run.awaitAll();
}

/// One callback publishes, the other reads the subscriber of the first.
void publishAndReadBack(Run& run)
{
    Pair pair(run);
    const auto writer = pair.plex->createPublisher<AltAz>(run.uri("second"));
    const Watched first(run, *pair.firstReader, Kind::Callback, Filter(), [&](const AltAz&) {
        run.send(*writer, *numbered(*pair.plex, 2, 0), 1);
        ++run.values;
    });
    const Watched second(run, *pair.secondReader, Kind::Callback, Filter(), [&](const AltAz&) {
        readFrom(run, *pair.firstReader);
        ++run.values;
    });
    publishOnBoth(run, pair);
}

/// Two subscribers of one topic, each of which publishes to it through a publisher of its own.
void publishToOwnTopic(Run& run)
{
    const auto plex = run.makePlex();
    const Uri uri = run.uri();
    const auto firstReader = plex->createSubscriber<AltAz>(uri);
    const auto secondReader = plex->createSubscriber<AltAz>(uri);
    const auto firstInner = plex->createPublisher<AltAz>(uri);
    const auto secondInner = plex->createPublisher<AltAz>(uri);
    const auto answering = [&](Writer& writer) {
        return [&run, &plex, &writer](const AltAz& value) {
            if (value.getAlt() == 1) { // not to answers
                run.send(writer, *numbered(*plex, 2, 0), 2);
            }
            ++run.values;
        };
    };
    const Watched first(run, *firstReader, Kind::Callback, Filter(), answering(*firstInner));
    const Watched second(run, *secondReader, Kind::Callback, Filter(), answering(*secondInner));
    const auto firstWriter = plex->createPublisher<AltAz>(uri);
    const auto secondWriter = plex->createPublisher<AltAz>(uri);
    run.together({[&] { publishOn(run, *plex, *firstWriter, 2); },
                  [&] {
                      publishOn(run, *plex, *secondWriter, 2);
                  }});
    run.awaitAll();
}

/// The callback of each of two topics publishes to the other, a few times round.
void publishInCircles(Run& run)
{
    Pair pair(run);
    const auto passingOn = [&](Writer& writer) {
        return [&run, &pair, &writer](const AltAz& value) {
            if (value.getAlt() < 4) {
                run.send(writer, *numbered(*pair.plex, static_cast<int>(value.getAlt()) + 1, 0), 1);
            }
            ++run.values;
        };
    };
    const auto firstInner = pair.plex->createPublisher<AltAz>(run.uri("first"));
    const auto secondInner = pair.plex->createPublisher<AltAz>(run.uri("second"));
    const Watched first(run, *pair.firstReader, Kind::Callback, Filter(), passingOn(*secondInner));
    const Watched second(run, *pair.secondReader, Kind::Callback, Filter(), passingOn(*firstInner));
    publishOnBoth(run, pair);
}

/// Each callback makes and ends subscriptions of the other's subscriber, of every kind.
void changeEachOther(Run& run)
{
    Pair pair(run);
    const auto changing = [&](Reader& reader) {
        return [&run, &reader](const AltAz&) {
            for (const Kind kind : {Kind::Polled, Kind::Callback, Kind::Notifier}) {
                Watched(run, reader, kind, disposed(), nullptr).close();
            }
            ++run.values;
        };
    };
    const Filter alive(InstanceState::Alive);
    const Watched first(run, *pair.firstReader, Kind::Callback, alive, changing(*pair.secondReader));
    const Watched second(run, *pair.secondReader, Kind::Callback, alive, changing(*pair.firstReader));
    publishOnBoth(run, pair);
}

namespace
{

/// Entities that one thread makes and a callback drops.
class Doomed
{
public:
    Doomed(Run& run, Plex& plex) : run_(run), plex_(plex), random_(run.random(7)) {}

    /// Makes one of any kind, if the last one is gone.
    void make()
    {
        {
            const std::lock_guard lock(mutex_);
            if (entity_) {
                return;
            }
        }
        auto entity = makeAny();
        const std::lock_guard lock(mutex_);
        entity_ = std::move(entity);
    }

    void drop()
    {
        std::shared_ptr<void> entity;
        {
            const std::lock_guard lock(mutex_);
            entity = std::exchange(entity_, nullptr);
        }
        if (entity) {
            entity.reset();
            run_.endRound();
        }
    }

private:
    std::shared_ptr<void> makeAny()
    {
        const Uri uri = run_.uri(random_() % 2 == 0 ? "topic" : "elsewhere");
        switch (random_() % 3) {
        case 0:
            return plex_.createPublisher<AltAz>(uri);
        case 1:
            return plex_.createSubscriber<AltAz>(uri);
        default:
            return plex_.createMrvSubscriber<AltAz>(uri);
        }
    }

    Run& run_;
    Plex& plex_;
    Random random_;
    std::mutex mutex_;
    std::shared_ptr<void> entity_;
};

/// Makes what a callback is to drop, and others beside that.
void dropWhatIsMade(Run& run, Plex& plex, Doomed& doomed)
{
    const auto makeDoomed = [&] {
        while (run.goesOn()) {
            doomed.make();
            std::this_thread::yield();
        }
    };
    const auto makeOthers = [&] {
        while (run.goesOn()) {
            plex.createSubscriber<AltAz>(run.uri());
            plex.createPublisher<AltAz>(run.uri());
        }
    };
    run.together({makeDoomed, makeOthers});
}

} // namespace

/// An asynchronous callback drops entities while other threads make some.
void dropInside(Run& run)
{
    const auto plex = run.makePlex();
    const auto subscriber = plex->createSubscriber<AltAz>(run.uri());
    Doomed doomed(run, *plex);
    const Watched watched(run, *subscriber, Kind::Callback, Filter(), [&](const AltAz&) {
        doomed.drop();
        ++run.values;
    });
    const Traffic traffic(run, plex->createPublisher<AltAz>(run.uri()), 1,
                          [&](long number) { return number - run.values < 100; });
    dropWhatIsMade(run, *plex, doomed);
}

void dropInsideOfRemote(Run& run)
{
    const auto plex = run.makePlex();
    const auto subscriber = plex->createSubscriber<AltAz>(run.uri());
    Doomed doomed(run, *plex);
    const Watched watched(run, *subscriber, Kind::Callback, Filter(), [&](const AltAz&) {
        doomed.drop();
        ++run.values;
    });
    RemotePublisher remote(run.uri(), 1);
    dropWhatIsMade(run, *plex, doomed);
    if (!remote.finish()) {
        run.find("the other process did not end well");
    }
}

} // namespace plex::test::stress
