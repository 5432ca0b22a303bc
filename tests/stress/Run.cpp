// SPDX-License-Identifier: Apache-2.0
#include "Run.hpp"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <poll.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace plex::test::stress
{

namespace
{

constexpr auto longestRound = 20s;

Plex::Properties plainProperties()
{
    return {{"dds.module.path", MODULE_DIRECTORY}};
}

Plex::Properties reliableProperties(const std::string& profiles = PROFILE_FILE)
{
    auto result = plainProperties();
    result["dds.qos.profile.file"] = profiles;
    result["dds.qos.profile.library"] = "reliable";
    return result;
}

} // namespace

Run::Run(Order what)
    : order(std::move(what))
    , watchdog_("no round of " + order.name + " ends in time", longestRound)
{
}

bool Run::goesOn()
{
    std::call_once(begun_, [this] { end_ = std::chrono::steady_clock::now() + order.time; });
    return std::chrono::steady_clock::now() < end_;
}

void Run::endRound()
{
    ++rounds_;
    watchdog_.restart();
}

std::shared_ptr<Plex> Run::makePlex() const
{
    return makePlex(reliableProperties());
}

std::shared_ptr<Plex> Run::makePlainPlex() const
{
    return makePlex(plainProperties());
}

std::shared_ptr<Plex> Run::makePlex(Plex::Properties properties) const
{
    properties["dds.callback.thread"] = order.ownThread ? "own" : "transport";
    return Plex::create(properties);
}

Uri Run::uri(const std::string& topic) const
{
    // In a domain of its own, as it kills processes, which others count.
    return Uri("dds+ps://102/stress/" + std::to_string(getpid()) + "/" + topic);
}

void Run::together(const std::vector<std::function<void()>>& functions)
{
    std::vector<std::thread> threads;
    threads.reserve(functions.size());
    for (const auto& function : functions) {
        threads.emplace_back([this, &function] {
            try {
                function();
            } catch (const std::exception& error) {
                find(std::string("thrown: ") + error.what());
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

void Run::find(const std::string& what)
{
    const std::lock_guard lock(mutex_);
    if (findings_.size() < 5) {
        std::fprintf(stderr, "%s: %s\n", order.name.c_str(), what.c_str());
    }
    findings_.push_back(what);
}

void Run::send(Writer& writer, const AltAz& value, int subscribers)
{
    sent_ += subscribers; // before anybody can have heard it
    try {
        writer.publish(value, 0ms);
    } catch (const PlexException&) {
        sent_ -= subscribers;
        throw;
    }
}

void Run::awaitRoom()
{
    constexpr long room = 500;
    if (!waitFor([&] { return sent_ - values < room; }, soon)) {
        find("what is published is not heard");
    }
}

void Run::awaitAll()
{
    waitFor([&] { return sent_ <= values; }, soon);
    lost += std::max(0L, sent_ - values);
    twice += std::max(0L, values - sent_);
}

bool Run::report() const
{
    const bool good = findings_.empty() && lost == 0 && twice == 0 && late == 0 && rounds_ > 0;
    std::printf("%-22s %-9s %9ld rounds %10ld values %6ld lost %6ld twice %6ld late  %s\n",
                order.name.c_str(), order.ownThread ? "own" : "transport", rounds_.load(), values.load(),
                lost.load(), twice.load(), late.load(), good ? "ok" : "FOUND");
    return good;
}

std::unique_ptr<AltAz> numbered(Plex& plex, int source, long number)
{
    auto value = plex.createDataEntity<AltAz>();
    value->setAlt(source);
    value->setAz(static_cast<double>(number));
    return value;
}

void Ear::hear(const AltAz& value)
{
    const std::lock_guard lock(mutex_);
    const auto number = static_cast<long>(value.getAz());
    const auto [known, isNew] = last_.try_emplace(static_cast<int>(value.getAlt()), number - 1);
    auto& last = known->second;
    if (number < 0 && !isNew) { // the last one of its source, which says how many there were
        run_.lost += -number - 1 - last;
    } else if (number <= last) {
        ++run_.twice;
    } else {
        run_.lost += number - last - 1;
    }
    last = number;
    ++run_.values;
}

std::optional<long> Ear::last(int source) const
{
    const std::lock_guard lock(mutex_);
    const auto known = last_.find(source);
    return known == last_.end() ? std::nullopt : std::optional(known->second);
}

long Ear::count(int source) const
{
    return last(source).value_or(-1) + 1;
}

bool Ear::hasHeardEnd(int source) const
{
    return last(source).value_or(0) < 0;
}

void Ear::restart()
{
    const std::lock_guard lock(mutex_);
    last_.clear();
}

namespace
{

void hearAll(Reader& reader, const std::function<void(const AltAz&)>& heard)
{
    try {
        for (const auto& value : reader.read(0)) {
            heard(*value);
        }
        // NOLINTNEXTLINE(bugprone-empty-catch): another thread closes it meanwhile
    } catch (const IllegalStateException&) {
    }
}

} // namespace

Watched::Watched(Run& run, Reader& reader, Kind kind, const Filter& filter,
                 std::function<void(const AltAz&)> heard)
{
    const auto enter = [&run, state = state_] {
        run.late += state->over ? 1 : 0;
        ++state->calls;
    };
    const auto callback = [enter, heard](Reader&, const Event& event) {
        enter();
        if (heard) {
            heard(*event.getData());
        }
    };
    const auto notifier = [enter, heard](Reader& source) {
        enter();
        if (heard) {
            hearAll(source, heard);
        }
    };
    switch (kind) {
    case Kind::Polled:
        subscription_ = reader.subscribe(filter, callback);
        break;
    case Kind::Callback:
        subscription_ = reader.subscribeAsync(filter, callback);
        break;
    case Kind::Notifier:
        subscription_ = reader.subscribeAsync(filter, notifier);
        break;
    }
}

void Watched::close()
{
    subscription_->close();
    state_->over = true;
}

void Watched::drop()
{
    subscription_.reset();
    state_->over = true;
}

Traffic::Traffic(Run& run, std::unique_ptr<Writer> publisher, int source, std::function<bool(long)> mayGoOn)
    : run_(run)
    , publisher_(std::move(publisher))
    , source_(source)
    , mayGoOn_(std::move(mayGoOn))
    , thread_([this] { publish(); })
{
}

Traffic::~Traffic()
{
    stopped_ = true;
    thread_.join();
}

void Traffic::publish()
{
    const auto value = publisher_->createDataEntity();
    value->setAlt(source_);
    for (long number = 0; !stopped_; std::this_thread::sleep_for(50us)) { // the pace
        if (mayGoOn_ && !mayGoOn_(number)) {
            continue;
        }
        value->setAz(static_cast<double>(number++));
        try {
            publisher_->publish(*value, 0ms);
        } catch (const std::exception& error) {
            run_.find(std::string("not published: ") + error.what());
            return;
        }
    }
}

RemotePublisher::RemotePublisher(const Uri& uri, int source, Over over)
    : process_({"--publish", uri.string(), std::to_string(source),
                over == Over::Udp ? UDP_PROFILE_FILE : PROFILE_FILE})
{
}

bool RemotePublisher::finish()
{
    process_.endInput();
    return process_.exitStatus(15s) == 0;
}

void RemotePublisher::kill()
{
    process_.kill(SIGKILL);
    process_.exitStatus(15s);
}

void runRemotePublisher(const std::string& uri, int source, const std::string& profiles)
{
    const auto plex = Plex::create(reliableProperties(profiles));
    const auto publisher = plex->createPublisher<AltAz>(Uri(uri));
    pollfd input{STDIN_FILENO, POLLIN, 0};
    long number = 0;
    while (poll(&input, 1, 1) == 0) { // a value each millisecond until there is no more input
        publisher->publish(*numbered(*plex, source, number++), 0ms);
    }
    publisher->publish(*numbered(*plex, source, -number), 0ms);
}

} // namespace plex::test::stress
