// SPDX-License-Identifier: Apache-2.0
// Publishes the position and the temperature of a dome, each value numbered from 0.
#include "Settings.hpp"

#include <plex/Plex.hpp>
#include <plex/dds/Status.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <chrono>
#include <iostream>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

namespace
{

/// Waits until a publisher has so many subscribers, so that they get its first value, too.
template <class Publisher>
void awaitSubscribers(const Publisher& publisher, unsigned count)
{
    if (!waitForMatched(publisher, count, 30s)) {
        throw std::runtime_error("fewer than " + std::to_string(count) + " subscribers after 30 s");
    }
}

void publish(const Settings& settings, unsigned count, double rate, unsigned subscribers)
{
    auto plex = ovra::plex::Plex::create(settings.properties());
    auto positions = plex->createPublisher<vexstubif::AltAz>(settings.uri("dome/position"));
    auto temperatures = plex->createPublisher<vexstubif::DomeTemperature>(settings.uri("dome/temperature"));

    awaitSubscribers(*positions, subscribers);
    awaitSubscribers(*temperatures, subscribers);

    auto position = positions->createDataEntity();
    auto temperature = temperatures->createDataEntity();
    const auto period = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1.0 / rate));
    auto next = std::chrono::steady_clock::now();
    for (unsigned i = 0; i < count; ++i) {
        position->setAlt(i);
        position->setAz(i / 10.0);
        positions->publish(*position, 0ms);
        temperature->setTemp(i);
        temperatures->publish(*temperature, 0ms);
        next += period;
        std::this_thread::sleep_until(next);
    }
    // Closing waits until the values are acknowledged.
    positions->close();
    temperatures->close();
    std::cout << "published " << count << " positions and " << count << " temperatures\n";
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what fails before the try block has nobody to tell
int main(int argc, char** argv)
{
    CommandLine commandLine("Publishes the position and the temperature of a dome");
    Settings settings;
    unsigned count = 100;
    double rate = 20.0;
    unsigned subscribers = 0;
    settings.addTo(commandLine);
    commandLine.option("--count", count, "how many values of each topic");
    commandLine.option("--rate", rate, "values a second");
    commandLine.option("--subscribers", subscribers, "how many subscribers of each topic to wait for");
    if (const auto exitCode = commandLine.parse(argc, argv)) {
        return *exitCode;
    }

    configureLogging();
    try {
        publish(settings, count, rate, subscribers);
    } catch (const std::exception& error) {
        std::cerr << "publisher: " << error.what() << '\n';
        return 1;
    }
}
