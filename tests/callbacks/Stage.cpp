// SPDX-License-Identifier: Apache-2.0
#include "Stage.hpp"

#include <algorithm>
#include <iterator>
#include <poll.h>
#include <typeinfo>
#include <unistd.h>
#include <utility>

namespace plex::test::callbacks
{

namespace
{

constexpr auto pollTime = 30ms; ///< a poll takes all of it

Uri topic(const std::string& name)
{
    const auto process = std::to_string(getpid());
    // Not those of other tests, which may count what is left of processes that end here without a word.
    return Uri("dds+ps://" + std::to_string(96 + getpid() % 5) + "/callbacks/" + process + "/" + name);
}

/// Runs an operation. @returns what it threw, as "class: text".
std::string thrownBy(const std::function<void()>& operation)
{
    try {
        operation();
        return {};
    } catch (const IllegalStateException& error) {
        return std::string("IllegalStateException: ") + error.what();
    } catch (const std::exception& error) {
        return std::string(typeid(error).name()) + ": " + error.what();
    }
}

/// Polls a subscriber, unless it is closed.
void pollOpen(Reader& reader)
{
    try {
        reader.poll(0, pollTime);
    } catch (const IllegalStateException&) { // NOLINT(bugprone-empty-catch): closed, which others check
    }
}

} // namespace

Plex::Properties Stage::properties(Thread thread)
{
    Plex::Properties result{{"dds.module.path", MODULE_DIRECTORY},
                            {"dds.qos.profile.file", PROFILE_FILE},
                            {"dds.qos.profile.library", "reliable"}};
    if (thread == Thread::Own) {
        result["dds.callback.thread"] = "own";
    }
    return result;
}

Stage::Stage(Context inWhat)
    : context(inWhat)
    , uri(topic("topic"))
    , elsewhere(topic("elsewhere"))
    , plex(Plex::create(properties(context.thread)))
    , tester(makeWriter())
    , subscriber(makeReader())
{
    if (context.isRemote()) {
        meetPeer();
        return;
    }
    publisher = makeWriter();
    if (context.isOfInstance()) {
        instancePublisher = makeInstanceWriter(*publisher, number::own);
    }
    if (kind() == Kind::Polled) {
        publish(*publisher, number::own); // before an operation's asynchronous subscriptions could take it
    }
}

/// Starts the other process and waits until it is heard, and until no value of it is under way.
void Stage::meetPeer()
{
    peer_.emplace(std::vector<std::string>{"--peer", uri.string()});
    expect(waitFor([&] { return take(*subscriber, number::greeting) > 0; }),
           "the other process is not heard");
    peer_->say(std::to_string(number::ready));
    expect(waitFor([&] { return take(*subscriber, number::ready) > 0; }), "the other process does not hear");
}

Kind Stage::kind() const
{
    switch (context.runs) {
    case Runs::Polled:
        return Kind::Polled;
    case Runs::Callback:
    case Runs::InstanceCallback:
    case Runs::RemoteCallback:
        return Kind::Callback;
    case Runs::Notifier:
    case Runs::InstanceNotifier:
    case Runs::RemoteNotifier:
        break;
    }
    return Kind::Notifier;
}

void Stage::expect(bool condition, const std::string& what)
{
    if (!condition) {
        complaints.push_back(what);
    }
}

std::unique_ptr<InstanceWriter> Stage::makeInstanceWriter(Writer& parent, int number)
{
    const auto key = parent.createDataEntity();
    key->setNumber(number);
    return parent.createInstancePublisher(*key);
}

void Stage::publish(InstanceWriter& writer, int number)
{
    const auto value = writer.createDataEntity();
    value->setNumber(number);
    writer.publish(*value, 0ms);
}

namespace
{

/// Takes all values of a channel. @returns how many there were.
int takeAll(Reader& reader, const Channel& key)
{
    int count = 0;
    while (reader.readInstance(key)) {
        ++count;
    }
    return count;
}

/// Subscribes to a channel with a callback that runs an operation for each value. A notifier takes them.
template <class Operation>
std::unique_ptr<Subscription> subscribeTo(Reader& reader, Kind kind, int number, Operation operation)
{
    const std::shared_ptr<Channel> key = reader.createDataEntity();
    key->setNumber(number);
    const Filter filter(ovra::plex::ps::InstanceState::Any, {}, key);
    const auto run = [operation](Reader&, const Event&) {
        operation();
    };
    switch (kind) {
    case Kind::Polled:
        return reader.subscribe(filter, run);
    case Kind::Callback:
        return reader.subscribeAsync(filter, run);
    case Kind::Notifier:
        break;
    }
    return reader.subscribeAsync(filter, [operation, key](Reader& source) {
        for (int left = takeAll(source, *key); left > 0; --left) {
            operation();
        }
    });
}

} // namespace

std::unique_ptr<Subscription> Stage::subscribe(Reader& reader, Kind kind, int number)
{
    return subscribeTo(reader, kind, number, [this] { ++heard; });
}

void Stage::subscribeOwn(std::function<void()> ask)
{
    subscription =
        subscribeTo(*subscriber, kind(), number::own, [this, ask = std::move(ask)] { onCallback(ask); });
}

void Stage::onCallback(const std::function<void()>& ask)
{
    if (calls++ == 0) {
        callbackThread = std::this_thread::get_id();
        thrown_ = thrownBy(ask);
        asked_ = true;
    }
}

void Stage::provoke()
{
    if (peer_) {
        peer_->say(std::to_string(number::own));
    } else if (kind() == Kind::Polled) {
        pollOpen(*subscriber);
    } else {
        publish(source(), number::own);
    }
}

std::string Stage::fire(std::function<void()> ask)
{
    subscribeOwn(std::move(ask));
    const std::string provoked = thrownBy([this] { provoke(); });
    expect(provoked.empty(), "what runs the callback threw " + provoked);
    if (columnOf(context) == Column::SameProcess) {
        expect(asked_, "the callback has not run when publish() returns");
    }
    expect(waitFor([this] { return asked_.load(); }, 10s), "the callback does not run");
    return thrown_;
}

void Stage::pollOwn()
{
    if (kind() == Kind::Polled && subscriber) {
        pollOpen(*subscriber);
    }
}

void Stage::settle(Reader& reader)
{
    reader.poll(0, pollTime);
    std::atomic<bool> passed = false;
    const auto witness = subscribeTo(reader, Kind::Callback, number::witness, [&passed] { passed = true; });
    send(number::witness);
    expect(waitFor([&] { return passed.load(); }, 5s), "a value does not reach a new subscription");
    witness->close();
}

void Stage::expectHeardOnce(Reader& reader, int number, Kind by)
{
    const int before = heard;
    send(number);
    if (by == Kind::Polled) { // a poll takes from callbacks on a thread of their own
        pollOpen(reader);
    }
    expect(waitFor([&] { return heard > before; }, 5s), "the subscription does not hear a value");
    settle(reader);
    expect(heard <= before + 1, "the subscription hears a value more than once");
}

void Stage::expectCalledBy(const std::function<void()>& happen)
{
    const int before = calls;
    happen();
    pollOwn();
    expect(waitFor([&] { return calls > before; }, 5s), "the callback does not run again");
    expect(calls == before + 1, "the callback runs more than once");
}

void Stage::expectNoCall()
{
    const int before = calls;
    send(number::own);
    settle(*subscriber);
    expect(calls == before, "the callback runs although its subscription has ended");
}

int Stage::take(Reader& reader, int number)
{
    const auto values = reader.read(0);
    return static_cast<int>(
        std::ranges::count_if(values, [&](const auto& value) { return value->getNumber() == number; }));
}

void runPeer(const std::string& uri)
{
    const auto plex = Plex::create(Stage::properties(Thread::Transport));
    const auto publisher = plex->createPublisher<Channel>(Uri(uri));
    for (bool greets = true;;) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (::poll(&input, 1, greets ? 10 : -1) == 0) {
            Stage::publish(*publisher, number::greeting);
            continue;
        }
        char digit = 0;
        if (::read(STDIN_FILENO, &digit, 1) != 1) {
            return;
        }
        greets = false;
        Stage::publish(*publisher, digit - '0');
    }
}

} // namespace plex::test::callbacks
