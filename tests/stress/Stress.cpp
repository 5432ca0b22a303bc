// SPDX-License-Identifier: Apache-2.0
// Publishers, subscribers and subscriptions that come and go under load, callbacks that reach for what others
// hold, and values that must arrive once.
//
// Usage: stress [--seconds N] [--seed N] [--only PART OF A NAME] [--list]
//
// Each case runs in a process of its own, once under each value of property "dds.callback.thread". Prints a
// line of figures for each; ends with 1 when one has found something, crashed or got stuck.
#include "Cases.hpp"
#include "Leftovers.hpp"

#include <log4cplus/logger.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace plex::test::stress
{

const std::vector<Case>& allCases()
{
    static const std::vector<Case> cases = {
        {"subscriptions", churnSubscriptions},
        {"subscribers", churnSubscribers},
        {"entities-one-topic", churnEntitiesOfOneTopic},
        {"entities-topics", churnEntitiesOfSeveralTopics},
        {"publishers-in-use", closePublishersInUse},
        {"backlog", closeBeforeBacklog},
        {"read-each-other", readEachOther},
        {"read-across", readEachOtherAcrossParticipants},
        {"change-while-polling", changePolledWhilePolling},
        {"publish-read-back", publishAndReadBack},
        {"publish-own-topic", publishToOwnTopic},
        {"publish-circles", publishInCircles},
        {"change-each-other", changeEachOther},
        {"drop-inside", dropInside},
        {"drop-inside-remote", dropInsideOfRemote},
        {"processes", hearProcessesComeAndGo},
        {"values", hearEveryValueOnce},
    };
    return cases;
}

namespace
{

constexpr const char* own = "own";
constexpr const char* transport = "transport";

struct Settings {
    std::chrono::milliseconds time = 60s;
    std::uint32_t seed = std::random_device{}();
    std::string only;
};

/// What a process does that runs one case. @returns its exit code.
int runCase(const Order& order)
{
    for (const Case& one : allCases()) {
        if (one.name == order.name) {
            static Run run(order); // watches until the process has ended
            try {
                one.run(run);
            } catch (const std::exception& error) {
                run.find(std::string("thrown: ") + error.what());
            }
            return run.report() ? 0 : 1;
        }
    }
    throw std::invalid_argument("no case is called " + order.name);
}

/// Runs a case in a process of its own. @returns whether it has found nothing.
bool runInProcess(const Order& order)
{
    const Leftovers leftovers;
    ChildProcess process({"--case", order.name, order.ownThread ? own : transport,
                          std::to_string(order.time.count()), std::to_string(order.seed)},
                         true);
    const int status = process.exitStatus(order.time + 60s).value_or(-1);
    if (status < 0 || WIFSIGNALED(status)) {
        std::printf("%-22s %-9s %s\n", order.name.c_str(), order.ownThread ? own : transport,
                    status < 0 ? "HANGS" : ("CRASHED, signal " + std::to_string(WTERMSIG(status))).c_str());
    } else if (WEXITSTATUS(status) == Watchdog::exitCode) {
        std::printf("%-22s %-9s HANGS\n", order.name.c_str(), order.ownThread ? own : transport);
    } else if (WEXITSTATUS(status) > 1) {
        std::printf("%-22s %-9s FAILED, exit code %d\n", order.name.c_str(),
                    order.ownThread ? own : transport, WEXITSTATUS(status));
    }
    return status == 0;
}

std::vector<Order> ordersOf(const Settings& settings)
{
    std::vector<Order> orders;
    for (const Case& one : allCases()) {
        if (std::string_view(one.name).find(settings.only) != std::string_view::npos) {
            for (const bool ownThread : {false, true}) {
                const auto number = static_cast<std::uint32_t>(orders.size());
                orders.push_back({one.name, ownThread, 0ms, settings.seed + number});
            }
        }
    }
    for (auto& order : orders) {
        order.time = settings.time / orders.size();
    }
    return orders;
}

int runAll(const Settings& settings)
{
    std::printf("seed %u\n", settings.seed);
    const auto orders = ordersOf(settings);
    if (orders.empty()) {
        throw std::invalid_argument("no case is called " + settings.only);
    }
    int failed = 0;
    for (const Order& order : orders) {
        failed += runInProcess(order) ? 0 : 1;
    }
    std::printf("%d of %zu runs found something (seed %u)\n", failed, orders.size(), settings.seed);
    return failed == 0 ? 0 : 1;
}

std::uint32_t number(const std::string& text)
{
    std::size_t end = 0;
    const auto value = std::stoul(text, &end);
    if (end != text.size()) {
        throw std::invalid_argument("no number: " + text);
    }
    return static_cast<std::uint32_t>(value);
}

int listCases()
{
    for (const Case& one : allCases()) {
        std::printf("%s\n", one.name);
    }
    return 0;
}

Settings settingsOf(const std::vector<std::string>& arguments)
{
    Settings settings;
    for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
        const std::string& value = arguments[i + 1];
        if (arguments[i] == "--seconds") {
            settings.time = std::chrono::seconds(number(value));
        } else if (arguments[i] == "--seed") {
            settings.seed = number(value);
        } else if (arguments[i] == "--only") {
            settings.only = value;
        } else {
            throw std::invalid_argument("unknown option " + arguments[i]);
        }
    }
    if (arguments.size() % 2 != 0) {
        throw std::invalid_argument("no value for " + arguments.back());
    }
    return settings;
}

int run(const std::vector<std::string>& arguments)
{
    const std::string command = arguments.empty() ? "" : arguments[0];
    log4cplus::Logger::getRoot().setLogLevel(
        log4cplus::OFF_LOG_LEVEL); // each use of what is closed is logged
    if (std::ranges::find(arguments, "--list") != arguments.end()) {
        return listCases();
    }
    if (command == "--publish" && arguments.size() == 4) {
        runRemotePublisher(arguments[1], std::stoi(arguments[2]), arguments[3]);
        return 0;
    }
    if (command == "--case" && arguments.size() == 5) {
        return runCase({arguments[1], arguments[2] == own, std::chrono::milliseconds(number(arguments[3])),
                        number(arguments[4])});
    }
    return runAll(settingsOf(arguments));
}

} // namespace

} // namespace plex::test::stress

// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    try {
        std::setvbuf(stdout, nullptr, _IOLBF,
                     BUFSIZ); // each line in its place among those of other processes
        return plex::test::stress::run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::cerr << "stress: " << error.what() << '\n';
        return 2;
    }
}
