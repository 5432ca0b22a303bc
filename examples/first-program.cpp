// SPDX-License-Identifier: Apache-2.0
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <iostream>

int main()
{
    const ovra::plex::Uri uri{"dds+ps://0/dome/position"};
    const auto plex = ovra::plex::Plex::create();
    const auto subscriber = plex->createSubscriber<vexstubif::AltAz>(uri);
    const auto publisher = plex->createPublisher<vexstubif::AltAz>(uri);
    const auto position = publisher->createDataEntity();
    position->setAlt(45.0);
    publisher->publish(*position, std::chrono::milliseconds(0));

    for (const auto& received : subscriber->read(0)) {
        std::cout << "altitude " << received->getAlt() << '\n';
    }
}
