// SPDX-License-Identifier: Apache-2.0
// Leaves all entities to static storage, which ends after main(): as singletons of an application do.
// Succeeds when the process ends well.
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <iostream>

namespace
{

using vexstubif::AltAz;

std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> publisher;
std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber;
std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>> mrvSubscriber;
std::unique_ptr<ovra::plex::ps::Subscription> subscription;

} // namespace

int main()
{
    const auto plex = ovra::plex::Plex::create();
    // A domain of its own: Fast DDS may crash if somebody announces himself as the process exits.
    const ovra::plex::Uri uri("dds+ps://186/processes/static");
    publisher = plex->createPublisher<AltAz>(uri);
    subscriber = plex->createSubscriber<AltAz>(uri);
    mrvSubscriber = plex->createMrvSubscriber<AltAz>(uri);
    int received = 0;
    subscription = subscriber->subscribeAsync(ovra::plex::ps::DataEventFilter<AltAz>(),
                                              [&](auto&, const auto&) { ++received; });
    publisher->publish(*publisher->createDataEntity(), std::chrono::milliseconds(0));
    if (received != 1) {
        std::cerr << "received " << received << " values instead of one\n";
        return 1;
    }
    return 0;
}
