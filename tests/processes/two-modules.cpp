// SPDX-License-Identifier: Apache-2.0
// Two module libraries, neither of which sees the symbols of the other, share what a process has once: what
// is published inside an asynchronous callback of the one is heard by the other when that has returned.
#include <keyed/Sensor.hpp>
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <iostream>

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
    const Uri sensor("dds+ps:///two-modules/sensor");
    const auto other = plex->createSubscriber<keyed::Sensor>(sensor);
    const auto otherPublisher = plex->createPublisher<keyed::Sensor>(sensor);
    int heard = 0;
    int heardInside = 0;
    const auto inner =
        other->subscribeAsync(ovra::plex::ps::DataEventFilter<keyed::Sensor>(),
                              [&](ovra::plex::ps::Subscriber<keyed::Sensor>&,
                                  const ovra::plex::ps::DataEvent<keyed::Sensor>&) { ++heard; });
    const auto outer = subscriber->subscribeAsync(
        ovra::plex::ps::DataEventFilter<vexstubif::AltAz>(),
        [&](ovra::plex::ps::Subscriber<vexstubif::AltAz>&,
            const ovra::plex::ps::DataEvent<vexstubif::AltAz>&) {
            otherPublisher->publish(*otherPublisher->createDataEntity(), std::chrono::milliseconds(0));
            heardInside = heard;
        });
    const auto publisher = plex->createPublisher<vexstubif::AltAz>(position);
    publisher->publish(*publisher->createDataEntity(), std::chrono::milliseconds(0));
    std::cout << "heard inside " << heardInside << ", in all " << heard << '\n';
    return heardInside == 0 && heard == 1 ? 0 : 1;
}
