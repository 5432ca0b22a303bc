// SPDX-License-Identifier: Apache-2.0
// Receives what the publisher example sends, shows each value with its age, and succeeds when all came, once
// and in order.
#include "Settings.hpp"

#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <mutex>

namespace
{

using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::Subscriber;

double ageInMilliseconds(double sourceTimestamp)
{
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    return (now.count() - sourceTimestamp) * 1000.0;
}

/// Counts numbered values of both topics. Callbacks of different topics run on different threads.
class Tally
{
public:
    explicit Tally(unsigned expected) : expected_(expected) {}

    void position(const DataEvent<vexstubif::AltAz>& event)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::printf("position     alt %7.2f  az %7.2f  age %8.3f ms\n", event.getData()->getAlt(),
                    event.getData()->getAz(), ageInMilliseconds(event.getSourceTimestamp()));
        count(positions_, event.getData()->getAlt());
    }

    void temperature(const DataEvent<vexstubif::DomeTemperature>& event)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::printf("temperature  %11.2f              age %8.3f ms\n", event.getData()->getTemp(),
                    ageInMilliseconds(event.getSourceTimestamp()));
        count(temperatures_, event.getData()->getTemp());
    }

    /// Waits until everything has come. @returns whether it has, each value once and in order.
    bool wait(std::chrono::duration<double> patience)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        complete_.wait_for(lock, patience,
                           [this] { return positions_ >= expected_ && temperatures_ >= expected_; });
        std::printf("received %u of %u positions and %u of %u temperatures, %u out of order\n", positions_,
                    expected_, temperatures_, expected_, outOfOrder_);
        return positions_ == expected_ && temperatures_ == expected_ && outOfOrder_ == 0;
    }

private:
    void count(unsigned& received, double number)
    {
        outOfOrder_ += number == received ? 0 : 1;
        ++received;
        complete_.notify_one();
    }

    const unsigned expected_;
    std::mutex mutex_; ///< guards what follows
    std::condition_variable complete_;
    unsigned positions_ = 0;
    unsigned temperatures_ = 0;
    unsigned outOfOrder_ = 0;
};

bool receive(const Settings& settings, unsigned count, std::chrono::duration<double> patience)
{
    auto plex = ovra::plex::Plex::create(settings.properties());
    auto positions = plex->createSubscriber<vexstubif::AltAz>(settings.uri("dome/position"));
    auto temperatures = plex->createSubscriber<vexstubif::DomeTemperature>(settings.uri("dome/temperature"));

    Tally tally(count);
    const auto positionSubscription =
        positions->subscribeAsync(DataEventFilter<vexstubif::AltAz>(),
                                  [&](Subscriber<vexstubif::AltAz>&,
                                      const DataEvent<vexstubif::AltAz>& event) { tally.position(event); });
    const auto temperatureSubscription = temperatures->subscribeAsync(
        DataEventFilter<vexstubif::DomeTemperature>(),
        [&](Subscriber<vexstubif::DomeTemperature>&, const DataEvent<vexstubif::DomeTemperature>& event) {
            tally.temperature(event);
        });
    return tally.wait(patience);
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    CommandLine commandLine("Receives what the publisher example sends");
    Settings settings;
    unsigned count = 100;
    double patience = 30.0;
    settings.addTo(commandLine);
    commandLine.option("--count", count, "how many values of each topic to expect");
    commandLine.option("--patience", patience, "how many seconds to wait for them");
    if (const auto exitCode = commandLine.parse(argc, argv)) {
        return *exitCode;
    }

    configureLogging();
    try {
        return receive(settings, count, std::chrono::duration<double>(patience)) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "subscriber: " << error.what() << '\n';
        return 1;
    }
}
