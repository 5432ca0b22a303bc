// SPDX-License-Identifier: Apache-2.0
// Opens two shutters: shutter-publisher [DOMAIN [COUNT]]. Says COUNT times where each of them is.
#include <plex/Plex.hpp>
#include <plex/dds/Status.hpp>

#include <array>
#include <chrono>
#include <dome/Shutter.hpp>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

using namespace std::chrono_literals;

namespace
{

void publish(const std::string& domain, unsigned count)
{
    const auto plex = ovra::plex::Plex::create(
        {{"dds.qos.profile.file", PROFILES}, {"dds.qos.profile.library", "reliable"}});
    const auto publisher =
        plex->createPublisher<dome::Shutter>(ovra::plex::Uri{"dds+ps://" + domain + "/dome/shutters"});
    const auto shutter = publisher->createDataEntity();
    shutter->setMotion(dome::Motion::OPENING);

    if (!waitForMatched(*publisher, 1, 30s)) {
        throw std::runtime_error("nobody listens");
    }
    for (unsigned i = 0; i < count; ++i) {
        for (const char* const name : {"upper", "lower"}) {
            shutter->setName(name);
            shutter->setOpening(i);
            shutter->setCurrents(std::array{i * 0.5, i * 0.25});
            shutter->setFault(i % 5 == 4 ? std::optional<std::string_view>("motor 2 is hot") : std::nullopt);
            publisher->publish(*shutter, 0ms);
        }
        std::this_thread::sleep_for(50ms);
    }
    publisher->close(); // waits until the values are acknowledged
}

} // namespace

int main(int argc, char** argv)
{
    try {
        publish(argc > 1 ? argv[1] : "0", argc > 2 ? static_cast<unsigned>(std::stoul(argv[2])) : 20U);
    } catch (const std::exception& error) {
        std::cerr << "shutter-publisher: " << error.what() << '\n';
        return 1;
    }
}
