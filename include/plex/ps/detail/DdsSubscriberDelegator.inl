// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
DdsSubscriberDelegator<T, ST>::DdsSubscriberDelegator(std::shared_ptr<DdsSubscriber<T, ST>> impl)
    : impl_(std::move(impl))
{
}

template <class T, class ST>
std::shared_ptr<T> DdsSubscriberDelegator<T, ST>::createDataEntity()
{
    return impl_->createDataEntity();
}

template <class T, class ST>
void DdsSubscriberDelegator<T, ST>::close()
{
    impl_->close();
}

template <class T, class ST>
std::vector<std::shared_ptr<T>> DdsSubscriberDelegator<T, ST>::read(std::size_t maxCount)
{
    return impl_->read(maxCount);
}

template <class T, class ST>
std::shared_ptr<T> DdsSubscriberDelegator<T, ST>::readInstance(const T& value)
{
    return impl_->readInstance(value);
}

template <class T, class ST>
bool DdsSubscriberDelegator<T, ST>::readInstance(const T& value, T& out)
{
    return impl_->readInstance(value, out);
}

template <class T, class ST>
std::shared_ptr<LoanedDataEntity<T>> DdsSubscriberDelegator<T, ST>::loanedRead()
{
    return impl_->loanedRead();
}

template <class T, class ST>
std::shared_ptr<LoanedDataEntity<T>> DdsSubscriberDelegator<T, ST>::loanedReadInstance(const T& value)
{
    return impl_->loanedReadInstance(value);
}

template <class T, class ST>
std::size_t DdsSubscriberDelegator<T, ST>::readDataEvents(const DataEventFilter<T>& filter,
                                                          std::vector<std::shared_ptr<DataEvent<T>>>& events,
                                                          std::size_t maxEvents,
                                                          const std::chrono::milliseconds& timeout)
{
    return impl_->readDataEvents(filter, events, maxEvents, timeout);
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriberDelegator<T, ST>::subscribe(const DataEventFilter<T>& filter,
                                                                       Callback callback)
{
    return impl_->subscribe(filter, std::move(callback));
}

template <class T, class ST>
std::size_t DdsSubscriberDelegator<T, ST>::poll(std::size_t maxCount,
                                                const std::chrono::milliseconds& timeout)
{
    return impl_->poll(maxCount, timeout);
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriberDelegator<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                            Callback callback)
{
    return impl_->subscribeAsync(filter, std::move(callback));
}

template <class T, class ST>
std::unique_ptr<Subscription> DdsSubscriberDelegator<T, ST>::subscribeAsync(const DataEventFilter<T>& filter,
                                                                            Notifier notifier)
{
    return impl_->subscribeAsync(filter, std::move(notifier));
}

} // namespace ovra::plex::ps
