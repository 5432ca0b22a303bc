// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ovra::plex::ps
{

template <class T, class ST>
SyncDdsSubscription<T, ST>::~SyncDdsSubscription()
{
    SyncDdsSubscription::close();
}

template <class T, class ST>
void SyncDdsSubscription<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeSync);
}

template <class T, class ST>
AsyncDdsSubscription<T, ST>::~AsyncDdsSubscription()
{
    AsyncDdsSubscription::close();
}

template <class T, class ST>
void AsyncDdsSubscription<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeAsync);
}

template <class T, class ST>
AsyncDdsSubscriptionNotifier<T, ST>::~AsyncDdsSubscriptionNotifier()
{
    AsyncDdsSubscriptionNotifier::close();
}

template <class T, class ST>
void AsyncDdsSubscriptionNotifier<T, ST>::close()
{
    this->closeWith(&SubscriptionManager<T, ST>::removeNotifier);
}

} // namespace ovra::plex::ps
