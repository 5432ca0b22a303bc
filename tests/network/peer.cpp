// SPDX-License-Identifier: Apache-2.0
// One side of a topic, in a process of its own. It is told what to do on its standard input and says on its
// standard output what happened:
//
//     peer publish      reads   "publish FIRST COUNT RATE"   numbered values, so many a second; 0: at once
//                               "close"
//                       prints  "matched COUNT" whenever that may have changed,
//                               "published FIRST COUNT", "refused NUMBER after SECONDS REASON", "closing",
//                       "closed SECONDS",
//                               "gone SECONDS"
//     peer subscribe    prints  "listening", "matched COUNT" as a publisher does,
//                               for each value "value NUMBER sent TIME received TIME"
//
// Both end with their standard input.
#include "Settings.hpp"

#include <plex/Plex.hpp>
#include <plex/dds/Status.hpp>
#include <vexstubif/AltAz.hpp>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

using namespace std::chrono_literals;

namespace
{

using ovra::plex::Plex;
using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::Publisher;
using ovra::plex::ps::Subscriber;
using std::chrono::steady_clock;
using vexstubif::AltAz;

double secondsSince(steady_clock::time_point start)
{
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

/// A period of 0 for a rate of 0: as fast as it goes.
steady_clock::duration period(double rate)
{
    return std::chrono::duration_cast<steady_clock::duration>(
        std::chrono::duration<double>(rate > 0.0 ? 1.0 / rate : 0.0));
}

void publish(Publisher<AltAz>& publisher, unsigned first, unsigned count, double rate)
{
    auto next = steady_clock::now();
    const auto value = publisher.createDataEntity();
    for (unsigned number = first; number < first + count; ++number) {
        value->setAlt(number);
        const auto start = steady_clock::now();
        try {
            publisher.publish(*value, 0ms);
        } catch (const ovra::plex::PlexException& error) {
            std::printf("refused %u after %.3f %s\n", number, secondsSince(start), error.what());
            return;
        }
        next += period(rate);
        std::this_thread::sleep_until(next);
    }
    std::printf("published %u %u\n", first, count);
}

void close(Publisher<AltAz>& publisher)
{
    std::printf("closing\n");
    const auto start = steady_clock::now();
    publisher.close();
    std::printf("closed %.3f\n", secondsSince(start));
}

void showMatched(const ovra::plex::ps::EntityStatus& status)
{
    std::printf("matched %zu\n", status.matched.size());
}

void runPublisher(Plex& plex, const ovra::plex::Uri& uri)
{
    auto publisher = plex.createPublisher<AltAz>(uri);
    const auto watch = watchStatus(*publisher, showMatched);
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string command;
        unsigned first = 0;
        unsigned count = 0;
        double rate = 0.0;
        if (words >> command >> first >> count >> rate && command == "publish") {
            publish(*publisher, first, count, rate);
        } else if (line == "close") {
            close(*publisher);
        } else {
            throw std::invalid_argument("no command: " + line);
        }
    }
    const auto start = steady_clock::now();
    publisher.reset();
    std::printf("gone %.3f\n", secondsSince(start));
}

void show(const DataEvent<AltAz>& event)
{
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    std::printf("value %.0f sent %.6f received %.6f\n", event.getData()->getAlt(), event.getSourceTimestamp(),
                now.count());
}

void runSubscriber(Plex& plex, const ovra::plex::Uri& uri)
{
    auto subscriber = plex.createSubscriber<AltAz>(uri);
    const auto watch = watchStatus(*subscriber, showMatched);
    const auto subscription = subscriber->subscribeAsync(
        DataEventFilter<AltAz>(), [](Subscriber<AltAz>&, const DataEvent<AltAz>& event) { show(event); });
    std::printf("listening\n");
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    CommandLine commandLine("One side of a topic");
    Settings settings;
    std::string acknowledgmentTimeout = "5000";
    settings.addTo(commandLine);
    commandLine.option("--wait-for-ack-ms", acknowledgmentTimeout, "how long closing waits for subscribers");
    std::string side;
    commandLine.word("side", side, "publish or subscribe");
    if (const auto exitCode = commandLine.parse(argc, argv)) {
        return *exitCode;
    }

    configureLogging();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // each line reaches the test at once
    try {
        auto properties = settings.properties();
        properties["dds.wait_for_ack.timeout_ms"] = acknowledgmentTimeout;
        properties["dds.startup.check"] = "off"; // the hosts of some tests have no network
        const auto plex = Plex::create(properties);
        const auto uri = settings.uri("network/" + settings.library);
        if (side == "publish") {
            runPublisher(*plex, uri);
        } else if (side == "subscribe") {
            runSubscriber(*plex, uri);
        } else {
            throw std::invalid_argument("no side: " + side);
        }
    } catch (const std::exception& error) {
        std::cerr << "peer: " << error.what() << '\n';
        return 1;
    }
}
