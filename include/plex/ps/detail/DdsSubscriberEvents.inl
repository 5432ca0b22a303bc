// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cassert>

namespace ovra::plex::ps
{

template <class T, class ST>
void DdsSubscriber<T, ST>::checkTimeout(const std::chrono::milliseconds& timeout,
                                        const char* failureText) const
{
    if (timeout.count() < 0) {
        internal::throwWithUri(failureText, this->uri_);
    }
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::readDataEvents(const DataEventFilter<T>& filter, Events& events,
                                                 std::size_t eventCountLimit,
                                                 const std::chrono::milliseconds& timeout)
{
    this->checkState();
    checkTimeout(timeout, "Negative timeout given to readDataEvents.");
    if (eventCountLimit == 0) {
        return timeout.count() == 0 ? readDataEventsCache(filter, events)
                                    : readDataEventsUntilTimeout(filter, events, timeout);
    }
    return timeout.count() == 0
               ? readDataEventsUntilEventCountLimit(filter, events, eventCountLimit)
               : readDataEventsUntilEventCountLimitOrTimeout(filter, events, eventCountLimit, timeout);
}

template <class T, class ST>
void DdsSubscriber<T, ST>::appendEvents(const Samples& samples, EventRead& read) const
{
    internal::Tally tally(endpoint_->counters);
    for (std::int32_t i = 0; i < samples.size() && read.remaining > 0; ++i) {
        const auto& info = samples.infos[i];
        if (isDeliverable(samples, i, tally) && Manager::matches(samples.data[i], info, read.filter)) {
            read.events.push_back(
                std::make_shared<DdsDataEvent<T>>(internal::toSeconds(info.source_timestamp), true,
                                                  createDataEntityFrom<T, ST>(samples.data[i]),
                                                  read.filter.instanceState(), InstanceEvent::Update));
            --read.remaining;
            ++tally.delivered;
        }
    }
}

template <class T, class ST>
template <class Take>
bool DdsSubscriber<T, ST>::takeEvents(internal::dds::DataReader& reader, EventRead& read, Take take) const
{
    Samples samples;
    if (!checkTaken(take(samples), read.takeFailed)) {
        return false;
    }
    const internal::LoanGuard guard(reader, samples, logger_, read.loanNotReturned);
    appendEvents(samples, read);
    return true;
}

template <class T, class ST>
void DdsSubscriber<T, ST>::takeEventsArrived(internal::dds::DataReader& reader, EventRead& read) const
{
    internal::ArrivedSamples arrived(reader);
    const auto take = [&](Samples& samples) {
        return arrived.take(samples);
    };
    while (takeEvents(reader, read, take) && !closing_.get_trigger_value()) {
    }
}

template <class T, class ST>
void DdsSubscriber<T, ST>::takeEventsWanted(internal::DataWait::Result woken,
                                            internal::dds::DataReader& reader, EventRead& read) const
{
    takeWoken(woken, [&](const internal::SampleStates& states) {
        return read.remaining > 0 && takeEvents(reader, read, [&](Samples& samples) {
                   return samples.take(reader, internal::sampleLimit(read.remaining), states);
               });
    });
}

template <class T, class ST>
template <class Take>
bool DdsSubscriber<T, ST>::takeWoken(internal::DataWait::Result woken, Take take) const
{
    switch (woken) {
    case internal::DataWait::Result::Look:
        if (!take(internal::unreadAlive)) {
            return false;
        }
        take(internal::anyState);
        return true;
    case internal::DataWait::Result::Data:
        return take(internal::anyState);
    default:
        return false;
    }
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::readDataEventsCache(const DataEventFilter<T>& filter, Events& events)
{
    const auto reader = openReader();
    const std::size_t before = events.size();
    EventRead read{Filter(filter, logger_), events,
                   "Reader take failed for dds subscriber's readDataEventsCache.", internal::loanNotReturned};
    takeEventsArrived(*reader, read);
    return events.size() - before;
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::readDataEventsUntilTimeout(const DataEventFilter<T>& filter, Events& events,
                                                             const std::chrono::milliseconds& timeout)
{
    constexpr std::chrono::nanoseconds overdue{-999999};
    const auto self = this->shared_from_this();
    const auto reader = openReader();
    const std::size_t before = events.size();
    EventRead read{Filter(filter, logger_), events, "Reader take failed in readDataEventsUntilTimeout.",
                   internal::loanNotReturned};
    internal::DataWait data(*reader, closing_, logger_, this->uri_);
    const auto end = internal::timeoutEnd(timeout);
    const auto take = [&](const internal::SampleStates& states) {
        return takeEvents(*reader, read, [&](Samples& samples) {
            return samples.take(*reader, internal::dds::LENGTH_UNLIMITED, states);
        });
    };
    for (;;) {
        const std::chrono::nanoseconds remaining = end - internal::WallClock::now();
        if (remaining < overdue) {
            break;
        }
        const auto woken = data.wait(internal::waitDuration(remaining));
        if (woken == internal::DataWait::Result::Timeout) {
            break;
        }
        if (takeWoken(woken, take)) {
            takeEventsArrived(*reader, read); // as Fast DDS gives but so many samples at a time
            break;
        }
        checkOpen();
    }
    return events.size() - before;
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::readDataEventsUntilEventCountLimit(const DataEventFilter<T>& filter,
                                                                     Events& events,
                                                                     std::size_t eventCountLimit)
{
    const auto self = this->shared_from_this();
    const auto reader = openReader();
    EventRead read{Filter(filter, logger_), events,
                   "Reader take failed for dds subscriber's readDataEventsUntilEventCountLimit.",
                   internal::loanNotReturnedCounting, eventCountLimit};
    internal::DataWait data(*reader, closing_, logger_, this->uri_);
    while (read.remaining > 0) {
        checkOpen();
        takeEventsWanted(data.wait(internal::shortestWait()), *reader, read);
    }
    return eventCountLimit;
}

template <class T, class ST>
std::size_t
DdsSubscriber<T, ST>::readDataEventsUntilEventCountLimitOrTimeout(const DataEventFilter<T>& filter,
                                                                  Events& events, std::size_t eventCountLimit,
                                                                  const std::chrono::milliseconds& timeout)
{
    assert(eventCountLimit != 0);
    assert(timeout.count() != 0);
    const auto self = this->shared_from_this();
    const auto reader = openReader();
    EventRead read{Filter(filter, logger_), events,
                   "Reader take failed for dds subscriber's readDataEventsUntilEventCountLimitOrTimeout.",
                   internal::loanNotReturnedCounting, eventCountLimit};
    internal::DataWait data(*reader, closing_, logger_, this->uri_);
    const auto end = internal::timeoutEnd(timeout);
    while (read.remaining > 0 && end > internal::WallClock::now()) {
        checkOpen();
        takeEventsWanted(data.wait(internal::shortestWait()), *reader, read);
    }
    return eventCountLimit - read.remaining;
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::takePolled(internal::dds::DataReader& reader, Manager& manager,
                                             std::size_t maxCount, const internal::SampleStates& states,
                                             internal::WallClock::time_point end) const
{
    const internal::PollTurn::Pass pass(manager.pollTurn(), end);
    if (!pass) {
        return 0;
    }
    Samples samples;
    if (!checkTaken(samples.take(reader, internal::sampleLimit(maxCount), states),
                    "Reader take failed in poll.")) {
        return 0;
    }
    const internal::LoanGuard guard(reader, samples, logger_, internal::loanNotReturned);
    return manager.dispatchToSync(samples);
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::poll(std::size_t maxCount, const std::chrono::milliseconds& timeout)
{
    this->checkState();
    checkTimeout(timeout, "Negative timeout given to poll.");
    const auto self = this->shared_from_this();
    const auto manager = openManager();
    manager->checkNotInSyncCallback();
    const auto reader = openReader();
    const auto end = internal::timeoutEnd(timeout);
    internal::DataWait data(*reader, closing_, logger_, this->uri_);
    std::size_t total = 0;
    while (end > internal::WallClock::now() && closer_.load() != std::this_thread::get_id()) {
        checkOpen();
        if (manager->hasUntold()) {
            const internal::PollTurn::Pass pass(manager->pollTurn(), end);
            total += pass ? manager->dispatchUntold(maxCount) : 0;
            continue;
        }
        takeWoken(data.wait(internal::shortestWait()), [&](const internal::SampleStates& states) {
            const auto taken = takePolled(*reader, *manager, maxCount, states, end);
            total += taken;
            return taken > 0;
        });
    }
    return total;
}

} // namespace ovra::plex::ps
