// SPDX-License-Identifier: Apache-2.0
#include "Cases.hpp"

#include <thread>

namespace plex::test::stress
{

namespace
{

using Kind = Watched::Kind;
constexpr Kind allKinds[] = {Kind::Polled, Kind::Callback, Kind::Notifier};

bool maybe(Random& random)
{
    return random() % 2 == 0;
}

void end(Watched& watched, Random& random)
{
    if (maybe(random)) {
        watched.close();
    } else {
        watched.drop();
    }
}

/// Waits until a value has been heard.
template <class Condition>
void await(Run& run, Condition heard)
{
    if (!waitFor(heard, soon)) {
        run.find("a subscription does not hear what is published");
    }
}

/// One subscription after the other, of any kind, each of which hears every value of its time.
void churnOn(Run& run, Reader& reader, std::uint32_t use)
{
    auto random = run.random(use);
    Ear ear(run);
    while (run.goesOn()) {
        const Kind kind = allKinds[random() % 3];
        ear.restart();
        Watched watched(run, reader, kind, Filter(), [&](const AltAz& value) { ear.hear(value); });
        if (maybe(random)) {
            await(run, [&] {
                if (kind == Kind::Polled) {
                    reader.poll(1, 1ms);
                }
                return watched.calls() > 0;
            });
        }
        end(watched, random);
        reader.read(0); // what has come meanwhile would overflow it in the end
        run.endRound();
    }
}

/// Subscriptions of one subscriber on several threads.
void churnBeside(Run& run, Reader& reader, InstanceEvent event, std::uint32_t use)
{
    auto random = run.random(use);
    while (run.goesOn()) {
        const Kind kind = allKinds[random() % 3];
        Watched watched(run, reader, kind, Filter(InstanceState::Any, {event}), nullptr);
        if (kind == Kind::Polled) {
            reader.poll(1, 1ms);
        }
        end(watched, random);
        reader.read(0);
        run.endRound();
    }
}

} // namespace

void churnSubscriptions(Run& run)
{
    const auto plex = run.makePlex();
    const auto first = plex->createSubscriber<AltAz>(run.uri());
    const auto second = plex->createSubscriber<AltAz>(run.uri());
    const auto shared = plex->createSubscriber<AltAz>(run.uri());
    const Traffic traffic(run, plex->createPublisher<AltAz>(run.uri()), 1);
    run.together({[&] { churnOn(run, *first, 1); }, [&] { churnOn(run, *second, 2); },
                  [&] { churnBeside(run, *shared, InstanceEvent::New, 3); },
                  [&] {
                      churnBeside(run, *shared, InstanceEvent::Update, 4);
                  }});
}

namespace
{

/// A subscriber with a callback and a notifier.
struct Subscribed {
    Subscribed(Run& run, Plex& plex)
        : reader(plex.createSubscriber<AltAz>(run.uri()))
        , callback(run, *reader, Kind::Callback, Filter(InstanceState::Any, {InstanceEvent::Update}),
                   [&run](const AltAz&) { ++run.values; })
        , notifier(run, *reader, Kind::Notifier, Filter(InstanceState::Any, {InstanceEvent::New}), nullptr)
    {
    }

