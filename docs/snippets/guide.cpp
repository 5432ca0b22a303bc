// SPDX-License-Identifier: Apache-2.0
// The examples of docs/guide.md, and a program that runs them and compares what they print.

// [use]
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>
// [/use]

// [status-use]
#include <plex/dds/Status.hpp>
// [/status-use]

// [qos-use]
#include <plex/dds/QosInEffect.hpp>
// [/qos-use]

#include <keyed/Channel.hpp>

// [log-use]
#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>
// [/log-use]

#include <atomic>
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

// [use]

using namespace ovra::plex::ps; // Publisher, Subscriber, DataEvent, DataEventFilter, …
using namespace std::chrono_literals;
using ovra::plex::Plex;
using ovra::plex::Uri;
using vexstubif::AltAz;

// [/use]

namespace
{

/// A publisher and a subscriber of one topic, which no other process uses.
template <class T>
struct Topic {
    std::shared_ptr<Plex> plex = Plex::create();
    Uri uri{"dds+ps://" + std::to_string(1 + getpid() % 95) + "/guide/" + std::to_string(getpid())};
    std::unique_ptr<Publisher<T>> publisher = plex->createPublisher<T>(uri);
    std::unique_ptr<Subscriber<T>> subscriber = plex->createSubscriber<T>(uri);
};

template <class Publisher>
void publishAltitude(Publisher& publisher, double altitude)
{
    const auto position = publisher->createDataEntity();
    position->setAlt(altitude);
    publisher->publish(*position, 0ms);
}

void create()
{
    // [create]
    const auto plex = Plex::create();
    const auto publisher = plex->createPublisher<AltAz>(Uri{"dds+ps://0/dome/position"});
    const auto subscriber = plex->createSubscriber<AltAz>(Uri{"dds+ps://0/dome/position"});
    // [/create]
}

void publish()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [publish]
    const auto position = publisher->createDataEntity();
    position->setAlt(45.0);
    position->setAz(180.0);
    publisher->publish(*position, 0ms);
    position->setAlt(45.1); // the value may be changed and published again
    publisher->publish(*position, 0ms);
    // [/publish]
    for (const auto& value : subscriber->read(0)) {
        std::cout << value->getAlt() << ' ' << value->getAz() << '\n';
    }
}

void publishWithSourceTime()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    const auto position = publisher->createDataEntity();
    position->setAlt(45.0);
    // [source-time]
    const auto measured = std::chrono::system_clock::now();
    const std::chrono::duration<double> sinceEpoch = measured.time_since_epoch();
    publisher->publish(sinceEpoch.count(), *position, 0ms);
    // [/source-time]
    std::vector<std::shared_ptr<DataEvent<AltAz>>> events;
    subscriber->readDataEvents(DataEventFilter<AltAz>(), events, 0, 0ms);
    for (const auto& event : events) {
        std::cout << std::boolalpha << (std::abs(event->getSourceTimestamp() - sinceEpoch.count()) < 1e-6)
                  << '\n';
    }
}

void publishInstance()
{
    using keyed::Channel;
    const auto [plex, uri, publisher, subscriber] = Topic<Channel>();
    // [publish-instance]
    const auto key = publisher->createDataEntity(); // a keyed::Channel, whose key is its number
    key->setNumber(7);
    const auto seventh = publisher->createInstancePublisher(*key);

    const auto channel = seventh->createDataEntity(); // number 7 already
    channel->setLevel(0.5);
    seventh->publish(*channel, 0ms);
    // [/publish-instance]
    // [read-instance]
    const auto wanted = subscriber->createDataEntity();
    wanted->setNumber(7);
    while (const auto received = subscriber->readInstance(*wanted)) {
        std::cout << received->getNumber() << ": " << received->getLevel() << '\n';
    }
    // [/read-instance]
}

void read()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    publishAltitude(publisher, 45.0);
    publishAltitude(publisher, 46.0);
    // [read]
    for (const auto& position : subscriber->read(0)) {
        std::cout << position->getAlt() << '\n';
    }
    // [/read]
}

void readOnLoan()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    publishAltitude(publisher, 45.0);
    publishAltitude(publisher, 46.0);
    // [loan]
    while (const auto loan = subscriber->loanedRead()) {
        std::cout << loan->getData().getAlt() << '\n';
    } // the loan goes back here
    // [/loan]
}

void readEvents()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    publishAltitude(publisher, 45.0);
    publishAltitude(publisher, 46.0);
    // [events]
    std::vector<std::shared_ptr<DataEvent<AltAz>>> events;
    subscriber->readDataEvents(DataEventFilter<AltAz>(), events, 2, 500ms); // two, or what comes in 500 ms
    for (const auto& event : events) {
        const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
        const bool isRecent = now.count() - event->getSourceTimestamp() < 1.0;
        std::cout << event->getData()->getAlt() << (isRecent ? " is recent\n" : " is old\n");
    }
    // [/events]
}

