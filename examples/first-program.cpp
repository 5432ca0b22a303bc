// SPDX-License-Identifier: Apache-2.0
// Publishes one position and reads it back.
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <iostream>

using namespace std::chrono_literals;

int main()
{
    // snippet: first-program
    auto plex = ovra::plex::Plex::create();
    const ovra::plex::Uri uri{"dds+ps://0/dome/position"};
    auto subscriber = plex->createSubscriber<vexstubif::AltAz>(uri);
    auto publisher = plex->createPublisher<vexstubif::AltAz>(uri);

    auto position = publisher->createDataEntity();
    position->setAlt(45.0);
    position->setAz(180.0);
    publisher->publish(*position, 0ms);

    for (const auto& received : subscriber->read(0)) {
        std::cout << "alt " << received->getAlt() << ", az " << received->getAz() << '\n';
    }
    // end of snippet
}
