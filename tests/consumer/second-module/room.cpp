// SPDX-License-Identifier: Apache-2.0
// Sends itself a value: room DOMAIN.
#include <plex/Plex.hpp>

#include <array>
#include <control/room/View.hpp>
#include <iostream>
#include <string>

int main(int /*argc*/, char** argv)
{
    const ovra::plex::Uri uri{"dds+ps://" + std::string(argv[1]) + "/dome/view"};
    const auto plex = ovra::plex::Plex::create();
    const auto subscriber = plex->createSubscriber<control::room::View>(uri);
    const auto publisher = plex->createPublisher<control::room::View>(uri);
    const auto view = publisher->createDataEntity();
    view->setObserver("anna");
    view->editUpper().opening = 12.5;
    view->editUpper().currents = {1.5, 2.5};
    view->setMotions(std::array{dome::Motion::CLOSING, dome::Motion::STOPPED});
    publisher->publish(*view, std::chrono::milliseconds(0));

    for (const auto& received : subscriber->read(0)) {
        std::cout << received->getObserver() << " sees " << received->getUpper().opening << " % and "
                  << received->getUpper().currents.size() << " motors, the first of "
                  << received->getMotions().size() << " is " << dome::toString(received->getMotions()[0])
                  << '\n';
    }
}
