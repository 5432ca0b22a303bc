// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cassert>
#include <limits>

namespace ovra::plex::ps
{

template <class T, class ST>
struct DdsSubscriber<T, ST>::EventRead {
    Filter filter;
    Events& events;
    const char* takeFailed;
    const char* loanNotReturned;
    std::size_t remaining = std::numeric_limits<std::size_t>::max(); ///< events until the limit

    /// The largest number of samples for the next take.
    std::int32_t takeLimit() const
    {
        return internal::sampleLimit(remaining == std::numeric_limits<std::size_t>::max() ? 0 : remaining);
    }
};

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
    for (std::int32_t i = 0; i < samples.size() && read.remaining > 0; ++i) {
        const auto& info = samples.infos[i];
        if (isDeliverable(samples, i) && read.filter.matches(info)) {
            read.events.push_back(
                std::make_shared<DdsDataEvent<T>>(internal::toSeconds(info.source_timestamp), true,
                                                  createDataEntityFrom<T, ST>(samples.data[i]),
                                                  read.filter.instanceState(), InstanceEvent::Update));
            --read.remaining;
        }
    }
}

template <class T, class ST>
bool DdsSubscriber<T, ST>::takeEvents(internal::dds::DataReader& reader, EventRead& read) const
{
    bool anyData = false;
    while (read.remaining > 0) {
        Samples samples;
        if (!checkTaken(internal::take(reader, samples, read.takeLimit()), read.takeFailed)) {
            break;
        }
        anyData = true;
        const internal::LoanGuard guard(reader, samples, logger_, read.loanNotReturned);
        appendEvents(samples, read);
    }
    return anyData;
}

template <class T, class ST>
std::size_t DdsSubscriber<T, ST>::readDataEventsCache(const DataEventFilter<T>& filter, Events& events)
{
    const auto reader = openReader();
    const std::size_t before = events.size();
    EventRead read{Filter(filter, logger_), events,
                   "Reader take failed for dds subscriber's readDataEventsCache.", internal::loanNotReturned};
    takeEvents(*reader, read);
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
    const auto end = internal::endOf(timeout);
    for (;;) {
        const std::chrono::nanoseconds remaining = end - internal::WallClock::now();
        if (remaining < overdue) {
            break;
        }
        const auto woken = data.wait(internal::waitFor(remaining));
        if (woken == internal::DataWait::Result::Timeout ||
            (woken == internal::DataWait::Result::Data && takeEvents(*reader, read))) {
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
        if (data.wait(internal::shortWait()) == internal::DataWait::Result::Data) {
            takeEvents(*reader, read);
        }
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
    const auto end = internal::endOf(timeout);
    while (read.remaining > 0 && end > internal::WallClock::now()) {
        checkOpen();
        if (data.wait(internal::shortWait()) == internal::DataWait::Result::Data) {
            takeEvents(*reader, read);
        }
    }
    return eventCountLimit - read.remaining;
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
    internal::DataWait data(*reader, closing_, logger_, this->uri_);
    const auto end = internal::endOf(timeout);
    std::size_t total = 0;
    while (end > internal::WallClock::now()) {
        checkOpen();
        if (data.wait(internal::shortWait()) != internal::DataWait::Result::Data) {
            continue;
        }
        Samples samples;
        if (!checkTaken(internal::take(*reader, samples, internal::sampleLimit(maxCount)),
                        "Reader take failed in poll.")) {
            continue;
        }
        const internal::LoanGuard guard(*reader, samples, logger_, internal::loanNotReturned);
        manager->dispatchToSync(samples);
        total += static_cast<std::size_t>(samples.size());
    }
    return total;
}

} // namespace ovra::plex::ps
