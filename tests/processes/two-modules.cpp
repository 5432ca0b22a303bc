// SPDX-License-Identifier: Apache-2.0
// Two module libraries, neither of which sees the symbols of the other, share what a process has once: inside
// an asynchronous callback of the one, no subscriber of the other can be closed.
#include <keyed/Sensor.hpp>
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    using ovra::plex::Uri;
    if (argc != 3) {
        std::cerr << "usage: two-modules DIRECTORY DOMAIN\n";
        return 2;
    }
    const auto plex = ovra::plex::Plex::create({{"dds.module.path", argv[1]}, {"dds.domain", argv[2]}});
    const Uri position("dds+ps:///two-modules/position");
    const auto subscriber = plex->createSubscriber<vexstubif::AltAz>(position);
    const auto other = plex->createSubscriber<keyed::Sensor>(Uri("dds+ps:///two-modules/sensor"));
    std::string refusal;
    const auto handle =
        subscriber->subscribeAsync(ovra::plex::ps::DataEventFilter<vexstubif::AltAz>(),
                                   [&](ovra::plex::ps::Subscriber<vexstubif::AltAz>&,
                                       const ovra::plex::ps::DataEvent<vexstubif::AltAz>&) {
                                       try {
                                           other->close();
                                       } catch (const ovra::plex::IllegalStateException& error) {
                                           refusal = error.what();
                                       }
                                   });
    const auto publisher = plex->createPublisher<vexstubif::AltAz>(position);
    publisher->publish(*publisher->createDataEntity(), std::chrono::milliseconds(0));
    std::cout << refusal << '\n';
    const std::string expected =
        "Publishers and subscribers can not be closed inside an asynchronous callback";
    return refusal.compare(0, expected.size(), expected) == 0 ? 0 : 1;
}
