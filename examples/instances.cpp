// SPDX-License-Identifier: Apache-2.0
// Several channels on one topic, which their number tells apart: publishes each through a publisher of its
// own, reads one of them, and asks for the most recent value of all. Usage: instances [DOMAIN]
//
// The types of vexstubif have no key. This one has: keyed::Channel is of the tests' interface module
// (tests/support/keyed), so the tests build the example: ./dev build default instances.
#include <keyed/Channel.hpp>
#include <plex/Plex.hpp>

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using keyed::Channel;

namespace
{

using ChannelPublisher = ovra::plex::ps::InstancePublisher<Channel>;

/// One publisher for each of the channels 1 to count.
std::vector<std::unique_ptr<ChannelPublisher>> publishersOf(ovra::plex::ps::Publisher<Channel>& topic,
                                                            int count)
{
    std::vector<std::unique_ptr<ChannelPublisher>> publishers;
    const auto key = topic.createDataEntity();
    for (int number = 1; number <= count; ++number) {
        key->setNumber(number);
        publishers.push_back(topic.createInstancePublisher(*key));
    }
    return publishers;
}

void exchange(const std::string& domain)
{
    const ovra::plex::Uri uri{"dds+ps://" + domain + "/dome/channels"};
    const auto plex = ovra::plex::Plex::create();
    const auto subscriber = plex->createSubscriber<Channel>(uri);
    const auto latest = plex->createMrvSubscriber<Channel>(uri);
    const auto topic = plex->createPublisher<Channel>(uri);
    const auto publishers = publishersOf(*topic, 3);

    for (const double level : {0.25, 0.75}) {
        for (const auto& publisher : publishers) {
            const auto channel = publisher->createDataEntity(); // carries the channel's number
            channel->setLevel(level * channel->getNumber());
            publisher->publish(*channel, 0ms);
        }
    }

    const auto second = subscriber->createDataEntity();
    second->setNumber(2);
    while (const auto channel = subscriber->readInstance(*second)) {
        std::cout << "channel 2 had " << channel->getLevel() << '\n';
    }
    for (const auto& channel : latest->readMostRecent(0ms)) {
        std::cout << "channel " << channel->getNumber() << " has " << channel->getLevel() << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        exchange(argc > 1 ? argv[1] : "0");
    } catch (const std::exception& error) {
        std::cerr << "instances: " << error.what() << '\n';
        return 1;
    }
}
