// SPDX-License-Identifier: Apache-2.0
// Prints the steady clock's nanoseconds at which the first sample came, over bare Fast DDS.
#include "BareEntities.hpp"
#include "BareParticipant.hpp"

#include <chrono>
#include <future>
#include <iostream>

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " DOMAIN TOPIC\n";
        return 2;
    }
    std::promise<Clock::time_point> first;
    bool came = false;
    const auto note = [&](const plex::bench::WireAltAz&) {
        if (!came) {
            came = true;
            first.set_value(Clock::now());
        }
    };
    plex::bench::BareListener<decltype(note)> listener(note);
    const auto participant = plex::bench::makeBareParticipant(static_cast<unsigned>(std::stoul(argv[1])));
    const plex::bench::BareReader reader(participant, argv[2], {}, &listener);
    auto arrival = first.get_future();
    if (arrival.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        std::cerr << argv[0] << ": no sample came\n";
        return 1;
    }
    std::cout << arrival.get().time_since_epoch().count() << '\n';
}
