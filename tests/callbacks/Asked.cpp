// SPDX-License-Identifier: Apache-2.0
#include "Asked.hpp"

#include <algorithm>
#include <stdexcept>

namespace plex::test::callbacks
{

namespace
{

void nothing(Stage& /*s*/) {}

/// Whether an operation is refused since its object is closed.
template <class Operation>
bool isClosed(Operation operation)
{
    try {
        operation();
        return false;
    } catch (const IllegalStateException&) {
        return true;
    }
}

bool isClosed(InstanceWriter& writer, int number)
{
    return isClosed([&] { Stage::publish(writer, number); });
}

// --- Subscriptions -----------------------------------------------------------------------------------------

template <Kind kind>
void subscribeInside(Stage& s)
{
    s.extra = s.subscribe(*s.subscriber, kind, number::fresh);
}

template <Kind kind>
void expectItHears(Stage& s)
{
    if (kind == Kind::Polled) {
        s.subscription.reset(); // an asynchronous callback would take what is to be polled
    }
    s.expectHeardOnce(*s.subscriber, number::fresh, kind);
}

void closeOwnSubscription(Stage& s)
{
    s.subscription->close();
}

void dropOwnSubscription(Stage& s)
{
    s.subscription.reset();
}

void replaceOwnSubscription(Stage& s)
{
    s.subscription->close();
    s.extra = s.subscribe(*s.subscriber, s.kind(), number::own);
}

void expectOwnSubscriptionEnded(Stage& s)
{
    s.expectNoCall();
}

void expectOwnSubscriptionReplaced(Stage& s)
{
    s.settle(*s.subscriber);
    s.expect(s.heard == 0, "the new subscription hears the value for which its filter was still in use");
    s.expectHeardOnce(*s.subscriber, number::own, s.kind());
    s.expect(s.calls == 1, "the subscription that has ended hears on");
}

template <Kind kind>
void prepareAnotherSubscription(Stage& s)
{
    s.extra = s.subscribe(*s.subscriber, kind, number::another);
}

void closeExtra(Stage& s)
{
    s.extra->close();
    s.noted = s.heard;
}

void dropExtra(Stage& s)
{
    s.extra.reset();
    s.noted = s.heard;
}

/// Checks that a subscription has ended: no callback starts after close() has returned.
void expectExtraEnded(Stage& s, Reader& reader, int number)
{
    s.send(number);
    s.settle(reader);
    s.expect(s.heard == s.noted, "a callback starts after its subscription was closed");
}

void expectAnotherEnded(Stage& s)
{
    expectExtraEnded(s, *s.subscriber, number::another);
}

/// A subscription of another subscriber for the very value that the callback hears.
void prepareForeignSubscription(Stage& s)
{
    s.other = s.makeReader();
    s.extra = s.subscribe(*s.other, Kind::Callback, number::own);
}

void expectForeignEnded(Stage& s)
{
    expectExtraEnded(s, *s.other, number::own);
}

// --- Polling, reading, loans -------------------------------------------------------------------------------

void pollOwn(Stage& s)
{
    s.subscriber->poll(0, 10ms);
}

void preparePolledOther(Stage& s)
{
    s.other = s.makeReader();
    s.extra = s.subscribe(*s.other, Kind::Polled, number::stored);
    s.send(number::stored);
}

void pollOther(Stage& s)
{
    s.other->poll(0, 10ms);
    s.expect(s.heard == 1,
             "poll() runs the callback of another subscriber " + std::to_string(s.heard) + " times");
}

void prepareOther(Stage& s)
{
    s.other = s.makeReader();
    s.send(number::stored);
}

/// A value that lies beside the one which the callback is for.
void prepareOwn(Stage& s)
{
    s.send(number::stored);
}

void readOwn(Stage& s)
{
    const auto values = s.subscriber->read(0);
    s.expect(s.kind() != Kind::Notifier || !values.empty(), "a value can not be read");
}

void readOther(Stage& s)
{
    s.expect(Stage::take(*s.other, number::stored) == 1, "a value of another subscriber can not be read");
}

/// What a notifier was told of counts as seen, so there may be none.
void readEventsOwn(Stage& s)
{
    std::vector<std::shared_ptr<Event>> events;
    s.subscriber->readDataEvents(Filter(), events, 1, 10ms);
}

void readEventsOther(Stage& s)
{
    std::vector<std::shared_ptr<Event>> events;
    s.expect(s.other->readDataEvents(Filter(), events, 1, 1000ms) == 1,
             "an event of another subscriber is not there");
}

void prepareMostRecent(Stage& s)
{
    s.mostRecent = s.plex->createMrvSubscriber<Channel>(s.uri);
    s.send(number::stored);
}

void readMostRecent(Stage& s)
{
    s.expect(!s.mostRecent->readMostRecent(0ms).empty(), "there is no most recent value");
}

void loanOwn(Stage& s)
{
    s.loan = s.subscriber->loanedRead();
    s.expect(s.kind() != Kind::Notifier || s.loan != nullptr, "a value can not be had on loan");
}

void loanOther(Stage& s)
{
    s.loan = s.other->loanedRead();
    s.expect(s.loan != nullptr, "a value of another subscriber can not be had on loan");
}

void giveBackLoan(Stage& s)
{
    if (s.loan) {
        s.expect(s.loan->getData().getNumber() != 0, "the value on loan is gone");
        s.loan->close();
    }
}

/// A loan that is all that is left of a subscriber.
void prepareLastLoan(Stage& s)
{
    prepareOther(s);
    s.loan = s.other->loanedRead();
    s.other.reset();
}

void returnLastLoan(Stage& s)
{
    s.loan.reset();
}

// --- Publishing --------------------------------------------------------------------------------------------

void preparePublishing(Stage& s)
{
    s.other = s.makeReader();
    s.otherPublisher = s.makeWriter();
}

void preparePublishingOfInstance(Stage& s)
{
    preparePublishing(s);
    s.otherInstance = Stage::makeInstanceWriter(*s.otherPublisher, number::inside);
}

void preparePublishingElsewhere(Stage& s)
{
    s.other = s.plex->createSubscriber<Channel>(s.elsewhere);
    s.otherPublisher = s.plex->createPublisher<Channel>(s.elsewhere);
}

void preparePublishingOfInstanceElsewhere(Stage& s)
{
    preparePublishingElsewhere(s);
    s.otherInstance = Stage::makeInstanceWriter(*s.otherPublisher, number::inside);
}

void publishInside(Stage& s)
{
    Stage::publish(*s.otherPublisher, number::inside);
}

void publishOfInstanceInside(Stage& s)
{
    Stage::publish(*s.otherInstance, number::inside);
}

void expectPublishedOnce(Stage& s)
{
    const int received = Stage::take(*s.other, number::inside);
    s.expect(received == 1, "what was published inside has arrived " + std::to_string(received) + " times");
}

/// The callback hears what its own publisher publishes inside it, when it has returned.
void publishWithSame(Stage& s)
{
    Stage::publish(s.source(), number::own);
}

void expectCalledTwice(Stage& s)
{
    s.expect(waitFor([&] { return s.calls >= 2; }, 5s), "what was published inside is not heard");
    s.settle(*s.subscriber);
    s.expect(s.calls == 2, "what was published inside is heard more than once");
}

// --- Closing and dropping entities -------------------------------------------------------------------------

void closeSource(Stage& s)
{
    s.source().close();
}

void expectSourceClosed(Stage& s)
{
    s.expect(isClosed(s.source(), number::own), "the publisher that was closed publishes on");
    s.expectCalledBy([&] { s.send(number::own); });
}

void dropSource(Stage& s)
{
    if (s.instancePublisher) {
        s.instancePublisher.reset();
    } else {
        s.publisher.reset();
    }
}

void expectCalledAgain(Stage& s)
{
    s.expectCalledBy([&] { s.send(number::own); });
}

void closeParent(Stage& s)
{
    s.publisher->close();
}

void dropParent(Stage& s)
{
    s.publisher.reset();
}

void expectCalledBySource(Stage& s)
{
    s.expectCalledBy([&] { Stage::publish(s.source(), number::own); });
}

void prepareOtherPublisher(Stage& s)
{
    s.otherPublisher = s.makeWriter();
    Stage::publish(*s.otherPublisher, number::another);
}

void prepareOtherInstance(Stage& s)
{
    s.otherInstance = Stage::makeInstanceWriter(*s.tester, number::another);
    Stage::publish(*s.otherInstance, number::another);
}

void closeOtherPublisher(Stage& s)
{
    s.otherPublisher->close();
}

void dropOtherPublisher(Stage& s)
{
    s.otherPublisher.reset();
}

void expectOtherPublisherClosed(Stage& s)
{
    s.expect(isClosed(*s.otherPublisher, number::another), "the publisher that was closed publishes on");
    expectCalledAgain(s);
}

void closeOtherInstance(Stage& s)
{
    s.otherInstance->close();
}

void dropOtherInstance(Stage& s)
{
    s.otherInstance.reset();
}

void expectOtherInstanceClosed(Stage& s)
{
    s.expect(isClosed(*s.otherInstance, number::another), "the publisher that was closed publishes on");
    expectCalledAgain(s);
}

void closeSubscriber(Stage& s)
{
    s.subscriber->close();
}

void expectSubscriberClosed(Stage& s)
{
    s.expect(isClosed([&] { s.subscriber->read(0); }), "the subscriber that was closed is read on");
    s.send(number::own);
}

void dropSubscriber(Stage& s)
{
    s.subscriber.reset();
}

/// Its subscription keeps what it needs of a subscriber that was dropped, but nobody can poll any more.
void expectSubscriptionOutlivesSubscriber(Stage& s)
{
    if (s.kind() != Kind::Polled) {
        expectCalledAgain(s);
    }
}

void closeOther(Stage& s)
{
    s.other->close();
    s.noted = s.heard;
}

void expectOtherClosed(Stage& s)
{
    s.expect(isClosed([&] { s.other->read(0); }), "the subscriber that was closed is read on");
    expectExtraEnded(s, *s.subscriber, number::own);
}

void dropOther(Stage& s)
{
    s.extra.reset();
    s.other.reset();
    s.noted = s.heard;
}

void expectOtherGone(Stage& s)
{
    expectExtraEnded(s, *s.subscriber, number::own);
}

void closeMostRecent(Stage& s)
{
    s.mostRecent->close();
}

void expectMostRecentClosed(Stage& s)
{
    s.expect(isClosed([&] { s.mostRecent->readMostRecent(0ms); }),
             "the subscriber that was closed is read on");
}

void dropMostRecent(Stage& s)
{
    s.mostRecent.reset();
}

void dropPlex(Stage& s)
{
    s.plex.reset();
}

void dropEverything(Stage& s)
{
    s.subscription.reset();
    s.subscriber.reset();
    s.instancePublisher.reset();
    s.publisher.reset();
    s.tester.reset();
    s.plex.reset();
}

// --- Making entities ---------------------------------------------------------------------------------------

void makePublisher(Stage& s)
{
    s.otherPublisher = s.makeWriter();
}

void expectCalledByOtherPublisher(Stage& s)
{
    s.expectCalledBy([&] { Stage::publish(*s.otherPublisher, number::own); });
}

void makeSubscriber(Stage& s)
{
    s.other = s.makeReader();
}

void expectOtherReceives(Stage& s)
{
    s.send(number::inside);
    expectPublishedOnce(s);
}

void makeMostRecent(Stage& s)
{
    s.mostRecent = s.plex->createMrvSubscriber<Channel>(s.uri);
}

void expectMostRecentReceives(Stage& s)
{
    s.send(number::inside);
    readMostRecent(s);
}

void makeInstancePublisher(Stage& s)
{
    s.otherInstance = Stage::makeInstanceWriter(*s.tester, number::own);
}

void expectCalledByOtherInstance(Stage& s)
{
    s.expectCalledBy([&] { Stage::publish(*s.otherInstance, number::own); });
}

/// A participant, too.
void makeWithNewPlex(Stage& s)
{
    s.otherPlex = Plex::create(Stage::properties(s.context.thread));
    s.otherPublisher = s.otherPlex->createPublisher<Channel>(s.uri);
}

void expectOtherPublishes(Stage& s)
{
    Stage::publish(*s.otherPublisher, number::inside);
}

// --- What callbacks rest on --------------------------------------------------------------------------------

/// Polled callbacks run on the thread that polls, others on the one that publishes, on one of DDS or on one
/// of their own.
void expectItsThread(Stage& s)
{
    const bool here = s.callbackThread == std::this_thread::get_id();
    const Column column = columnOf(s.context);
    s.expect(here == (column == Column::Polled || column == Column::SameProcess),
             "it runs on another thread");
}

void prepareListener(Stage& s)
{
    preparePublishing(s);
    s.extra = s.subscribe(*s.other, Kind::Callback, number::inside);
}

/// Others hear what is published inside a callback when that has returned.
void expectOtherHearsLater(Stage& s)
{
    publishInside(s);
    s.expect(s.heard == 0,
             "another subscriber hears a value before the callback that publishes it has returned");
}

void expectOtherHeard(Stage& s)
{
    s.expect(waitFor([&] { return s.heard > 0; }, 5s), "another subscriber does not hear the value");
    s.settle(*s.other);
    s.expect(s.heard == 1, "another subscriber hears the value more than once");
}

// -----------------------------------------------------------------------------------------------------------

constexpr auto always = Needs::Nothing;
constexpr auto polled = Kind::Polled;
constexpr auto callback = Kind::Callback;
constexpr auto notifier = Kind::Notifier;

constexpr Asked all[] = {
    {"subscribe_polled", always, nothing, subscribeInside<polled>, expectItHears<polled>},
    {"subscribe_callback", always, nothing, subscribeInside<callback>, expectItHears<callback>},
    {"subscribe_notifier", always, nothing, subscribeInside<notifier>, expectItHears<notifier>},
    {"close_own_subscription", always, nothing, closeOwnSubscription, expectOwnSubscriptionEnded},
    {"drop_own_subscription", always, nothing, dropOwnSubscription, expectOwnSubscriptionEnded},
    {"replace_own_subscription", always, nothing, replaceOwnSubscription, expectOwnSubscriptionReplaced},
    {"close_polled_subscription", always, prepareAnotherSubscription<polled>, closeExtra, expectAnotherEnded},
    {"drop_polled_subscription", always, prepareAnotherSubscription<polled>, dropExtra, expectAnotherEnded},
    {"close_callback_subscription", always, prepareAnotherSubscription<callback>, closeExtra,
     expectAnotherEnded},
    {"drop_callback_subscription", always, prepareAnotherSubscription<callback>, dropExtra,
     expectAnotherEnded},
    {"close_notifier_subscription", always, prepareAnotherSubscription<notifier>, closeExtra,
     expectAnotherEnded},
    {"drop_notifier_subscription", always, prepareAnotherSubscription<notifier>, dropExtra,
     expectAnotherEnded},
    {"close_foreign_subscription", always, prepareForeignSubscription, closeExtra, expectForeignEnded},
    {"drop_foreign_subscription", always, prepareForeignSubscription, dropExtra, expectForeignEnded},
    {"poll_own", always, nothing, pollOwn, expectCalledAgain},
    {"poll_other", always, preparePolledOther, pollOther, expectCalledAgain},
    {"read_own", always, prepareOwn, readOwn, expectCalledAgain},
    {"read_other", always, prepareOther, readOther, expectCalledAgain},
    {"read_events_own", always, prepareOwn, readEventsOwn, expectCalledAgain},
    {"read_events_other", always, prepareOther, readEventsOther, expectCalledAgain},
    {"read_most_recent", always, prepareMostRecent, readMostRecent, expectCalledAgain},
    {"loan_own", always, prepareOwn, loanOwn, giveBackLoan},
    {"loan_other", always, prepareOther, loanOther, giveBackLoan},
    {"return_last_loan", always, prepareLastLoan, returnLastLoan, expectCalledAgain},
    {"publish_same_topic", always, preparePublishing, publishInside, expectPublishedOnce},
    {"publish_same_topic_instance", always, preparePublishingOfInstance, publishOfInstanceInside,
     expectPublishedOnce},
    {"publish_same_publisher", Needs::LocalPublisher, nothing, publishWithSame, expectCalledTwice},
    {"publish_other_topic", always, preparePublishingElsewhere, publishInside, expectPublishedOnce},
    {"publish_other_topic_instance", always, preparePublishingOfInstanceElsewhere, publishOfInstanceInside,
     expectPublishedOnce},
    {"close_own_publisher", Needs::LocalPublisher, nothing, closeSource, expectSourceClosed},
    {"drop_own_publisher", Needs::LocalPublisher, nothing, dropSource, expectCalledAgain},
    {"close_parent_publisher", Needs::InstancePublisher, nothing, closeParent, expectSourceClosed},
    {"drop_parent_publisher", Needs::InstancePublisher, nothing, dropParent, expectCalledBySource},
    {"close_other_publisher", always, prepareOtherPublisher, closeOtherPublisher, expectOtherPublisherClosed},
    {"drop_other_publisher", always, prepareOtherPublisher, dropOtherPublisher, expectCalledAgain},
    {"close_other_instance_publisher", always, prepareOtherInstance, closeOtherInstance,
     expectOtherInstanceClosed},
    {"drop_other_instance_publisher", always, prepareOtherInstance, dropOtherInstance, expectCalledAgain},
    {"close_own_subscriber", always, nothing, closeSubscriber, expectSubscriberClosed},
    {"drop_own_subscriber", always, nothing, dropSubscriber, expectSubscriptionOutlivesSubscriber},
    {"close_other_subscriber", always, prepareForeignSubscription, closeOther, expectOtherClosed},
    {"drop_other_subscriber", always, prepareForeignSubscription, dropOther, expectOtherGone},
    {"close_most_recent", always, prepareMostRecent, closeMostRecent, expectMostRecentClosed},
    {"drop_most_recent", always, prepareMostRecent, dropMostRecent, expectCalledAgain},
    {"drop_plex", always, nothing, dropPlex, expectCalledAgain},
    {"drop_everything", always, nothing, dropEverything, nothing},
    {"make_publisher", always, nothing, makePublisher, expectCalledByOtherPublisher},
    {"make_subscriber", always, nothing, makeSubscriber, expectOtherReceives},
    {"make_most_recent", always, nothing, makeMostRecent, expectMostRecentReceives},
    {"make_instance_publisher", always, nothing, makeInstancePublisher, expectCalledByOtherInstance},
    {"make_with_new_plex", always, nothing, makeWithNewPlex, expectOtherPublishes},
    {"look_at_thread", always, nothing, nothing, expectItsThread},
    {"look_at_order", Needs::LocalAsync, prepareListener, expectOtherHearsLater, expectOtherHeard},
};

} // namespace

const Asked& askedOf(std::string_view word)
{
    const auto* const found =
        std::ranges::find_if(all, [&](const Asked& asked) { return asked.word == word; });
    if (found == std::end(all)) {
        throw std::out_of_range("nothing to ask for is called " + std::string(word));
    }
    return *found;
}

} // namespace plex::test::callbacks
