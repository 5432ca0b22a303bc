// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/module/TopicAdapter.hpp>
#include <plex/ps/internal/DdsEntityBase.hpp>

namespace ovra::plex::ps::internal
{

/// The base of an entity for the interface type T over the adapter ST.
///
/// The entities that depend on one, and their mutex, stand in the publisher, which alone has any: 72 bytes
/// that each subscriber would carry for nothing.
template <class T, class ST>
class DdsBasePubSub : public DdsEntityBase
{
    static_assert(checkTopicAdapter<T, ST>());

public:
    /// @throws as DdsEntityBase.
    DdsBasePubSub(const Uri& uri, const qos::QoSList& qos, const Plex::Properties& properties,
                  const ParticipantPointer& participant)
        : DdsEntityBase(uri, qos, properties, participant, dds::TypeSupport(new typename ST::PubSubType()),
                        ST().hasKey())
    {
    }
};

} // namespace ovra::plex::ps::internal
