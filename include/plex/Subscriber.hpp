// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntityFactory.hpp>
#include <plex/DataEvent.hpp>
#include <plex/DataEventFilter.hpp>
#include <plex/LoanedDataEntity.hpp>
#include <plex/Subscription.hpp>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace ovra::plex::ps
{

/// Receives values of the topic type T from one topic.
///
/// Every read consumes what it returns: reads and callbacks on one subscriber compete for the samples. To
/// look at the latest value again and again use a MrvSubscriber. Samples that are older than the Latency or
/// past the Deadline that the subscriber was made with are consumed and dropped, and so are samples without
/// a value.
///
/// Threads: all operations may be called from several threads at once, and inside callbacks, close()
/// included. Ownership: the application owns it; loans and subscriptions keep alive what they need of it.
template <class T>
class PLEX_EXPORT Subscriber : public virtual DataEntityFactory<T>
{
public:
    /// A callback that gets the sample with its circumstances.
    using Callback = std::function<void(Subscriber<T>&, const DataEvent<T>&)>;

    /// A callback that only hears that there is something to read.
    using Notifier = std::function<void(Subscriber<T>&)>;

    /// Ends all subscriptions and gives the transport's resources back; loans stay valid. Closing again
    /// does nothing. Waits for callbacks that run on other threads, but not for the samples that are still to
    /// be told; inside a callback it waits for nothing.
    virtual void close() = 0;

    /// Takes the values received so far, at most maxSamples of them (0: no limit): oldest first, or, where
    /// the type has a key, instance by instance and the oldest of each first. Never waits.
    /// @throws IllegalStateException when the subscriber is closed.
    /// @throws PlexException when the transport fails; once it has given values, they are returned and the
    ///         failure is logged only.
    virtual std::vector<std::shared_ptr<T>> read(std::size_t maxSamples) = 0;

    /// Takes one value of the instance whose key the given value carries; empty when there is none.
    /// @throws IllegalStateException when the subscriber is closed or the value is another transport's.
    /// @throws PlexException when the type has no key or the transport fails.
    virtual std::shared_ptr<T> readInstance(const T& instance) = 0;

    /// As above, but copies the fields into `value`, which is left alone when there is nothing to read.
    /// @returns whether a value was read.
    virtual bool readInstance(const T& instance, T& value) = 0;

    /// Takes one value without copying it; empty when there is none.
    /// @throws as read().
    virtual std::shared_ptr<LoanedDataEntity<T>> loanedRead() = 0;

    /// Takes one value of an instance without copying it; empty when there is none.
    /// @throws as readInstance().
    virtual std::shared_ptr<LoanedDataEntity<T>> loanedReadInstance(const T& instance) = 0;

    /// Takes samples that pass the filter and appends them to `events`; samples that do not pass are
    /// consumed too.
    ///
    /// @param maxEvents stop after so many events (0: no limit).
    /// @param timeout how long to wait, not negative. With no limit of events the call returns after the
    ///        first data, with neither limit nor timeout it never waits, and with a limit but no timeout it
    ///        waits until the limit is reached, in steps so short that waiting takes part of a core.
    /// @returns the number of events appended. Events appended before a failure stay.
    /// @throws IllegalStateException when the subscriber is closed, also while the call waits.
    /// @throws PlexException when the timeout is negative or the transport fails.
    virtual std::size_t readDataEvents(const DataEventFilter<T>& filter,
                                       std::vector<std::shared_ptr<DataEvent<T>>>& events,
                                       std::size_t maxEvents, const std::chrono::milliseconds& timeout) = 0;

    /// Registers a callback that poll() serves on the thread that calls it.
    /// @throws IllegalStateException when the subscriber is closed.
    /// @throws PlexException when the filter intersects with that of another subscription.
    virtual std::unique_ptr<Subscription> subscribe(const DataEventFilter<T>& filter, Callback callback) = 0;

    /// Takes samples for the whole time given, `count` (0: no limit) at a time, and calls the callbacks
    /// registered by subscribe(). A timeout of 0 takes nothing.
    /// @returns the number of samples taken, whether or not a callback wanted them.
    /// @throws as readDataEvents(), and whatever a callback throws: the samples that it kept from being told
    /// are
    ///         told by the next call. IllegalStateException inside a callback that it serves.
    virtual std::size_t poll(std::size_t count, const std::chrono::milliseconds& timeout) = 0;

    /// Registers a callback that is called as data arrives: before publish() returns, where a publisher of
    /// the same process sends it, on the publishing thread; else on a thread of the transport. Property
    /// "dds.callback.thread" can ask for a thread of its own. The event's value is valid only until the
    /// callback returns. Any operation may be called inside it, but that on a thread of the transport no
    /// publisher or subscriber can be made. What it publishes is called back for when it has returned.
    /// @throws as subscribe().
    virtual std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                         Callback callback) = 0;

    /// Registers a notifier that is called as data arrives, where callbacks are, at most once for
    /// each arrival, and leaves the samples to be read. What it has been told of counts as seen: waiting
    /// reads and poll() do not wake for it.
    /// @throws as subscribe().
    virtual std::unique_ptr<Subscription> subscribeAsync(const DataEventFilter<T>& filter,
                                                         Notifier notifier) = 0;
};

} // namespace ovra::plex::ps