void filterEvents()
{
    const auto [plex, uri, publisher, subscriber] = Topic<keyed::Channel>();
    const auto channel = publisher->createDataEntity();
    std::vector<std::shared_ptr<DataEvent<keyed::Channel>>> events;
    for (const int number : {7, 8, 8}) {
        channel->setNumber(number);
        publisher->publish(*channel, 0ms);
        // [filter]
        const DataEventFilter<keyed::Channel> newInstances(InstanceState::Alive, {InstanceEvent::New});
        subscriber->readDataEvents(newInstances, events, 0, 0ms);
        // [/filter]
    }
    for (const auto& event : events) {
        std::cout << event->getData()->getNumber() << '\n';
    }
}

void subscribeAndPoll()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    publishAltitude(publisher, 45.0);
    // [poll]
    const auto subscription = subscriber->subscribe(
        DataEventFilter<AltAz>(), [](Subscriber<AltAz>& /*source*/, const DataEvent<AltAz>& event) {
            std::cout << event.getData()->getAlt() << '\n';
        });
    subscriber->poll(0, 100ms); // for 100 ms the callback runs here, on this thread
    // [/poll]
}

void subscribeWithCallback()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [callback]
    std::atomic<double> altitude = 0.0;
    const auto subscription = subscriber->subscribeAsync(
        DataEventFilter<AltAz>(), [&](Subscriber<AltAz>& /*source*/, const DataEvent<AltAz>& event) {
            altitude = event.getData()->getAlt(); // on a thread of DDS
        });
    // [/callback]
    publishAltitude(publisher, 45.0);
    std::cout << altitude << '\n';
}

void subscribeOnce()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [one-shot]
    std::unique_ptr<Subscription> subscription;
    subscription = subscriber->subscribeAsync(
        DataEventFilter<AltAz>(), [&](Subscriber<AltAz>& /*source*/, const DataEvent<AltAz>& event) {
            std::cout << "first " << event.getData()->getAlt() << '\n';
            subscription.reset();
        });
    // [/one-shot]
    publishAltitude(publisher, 45.0);
    publishAltitude(publisher, 46.0);
}

void subscribeWithNotifier()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [notifier]
    std::atomic<double> altitude = 0.0;
    const auto subscription =
        subscriber->subscribeAsync(DataEventFilter<AltAz>(), [&](Subscriber<AltAz>& source) {
            for (const auto& position : source.read(0)) {
                altitude = position->getAlt(); // on a thread of DDS
            }
        });
    // [/notifier]
    publishAltitude(publisher, 45.0);
    std::cout << altitude << '\n';
}

void readMostRecent()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [most-recent]
    const auto latest = plex->createMrvSubscriber<AltAz>(uri);
    // [/most-recent]
    publishAltitude(publisher, 45.0);
    publishAltitude(publisher, 46.0);
    // [read-most-recent]
    for (const auto& position : latest->readMostRecent(0ms)) {
        std::cout << position->getAlt() << '\n';
    }
    // [/read-most-recent]
}

void chooseQualityOfService()
{
    const Topic<AltAz> topic;
    const std::string profiles = PROFILES;
    const auto& uri = topic.uri;
    // [profiles]
    const auto plex = Plex::create({
        {"dds.qos.profile.file", profiles}, // the path of plex.xml, for example /opt/plex/share/plex/plex.xml
        {"dds.qos.profile.library", "high-rate"},
    });
    const auto publisher = plex->createPublisher<AltAz>(uri);
    const auto subscriber =
        plex->createSubscriber<AltAz>(uri, {}, {{"dds.qos.profile.reader", "high-rate.best-effort-reader"}});
    // [/profiles]
    publishAltitude(publisher, 45.0);
    std::cout << subscriber->read(0).size() << '\n';
}

void limitAge()
{
    const Topic<AltAz> topic;
    const auto& plex = topic.plex;
    const auto& uri = topic.uri;
    // [age]
    const auto latency = std::make_shared<qos::Latency>(200ms);
    const auto subscriber = plex->createSubscriber<AltAz>(uri, {latency}); // drops what is older than 200 ms
    // [/age]
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    const auto position = topic.publisher->createDataEntity();
    topic.publisher->publish(now.count() - 10.0, *position, 0ms);
    std::cout << subscriber->read(0).size() << " of " << topic.subscriber->read(0).size() << '\n';
}

void waitForSubscribers()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [wait]
    if (!waitForMatched(*publisher, 1, 10s)) {
        std::cerr << "nobody listens\n";
    }
    // [/wait]
    publishAltitude(publisher, 45.0);
    // [acknowledged]
    const auto acknowledgment = waitForAcknowledgments(*publisher, 1s);
    if (acknowledgment.outcome == Acknowledgment::Outcome::TimedOut) {
        std::cerr << "not everybody has it\n";
    }
    // [/acknowledged]
    std::cout << (acknowledgment.outcome == Acknowledgment::Outcome::NobodyToAcknowledge ? "best effort\n"
                                                                                         : "\n");
}

