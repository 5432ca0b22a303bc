// SPDX-License-Identifier: Apache-2.0
// One of two processes that exchange positions over several stacks in turn. It is told what to do on standard
// input, a command a line, and answers each with a line of JSON:
//
//   roundtrips STACK COUNT
//       To a ping. Answers the nanoseconds of each; fewer than asked for when one is lost.
//   send STACK SECONDS RATE [MULTIPLE]
//       To a source. RATE is in values a second; 0: as fast as it goes, and on to a MULTIPLE of values.
//       Answers the number of this stream, what was sent and what refused, and in which time.
//   received STACK STREAM COUNT SECONDS
//       To a sink. Answers what has arrived of a stream, and in which time, once it is as much as COUNT or
//       nothing more has come for so long.
//
// A pong sends back whatever comes.
#include "Paired.hpp"
#include "Stack.hpp"

#include <CLI/CLI.hpp>
#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>

#include <atomic>
#include <condition_variable>
#include <iostream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

namespace plex::bench
{

namespace
{

using namespace std::chrono_literals;

/// One stack's part of a process.
class Role
{
public:
    Role() = default;
    Role(const Role&) = delete;
    Role& operator=(const Role&) = delete;
    virtual ~Role() = default;

    /// Carries out a command, whose arguments are what is left of its line.
    virtual nlohmann::json command(std::istream& arguments) = 0;
};

/// Sends a value, and the next one when it has come back: all in the callback, as the other side does.
class Ping final : public Role
{
public:
    explicit Ping(Stack& stack)
        : sender_(stack.sender("ping"))
        , receiver_(stack.receiver("pong", [this](const Horizontal& value) { returned(value); }))
    {
    }

    nlohmann::json command(std::istream& arguments) override
    {
        std::size_t count = 0;
        arguments >> count;
        std::unique_lock lock(mutex_);
        times_.clear();
        times_.reserve(count);
        wanted_ = count;
        next();
        while (times_.size() < wanted_) {
            const std::size_t before = times_.size();
            const bool going = progress_.wait_for(lock, 500ms, [&] { return times_.size() == wanted_; });
            if (!going && times_.size() == before) {
                break; // lost
            }
        }
        wanted_ = 0;
        return times_;
    }

private:
    void next()
    {
        ++number_;
        sent_ = Clock::now();
        sender_->send({number_, 0.0});
    }

    void returned(const Horizontal& value)
    {
        const auto now = Clock::now();
        const std::lock_guard lock(mutex_);
        if (value.alt != number_ || times_.size() >= wanted_) {
            return; // one that was given up
        }
        times_.push_back(nanoseconds(sent_, now));
        if (times_.size() < wanted_) {
            next();
        } else {
            progress_.notify_one();
        }
    }

    std::mutex mutex_; ///< guards what follows
    std::condition_variable progress_;
    std::vector<double> times_;
    std::size_t wanted_ = 0;
    double number_ = 0.0;
    Clock::time_point sent_;
    const std::unique_ptr<Sender> sender_;
    const std::unique_ptr<Receiver> receiver_;
};

class Pong final : public Role
{
public:
    explicit Pong(Stack& stack)
        : sender_(stack.sender("pong"))
        , receiver_(stack.receiver("ping", [this](const Horizontal& value) { sender_->send(value); }))
    {
    }

    nlohmann::json command(std::istream& /*arguments*/) override { return nullptr; }

private:
    const std::unique_ptr<Sender> sender_;
    const std::unique_ptr<Receiver> receiver_;
};

class Source final : public Role
{
public:
    explicit Source(Stack& stack) : sender_(stack.sender("stream")) {}

    nlohmann::json command(std::istream& arguments) override
    {
        double seconds = 0.0;
        double rate = 0.0;
        std::uint64_t multiple = 1;
        arguments >> seconds >> rate >> multiple;
        const auto start = Clock::now();
        const auto end =
            start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        ++stream_;
        sent_ = 0;
        refused_ = 0;
        if (rate > 0.0) {
            paced(start, end, rate);
        } else {
            unpaced(end, multiple);
        }
        return {{"stream", stream_},
                {"sent", sent_},
                {"refused", refused_},
                {"seconds", nanoseconds(start, Clock::now()) / 1e9}};
    }

private:
    void send()
    {
        ++(sender_->send({static_cast<double>(sent_), static_cast<double>(stream_)}) ? sent_ : refused_);
    }

    /// Sends until the time is over and the number of values is a multiple of this one.
    void unpaced(Clock::time_point end, std::uint64_t multiple)
    {
        do {
            send();
        } while (Clock::now() < end || (sent_ + refused_) % multiple != 0);
    }

    /// Sends what is due, then sleeps; behind time it does not sleep.
    void paced(Clock::time_point start, Clock::time_point end, double rate)
    {
        for (auto now = start; now < end; now = Clock::now()) {
            const double due = nanoseconds(start, now) * rate / 1e9;
            while (static_cast<double>(sent_ + refused_) < due) {
                send();
            }
            std::this_thread::sleep_until(
                start + std::chrono::nanoseconds(static_cast<std::int64_t>((due + 1.0) * 1e9 / rate)));
        }
    }

    std::uint64_t stream_ = 0;
    std::uint64_t sent_ = 0;
    std::uint64_t refused_ = 0;
    const std::unique_ptr<Sender> sender_;
};

class Sink final : public Role
{
public:
    explicit Sink(Stack& stack)
        : receiver_(stack.receiver("stream", [this](const Horizontal& value) { arrived(value); }))
    {
    }