    std::unique_ptr<Reader> reader;
    Watched callback;
    Watched notifier;
};

void closeReaderFirst(Subscribed& subscribed)
{
    subscribed.reader->close();
}

void dropReaderFirst(Subscribed& subscribed)
{
    subscribed.reader.reset();
}

void closeSubscriptionsFirst(Subscribed& subscribed)
{
    subscribed.callback.close();
    subscribed.notifier.close();
    subscribed.reader->close();
}

void closeOnTwoThreads(Subscribed& subscribed)
{
    std::thread other([&] { subscribed.reader->close(); });
    subscribed.callback.drop();
    subscribed.reader->close();
    other.join();
}

void closeWithLoanOut(Subscribed& subscribed)
{
    const auto loan = subscribed.reader->loanedRead();
    subscribed.reader->close();
    if (loan) {
        loan->getData();
    }
}

/// Closes it while another thread reads in several ways.
void closeInUse(Subscribed& subscribed)
{
    std::thread other([&] {
        std::vector<std::shared_ptr<Event>> events;
        try {
            for (;;) {
                subscribed.reader->read(1);
                subscribed.reader->loanedRead();
                subscribed.reader->readDataEvents(Filter(), events, 1, 1ms);
                subscribed.reader->poll(1, 1ms);
            }
        } catch (const IllegalStateException&) { // NOLINT(bugprone-empty-catch): it is closed, as it should
        }
    });
    subscribed.reader->close();
    other.join();
}

constexpr void (*waysToEnd[])(Subscribed&) = {closeReaderFirst,  dropReaderFirst,  closeSubscriptionsFirst,
                                              closeOnTwoThreads, closeWithLoanOut, closeInUse};

void churnSubscriber(Run& run, Plex& plex, std::uint32_t use)
{
    auto random = run.random(use);
    while (run.goesOn()) {
        Subscribed subscribed(run, plex);
        if (maybe(random)) {
            await(run, [&] { return subscribed.callback.calls() + subscribed.notifier.calls() > 0; });
        }
        waysToEnd[random() % std::size(waysToEnd)](subscribed);
        run.endRound();
    }
}

} // namespace

void churnSubscribers(Run& run)
{
    const auto plex = run.makePlainPlex();
    const Traffic traffic(run, plex->createPublisher<AltAz>(run.uri()), 1);
    run.together({[&] { churnSubscriber(run, *plex, 1); },
                  [&] {
                      churnSubscriber(run, *plex, 2);
                  }});
}

namespace
{

/// The life of an entity that is to be closed at some age.
void live(Random& random)
{
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
}

template <class Entity>
void end(std::unique_ptr<Entity>& entity, Random& random)
{
    if (maybe(random)) {
        entity->close();
    }
    entity.reset();
}

void publishAWhile(Plex& plex, const Uri& uri, Random& random)
{
    auto publisher = plex.createPublisher<AltAz>(uri);
    for (auto left = random() % 4; left > 0; --left) {
        publisher->publish(*numbered(plex, 1, 1), 0ms);
    }
    live(random);
    end(publisher, random);
}

void subscribeAWhile(Run& run, Plex& plex, const Uri& uri, Random& random)
{
    auto subscriber = plex.createSubscriber<AltAz>(uri);
    std::unique_ptr<Watched> watched;
    if (maybe(random)) {
        watched = std::make_unique<Watched>(run, *subscriber, allKinds[random() % 3], Filter(),
                                            [&run](const AltAz&) { ++run.values; });
    }
    live(random);
    subscriber->read(0);
    end(subscriber, random);
}

void churnEntity(Run& run, Plex& plex, unsigned topics, std::uint32_t use)
{
    auto random = run.random(use);
    while (run.goesOn()) {
        const Uri uri = run.uri("topic" + std::to_string(random() % topics));
        if (maybe(random)) {
            publishAWhile(plex, uri, random);
        } else {
            subscribeAWhile(run, plex, uri, random);
        }
        run.endRound();
    }
}

/// Publishers and subscribers of several topics on four threads.
void churnEntities(Run& run, unsigned topics)
{
    const auto plex = run.makePlex();
    run.together({[&] { churnEntity(run, *plex, topics, 1); }, [&] { churnEntity(run, *plex, topics, 2); },
                  [&] { churnEntity(run, *plex, topics, 3); },
                  [&] {
                      churnEntity(run, *plex, topics, 4);
                  }});
}

} // namespace

void churnEntitiesOfOneTopic(Run& run)
{
    churnEntities(run, 1);
}

void churnEntitiesOfSeveralTopics(Run& run)
{
    churnEntities(run, 5);
}

namespace
{

void publishUntilClosed(Run& run, Plex& plex, Writer& publisher)
{
    const auto value = numbered(plex, 1, 1);
    try {
        for (;;) {
            run.awaitRoom();
            run.send(publisher, *value, 1);
        }
    } catch (const IllegalStateException&) { // NOLINT(bugprone-empty-catch): it is closed, as it should
    }
}

} // namespace

/// A publisher is closed while two threads publish with it.
void closePublishersInUse(Run& run)
{
    const auto plex = run.makePlex();
    const auto subscriber = plex->createSubscriber<AltAz>(run.uri());
    // Its last values may be called back for when it has gone, and their instance with it.
    const Watched watched(run, *subscriber, Kind::Callback, Filter(InstanceState::Any),
                          [&](const AltAz&) { ++run.values; });
    auto random = run.random(1);
    while (run.goesOn()) {
        const auto publisher = plex->createPublisher<AltAz>(run.uri());
        run.together({[&] { publishUntilClosed(run, *plex, *publisher); },
                      [&] { publishUntilClosed(run, *plex, *publisher); },
                      [&] {
                          live(random);
                          publisher->close();
                      }});
        run.endRound();
    }
    run.awaitAll();
}

/// A subscription is closed when one of many values has been heard: none of the others is heard then.
void closeBeforeBacklog(Run& run)
{
    constexpr long backlog = 200;
    const auto plex = run.makePlex();
    const auto publisher = plex->createPublisher<AltAz>(run.uri());
    while (run.goesOn()) {
        const auto subscriber = plex->createSubscriber<AltAz>(run.uri());
        for (long number = 0; number < backlog; ++number) {
            publisher->publish(*numbered(*plex, 1, number), 0ms);
        }
        Watched watched(run, *subscriber, Kind::Callback, Filter(), [&](const AltAz&) {
            ++run.values;
            std::this_thread::sleep_for(1ms); // the work of a slow callback
        });
        std::thread other([&] { publisher->publish(*numbered(*plex, 1, backlog), 0ms); });
        waitFor([&] { return watched.calls() > 0; }, soon);
        const long before = watched.calls();
        watched.close();
        const long further = watched.calls() - before;
        if (further > backlog / 4) {
            run.find("close() of a subscription waited for " + std::to_string(further) +
                     " further callbacks");
        }
        other.join();
        run.endRound();
    }
}

} // namespace plex::test::stress