void askForStatus()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    publishAltitude(publisher, 45.0);
    subscriber->read(0);
    // [status]
    const EntityStatus now = status(*subscriber);
    std::cout << now.matched.size() << " publishers, " << now.counters.delivered << " values\n";
    for (const Peer& peer : now.refused) {
        for (const Refusal& refusal : peer.refusals) {
            std::cout << "process " << peer.process << " on " << peer.host << ": " << toString(refusal)
                      << '\n';
        }
    }
    // [/status]
    // [watch]
    std::atomic<std::size_t> publishers = 0;
    const auto watch =
        watchStatus(*subscriber, [&](const EntityStatus& changed) { publishers = changed.matched.size(); });
    // [/watch]
}

void settings()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    // [qos]
    std::cerr << toText(qosInEffect(*publisher));
    for (const QosSetting& setting : qosInEffect(*subscriber)) {
        if (setting.name == "reliability" && setting.value != "reliable") {
            std::cerr << "values may be lost: " << toString(setting.origin) << '\n';
        }
    }
    // [/qos]
}

void close()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    const auto subscription = subscriber->subscribeAsync(DataEventFilter<AltAz>(), [](Subscriber<AltAz>&) {});
    // [close]
    subscription->close(); // no callback starts any more
    subscriber->close();
    publisher->close(); // waits until reliable subscribers have acknowledged
    // [/close]
    try {
        subscriber->read(0);
    } catch (const ovra::plex::IllegalStateException&) {
        std::cout << "closed\n";
    }
}

void handleErrors()
{
    const auto [plex, uri, publisher, subscriber] = Topic<AltAz>();
    const auto position = publisher->createDataEntity();
    publisher->close();
    // [errors]
    try {
        publisher->publish(*position, 0ms);
    } catch (const ovra::plex::IllegalStateException& error) {
        std::cerr << "closed, or a value of another transport: " << error.what() << '\n';
    } catch (const ovra::plex::PlexException& error) {
        std::cerr << "not published: " << error.what() << '\n';
    }
    // [/errors]
}

void log()
{
    // [log]
    // To standard error: warnings and errors of all classes, and everything of one.
    log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
    log4cplus::Logger::getInstance("plexDdsPublisher").setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    // [/log]
    const Topic<AltAz> topic;
}

/// What a function prints to one of the standard streams.
std::string outputOf(void (*example)(), std::ostream& stream)
{
    const std::ostringstream output;
    auto* const before = stream.rdbuf(output.rdbuf());
    example();
    stream.rdbuf(before);
    return output.str();
}

} // namespace

int main()
{
    bool good = true;
    const auto run = [&](const char* name, void (*example)(), const std::string& wanted) {
        const auto output = outputOf(example, std::cout);
        if (output != wanted) {
            std::cerr << name << ": printed \"" << output << "\", not \"" << wanted << "\"\n";
            good = false;
        }
    };
    const auto runForErrors = [&](const char* name, void (*example)(), const std::string& wanted) {
        const auto output = outputOf(example, std::cerr);
        if (output.find(wanted) == std::string::npos) {
            std::cerr << name << ": wrote \"" << output << "\", and not \"" << wanted << "\" in it\n";
            good = false;
        }
    };
    run("create", create, "");
    run("publish", publish, "45 180\n45.1 180\n");
    run("publishWithSourceTime", publishWithSourceTime, "true\n");
    run("publishInstance", publishInstance, "7: 0.5\n");
    run("read", read, "45\n46\n");
    run("readOnLoan", readOnLoan, "45\n46\n");
    run("readEvents", readEvents, "45 is recent\n46 is recent\n");
    run("filterEvents", filterEvents, "7\n8\n");
    run("subscribeAndPoll", subscribeAndPoll, "45\n");
    run("subscribeWithCallback", subscribeWithCallback, "45\n");
    run("subscribeOnce", subscribeOnce, "first 45\n");
    run("subscribeWithNotifier", subscribeWithNotifier, "45\n");
    run("readMostRecent", readMostRecent, "46\n");
    run("chooseQualityOfService", chooseQualityOfService, "1\n");
    run("limitAge", limitAge, "0 of 1\n");
    run("waitForSubscribers", waitForSubscribers, "best effort\n");
    run("askForStatus", askForStatus, "1 publishers, 1 values\n");
    runForErrors("settings", settings, "values may be lost: DDS default");
    run("close", close, "closed\n");
    runForErrors("handleErrors", handleErrors, "closed, or a value of another transport: Entity closed");
    runForErrors("log", log, "Publisher for dds+ps://");
    return good ? 0 : 1;
}
