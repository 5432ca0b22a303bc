// SPDX-License-Identifier: Apache-2.0
// A live display of a dome: the latest value, rate and age of each topic, until Ctrl-C. Shows the three ways
// to follow a topic: a callback with each value, a notifier that leaves the reading to the application, and a
// most-recent-value subscriber that is asked when it suits.
#include "Settings.hpp"

#include <plex/Plex.hpp>
#include <plex/dds/Status.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace
{

using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::EntityStatus;
using ovra::plex::ps::Subscriber;
using vexstubif::AltAz;
using vexstubif::DomeTemperature;

std::atomic<bool> interrupted{false};

void interrupt(int /*signal*/)
{
    interrupted = true;
}

double now()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string text(const AltAz& position)
{
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "alt %8.3f  az %8.3f", position.getAlt(), position.getAz());
    return buffer.data();
}

std::string text(const DomeTemperature& temperature)
{
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%8.3f", temperature.getTemp());
    return buffer.data();
}

/// What is known of one topic. Filled on threads of the transport, shown on the main thread.
class Track
{
public:
    template <class T>
    void update(const DataEvent<T>& event)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        value_ = text(*event.getData());
        timestamp_ = event.getSourceTimestamp();
        ++received_;
    }

    /// Takes over who publishes, and why somebody does not reach us.
    void update(const EntityStatus& status)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        publishers_ = std::to_string(status.matched.size()) + " publishers";
        for (const auto& peer : status.refused) {
            publishers_ +=
                "; one of process " + peer.process + " does not fit: " + toString(peer.refusals.front());
        }
    }

    /// Prints a line, with the rate since the last one.
    void show(const char* topic, const char* way)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const double time = now();
        const double rate = (received_ - shown_) / (time - shownAt_);
        shown_ = received_;
        shownAt_ = time;
        if (value_.empty()) {
            std::printf("%-18s %-10s nothing yet (%s)\n", topic, way, publishers_.c_str());
        } else {
            std::printf("%-18s %-10s %-26s %8.1f/s  age %8.1f ms\n", topic, way, value_.c_str(), rate,
                        (time - timestamp_) * 1000.0);
        }
    }

private:
    std::mutex mutex_; ///< guards what follows
    std::string publishers_ = "0 publishers";
    std::string value_;
    double timestamp_ = 0.0;
    unsigned received_ = 0;
    unsigned shown_ = 0;
    double shownAt_ = now();
};

/// Reads what a notifier has announced.
void readAll(Subscriber<DomeTemperature>& subscriber, Track& track)
{
    std::vector<std::shared_ptr<DataEvent<DomeTemperature>>> events;
    subscriber.readDataEvents(DataEventFilter<DomeTemperature>(), events, 0, 0ms);
    for (const auto& event : events) {
        track.update(*event);
    }
}

void display(const Settings& settings)
{
    auto plex = ovra::plex::Plex::create(settings.properties());
    auto positions = plex->createSubscriber<AltAz>(settings.uri("dome/position"));
    auto temperatures = plex->createSubscriber<DomeTemperature>(settings.uri("dome/temperature"));
    auto latest = plex->createMrvSubscriber<AltAz>(settings.uri("dome/position"));

    Track position;
    Track temperature;
    const auto callback = positions->subscribeAsync(
        DataEventFilter<AltAz>(),
        [&](Subscriber<AltAz>&, const DataEvent<AltAz>& event) { position.update(event); });
    const auto notifier = temperatures->subscribeAsync(
        DataEventFilter<DomeTemperature>(),
        [&](Subscriber<DomeTemperature>& subscriber) { readAll(subscriber, temperature); });

    const auto positionWatch =
        watchStatus(*positions, [&](const EntityStatus& status) { position.update(status); });
    const auto temperatureWatch =
        watchStatus(*temperatures, [&](const EntityStatus& status) { temperature.update(status); });

    while (!interrupted) {
        const auto values = latest->readMostRecent(250ms); // sleeps, then reads
        std::printf("\x1b[2J\x1b[H");                      // clear the screen
        position.show("dome/position", "callback");
        temperature.show("dome/temperature", "notifier");
        std::printf("%-18s %-10s %s\n", "dome/position", "latest",
                    values.empty() ? "nothing yet" : text(*values.front()).c_str());
        std::fflush(stdout);
    }
    std::printf("\nbye\n");
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    CommandLine commandLine("Shows the latest values of a dome until Ctrl-C");
    Settings settings;
    settings.addTo(commandLine);
    if (const auto exitCode = commandLine.parse(argc, argv)) {
        return *exitCode;
    }

    configureLogging();
    std::signal(SIGINT, interrupt);
    std::signal(SIGTERM, interrupt);
    try {
        display(settings);
    } catch (const std::exception& error) {
        std::cerr << "display: " << error.what() << '\n';
        return 1;
    }
}
