// SPDX-License-Identifier: Apache-2.0
// Shows what shutter-publisher sends: shutter-subscriber [DOMAIN [COUNT]]. Succeeds when COUNT values of each
// shutter have come, all of them right.
#include <plex/Plex.hpp>

#include <chrono>
#include <dome/Shutter.hpp>
#include <exception>
#include <iostream>
#include <map>
#include <string>

using namespace std::chrono_literals;

namespace
{

void show(const dome::Shutter& shutter)
{
    std::cout << shutter.getName() << ": " << dome::toString(shutter.getMotion()) << ", "
              << shutter.getOpening() << " % open, motors at";
    for (const double current : shutter.getCurrents()) {
        std::cout << ' ' << current << " A";
    }
    std::cout << ", " << shutter.getFault().value_or("no fault") << '\n';
}

/// Whether it is the value that was published as number i of its shutter.
bool isNumber(unsigned i, const dome::Shutter& shutter)
{
    const auto currents = shutter.getCurrents();
    return shutter.getMotion() == dome::Motion::OPENING && shutter.getOpening() == i &&
           currents.size() == 2 && currents[0] == i * 0.5 && currents[1] == i * 0.25 &&
           shutter.getFault() ==
               (i % 5 == 4 ? std::optional<std::string_view>("motor 2 is hot") : std::nullopt);
}

bool receive(const std::string& domain, unsigned count)
{
    const auto plex = ovra::plex::Plex::create(
        {{"dds.qos.profile.file", PROFILES}, {"dds.qos.profile.library", "reliable"}});
    const auto subscriber =
        plex->createSubscriber<dome::Shutter>(ovra::plex::Uri{"dds+ps://" + domain + "/dome/shutters"});

    std::map<std::string, unsigned, std::less<>> received;
    const auto patience = std::chrono::steady_clock::now() + 30s;
    while ((received["upper"] < count || received["lower"] < count) &&
           std::chrono::steady_clock::now() < patience) {
        std::vector<std::shared_ptr<ovra::plex::ps::DataEvent<dome::Shutter>>> events;
        subscriber->readDataEvents({}, events, 1, 1000ms); // waits for one
        for (const auto& event : events) {
            const dome::Shutter& shutter = *event->getData();
            show(shutter);
            if (!isNumber(received[std::string(shutter.getName())]++, shutter)) {
                std::cout << "this was not expected\n";
                return false;
            }
        }
    }
    std::cout << "received " << received["upper"] << " of " << count << " values of the upper and "
              << received["lower"] << " of the lower shutter\n";
    return received["upper"] == count && received["lower"] == count;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return receive(argc > 1 ? argv[1] : "0", argc > 2 ? static_cast<unsigned>(std::stoul(argv[2])) : 20U)
                   ? 0
                   : 1;
    } catch (const std::exception& error) {
        std::cerr << "shutter-subscriber: " << error.what() << '\n';
        return 1;
    }
}