    nlohmann::json command(std::istream& arguments) override
    {
        double stream = 0.0;
        std::uint64_t expected = 0;
        double seconds = 0.0;
        arguments >> stream >> expected >> seconds;
        awaitCount(stream, expected, std::chrono::duration<double>(seconds));
        const std::lock_guard lock(mutex_);
        if (stream_ != stream) {
            return {{"received", 0}, {"seconds", 0.0}};
        }
        return {{"received", received_}, {"seconds", nanoseconds(first_, last_) / 1e9}};
    }

private:
    void awaitCount(double stream, std::uint64_t expected, std::chrono::duration<double> patience)
    {
        auto changed = Clock::now();
        for (std::uint64_t before = 0; Clock::now() - changed < patience;) {
            {
                const std::lock_guard lock(mutex_);
                const std::uint64_t received = stream_ == stream ? received_ : 0;
                if (received >= expected) {
                    return;
                }
                changed = received == before ? changed : Clock::now();
                before = received;
            }
            std::this_thread::sleep_for(5ms);
        }
    }

    void arrived(const Horizontal& value)
    {
        const auto now = Clock::now();
        const std::lock_guard lock(mutex_);
        if (value.az > stream_) {
            stream_ = value.az;
            received_ = 0;
            first_ = now;
        }
        if (value.az == stream_) { // not a straggler
            last_ = now;
            ++received_;
        }
    }

    std::mutex mutex_; ///< guards what follows
    Clock::time_point first_;
    Clock::time_point last_;
    double stream_ = 0.0;
    std::uint64_t received_ = 0;
    const std::unique_ptr<Receiver> receiver_;
};

/// How the stacks are made, by their names.
std::map<std::string, std::function<std::unique_ptr<Stack>(const StackSettings&)>> stackKinds()
{
    return {{"binding", makeBindingStack}, {"own-thread", makeBindingStackWithOwnThread},
            {"bare", makeBareStack},       {"bare2", makeBareStack}, // to compare bare with bare
#ifdef PLEX_BENCH_CYCLONE
            {"cyclone", makeCycloneStack},
#endif
#ifdef PLEX_BENCH_ZEROMQ
            {"zeromq", makeZeroMqStack}
#endif
    };
}

using Stacks = std::map<std::string, std::unique_ptr<Stack>>;
using Roles = std::map<std::string, std::unique_ptr<Role>>;

std::unique_ptr<Role> makeRole(const std::string& name, Stack& stack)
{
    if (name == "ping") {
        return std::make_unique<Ping>(stack);
    }
    if (name == "pong") {
        return std::make_unique<Pong>(stack);
    }
    if (name == "source") {
        return std::make_unique<Source>(stack);
    }
    return std::make_unique<Sink>(stack);
}

/// Topics of each stack have its name in front.
class NamedStack final : public Stack
{
public:
    NamedStack(std::string name, std::unique_ptr<Stack> stack)
        : name_(std::move(name))
        , stack_(std::move(stack))
    {
    }

    std::unique_ptr<Sender> sender(const std::string& topic) override
    {
        return stack_->sender(name_ + "/" + topic);
    }

    std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) override
    {
        return stack_->receiver(name_ + "/" + topic, std::move(handler));
    }

private:
    const std::string name_;
    const std::unique_ptr<Stack> stack_;
};

void listStacks()
{
    for (const auto& [name, make] : stackKinds()) {
        std::cout << name << '\n';
    }
    throw CLI::Success();
}

void serve(const std::string& roleName, const std::vector<std::string>& names, const StackSettings& settings)
{
    const auto kinds = stackKinds();
    Stacks stacks;
    Roles roles;
    for (const auto& name : names) {
        auto& stack = stacks[name] = std::make_unique<NamedStack>(name, kinds.at(name)(settings));
        roles[name] = makeRole(roleName, *stack);
    }
    std::cout << nlohmann::json("ready") << '\n' << std::flush;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb;
        std::string stack;
        words >> verb >> stack;
        std::cout << roles.at(stack)->command(words) << '\n' << std::flush;
    }
}

} // namespace

} // namespace plex::bench

int main(int argc, char** argv)
{
    std::string role;
    try {
        CLI::App app{"One of two processes that exchange positions; told what to do on standard input"};
        plex::bench::StackSettings settings;
        std::vector<std::string> stacks;
        app.add_option("--role", role)->required()->check(CLI::IsMember({"ping", "pong", "source", "sink"}));
        app.add_option("--stack", stacks, "stacks, made in this order")
            ->required()
            ->check(CLI::IsMember(plex::bench::stackKinds()));
        app.add_option("--domain", settings.domain, "DDS domain")->required();
        app.add_option("--profiles", settings.profileFile, "XML file of QoS profiles");
        app.add_option("--library", settings.profiles.library, "library of profiles to use");
        app.add_option("--reader", settings.profiles.reader, "profile of readers, instead of the library's");
        app.add_flag("--reliable", settings.isReliable, "for stacks without profiles: lose nothing");
        app.add_option("--sockets", settings.socketPath, "beginning of the names of local sockets");
        app.add_flag_callback("--list-stacks", plex::bench::listStacks, "print the names of stacks, and end");
        CLI11_PARSE(app, argc, argv);

        log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
        log4cplus::Logger::getRoot().setLogLevel(log4cplus::FATAL_LOG_LEVEL);
        plex::bench::serve(role, stacks, settings);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "peer " << role << ": " << error.what() << '\n';
        return 1;
    }
}
