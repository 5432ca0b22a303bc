// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "EntityTest.hpp"

#include <plex/DataEventFilter.hpp>
#include <plex/Subscriber.hpp>

#include <ostream>
#include <set>
#include <vector>

namespace plex::test
{

using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::InstanceEvent;
using ovra::plex::ps::InstanceState;
using ovra::plex::ps::Subscription;
using Filter = DataEventFilter<AltAz>;
using Event = ovra::plex::ps::DataEvent<AltAz>;
using Events = std::vector<std::shared_ptr<Event>>;
using Reader = ovra::plex::ps::Subscriber<AltAz>;
using Writer = ovra::plex::ps::Publisher<AltAz>;
using Handle = std::unique_ptr<Subscription>;

/// The ways to subscribe.
enum class Kind { Sync, Async, Notifier };

inline constexpr Kind allKinds[] = {Kind::Sync, Kind::Async, Kind::Notifier};

inline std::ostream& operator<<(std::ostream& out, Kind kind)
{
    static constexpr const char* names[] = {"Sync", "Async", "Notifier"};
    return out << names[static_cast<int>(kind)];
}

/// What a callback was told.
struct Heard {
    double alt;
    InstanceState state;
    InstanceEvent event;

    friend bool operator==(const Heard&, const Heard&) = default;

    friend std::ostream& operator<<(std::ostream& out, const Heard& heard)
    {
        return out << "{alt " << heard.alt << ", state " << static_cast<int>(heard.state) << ", event "
                   << static_cast<int>(heard.event) << "}";
    }
};

/// A vocabulary for tests of callbacks. Inside one participant a callback has run when publish() returns, on
/// the publishing thread.
class CallbackTest : public EntityTest
{
protected:
    static constexpr const char* managerLogger = "plexDdsSubscriptionManager";
    static constexpr const char* listenerLogger = "plexDdsSubscriptionReaderListener";

    /// A filter that names an instance.
    static Filter naming(std::shared_ptr<AltAz> instance)
    {
        return Filter(InstanceState::Any, {}, std::move(instance));
    }

    /// Subscribes with a callback of any kind that only runs an operation.
    template <class Operation>
    static Handle subscribe(Reader& subscriber, Kind kind, const Filter& filter, Operation operation)
    {
        const auto callback = [operation](Reader&, const Event&) mutable {
            operation();
        };
        switch (kind) {
        case Kind::Sync:
            return subscriber.subscribe(filter, callback);
        case Kind::Async:
            return subscriber.subscribeAsync(filter, callback);
        case Kind::Notifier:
            break;
        }
        return subscriber.subscribeAsync(filter, [operation](Reader&) mutable { operation(); });
    }

    static Handle subscribe(Reader& subscriber, Kind kind, const Filter& filter = {})
    {
        return subscribe(subscriber, kind, filter, [] {});
    }

    /// A callback that remembers what it is told.
    static Reader::Callback hearing(std::vector<Heard>& heard)
    {
        return [&heard](Reader&, const Event& event) {
            heard.push_back({event.getData()->getAlt(), event.getInstanceState(), event.getInstanceEvent()});
        };
    }

    static std::vector<double> altitudesOf(const std::vector<Heard>& heard)
    {
        std::vector<double> result;
        for (const auto& entry : heard) {
            result.push_back(entry.alt);
        }
        return result;
    }

    using EntityTest::altitudes;

    static std::vector<double> altitudes(const Events& events)
    {
        std::vector<double> result;
        for (const auto& event : events) {
            result.push_back(event->getData()->getAlt());
        }
        return result;
    }
};

} // namespace plex::test
