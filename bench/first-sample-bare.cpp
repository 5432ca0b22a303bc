// SPDX-License-Identifier: Apache-2.0
// Prints the steady clock's nanoseconds at which the first sample came, over bare Fast DDS.
#include "BareEntities.hpp"
#include "BareParticipant.hpp"

#include <chrono>
#include <future>
#include <iostream>
#include <string>

namespace
{

/// Waits for the first sample and prints when it came. @returns whether one came.
bool printFirst(const std::string& domain, const std::string& topic)
{
    using Clock = std::chrono::steady_clock;
    std::promise<Clock::time_point> first;
    bool came = false;
    const auto note = [&](const plex::bench::WireAltAz&) {
        if (!came) {
            came = true;
            first.set_value(Clock::now());
        }
    };
    plex::bench::BareListener<decltype(note)> listener(note);
    const auto participant = plex::bench::makeBareParticipant(static_cast<unsigned>(std::stoul(domain)));
    const plex::bench::BareReader reader(participant, topic, {}, &listener);
    auto arrival = first.get_future();
    if (arrival.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        std::cerr << "first-sample-bare: no sample came\n";
        return false;
    }
    std::cout << arrival.get().time_since_epoch().count() << '\n';
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " DOMAIN TOPIC\n";
        return 2;
    }
    try {
        return printFirst(argv[1], argv[2]) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "first-sample-bare: " << error.what() << '\n';
        return 1;
    }
}
