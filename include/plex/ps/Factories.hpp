// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/dds/DdsPlex.hpp>
#include <plex/ps/DdsPublisherDelegator.hpp>
#include <plex/ps/DdsSubscriberDelegator.hpp>
#include <plex/ps/MrvDdsSubscriber.hpp>

#include <memory>

/// What a module's exported factory functions call, one line each.
namespace ovra::plex::ps
{

namespace internal
{

/// The DDS transport's instance behind a middleware instance.
/// @throws PlexException when there is none, or it is not the DDS transport's.
inline DdsPlex& ddsPlex(const std::shared_ptr<Plex>& plex)
{
    if (!plex) {
        throw PlexException("No middleware instance given to a factory of the DDS transport");
    }
    auto* const transport = dynamic_cast<DdsPlex*>(plex.get());
    if (transport == nullptr) {
        throw PlexException("The middleware instance given to a factory of the DDS transport is not its own");
    }
    return *transport;
}

/// The participant for a new entity. @throws as DdsPlex; IllegalStateException where no entity may be made.
inline ParticipantPointer participantFor(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                         const Plex::Properties& properties)
{
    checkMayMakeEntities(log4cplus::Logger::getInstance("plexDdsBasePubSub"), uri);
    return ddsPlex(plex).getDomainParticipant(uri, properties);
}

} // namespace internal

/// A new publisher; the caller owns it. @throws PlexException as DdsPublisher and DdsPlex.
template <class T, class ST>
Publisher<T>* createDdsPublisher(const std::shared_ptr<Plex>& plex, const Uri& uri, const qos::QoSList& qos,
                                 const Plex::Properties& properties)
{
    const auto participant = internal::participantFor(plex, uri, properties);
    auto publisher = std::make_shared<DdsPublisher<T, ST>>(uri, qos, properties, participant, plex);
    return new DdsPublisherDelegator<T, ST>(std::move(publisher), properties);
}

/// A new subscriber; the caller owns it. @throws PlexException as DdsSubscriber and DdsPlex.
template <class T, class ST>
Subscriber<T>* createDdsSubscriber(const std::shared_ptr<Plex>& plex, const Uri& uri, const qos::QoSList& qos,
                                   const Plex::Properties& properties)
{
    const auto participant = internal::participantFor(plex, uri, properties);
    return new DdsSubscriberDelegator<T, ST>(DdsSubscriber<T, ST>::create(uri, qos, properties, participant));
}

/// A new most-recent-value subscriber; the caller owns it. @throws PlexException as MrvDdsSubscriber and
/// DdsPlex.
template <class T, class ST>
MrvSubscriber<T>* createDdsMrvSubscriber(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                         const qos::QoSList& qos, const Plex::Properties& properties)
{
    const auto participant = internal::participantFor(plex, uri, properties);
    return new MrvDdsSubscriber<T, ST>(uri, qos, properties, participant);
}

} // namespace ovra::plex::ps
