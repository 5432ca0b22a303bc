// SPDX-License-Identifier: Apache-2.0
// Prints the steady clock's nanoseconds at which the first sample came, over the binding.
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

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
    const auto plex = ovra::plex::Plex::create();
    const auto subscriber = plex->createSubscriber<vexstubif::AltAz>(
        ovra::plex::Uri(std::string("dds+ps://") + argv[1] + "/" + argv[2]));
    const auto subscription =
        subscriber->subscribeAsync(ovra::plex::ps::DataEventFilter<vexstubif::AltAz>(),
                                   [&](auto&, const ovra::plex::ps::DataEvent<vexstubif::AltAz>&) {
                                       if (!came) {
                                           came = true;
                                           first.set_value(Clock::now());
                                       }
                                   });
    auto arrival = first.get_future();
    if (arrival.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        std::cerr << argv[0] << ": no sample came\n";
        return 1;
    }
    std::cout << arrival.get().time_since_epoch().count() << '\n';
}
