// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace ovra::plex::ps
{

template <class T, class ST>
DdsPublisherDelegator<T, ST>::DdsPublisherDelegator(std::shared_ptr<DdsPublisher<T, ST>> impl,
                                                    const Plex::Properties& properties)
    : impl_(std::move(impl))
    , waitForAckTimeoutMs_(internal::waitForAckTimeoutMs(properties))
{
}

template <class T, class ST>
std::shared_ptr<Plex> DdsPublisherDelegator<T, ST>::getPlex() const
{
    return impl_->getPlex();
}

template <class T, class ST>
std::unique_ptr<InstancePublisher<T>> DdsPublisherDelegator<T, ST>::createInstancePublisher(const T& instance)
{
    return std::make_unique<InstanceDdsPublisher<T, ST>>(impl_, instance, waitForAckTimeoutMs_);
}

template <class T, class ST>
void DdsPublisherDelegator<T, ST>::publish(const T& value, const std::chrono::milliseconds& timeout)
{
    impl_->publish(value, timeout);
}

template <class T, class ST>
void DdsPublisherDelegator<T, ST>::publish(double sourceTimestamp, const T& value,
                                           const std::chrono::milliseconds& timeout)
{
    impl_->publish(sourceTimestamp, value, timeout);
}

template <class T, class ST>
std::shared_ptr<T> DdsPublisherDelegator<T, ST>::createDataEntity()
{
    return impl_->createDataEntity();
}

template <class T, class ST>
void DdsPublisherDelegator<T, ST>::close()
{
    impl_->close();
}

} // namespace ovra::plex::ps
