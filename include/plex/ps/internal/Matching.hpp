// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEventFilter.hpp>
#include <plex/PlexException.hpp>
#include <plex/ps/DataEntities.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <fastdds/dds/subscriber/SampleInfo.hpp>

#include <algorithm>
#include <optional>
#include <set>

/// How filters are matched against samples and against each other.
namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

/// A source timestamp in seconds.
inline double toSeconds(const SampleTime& time)
{
    return time.seconds() + time.nanosec() / 1e9;
}

/// What a sample means for its instance.
/// @throws PlexException when its states fit no event.
inline InstanceEvent deduceInstanceEvent(const dds::SampleInfo& info)
{
    constexpr auto gone = dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE | dds::NOT_ALIVE_NO_WRITERS_INSTANCE_STATE;
    constexpr auto seen = dds::NEW_VIEW_STATE | dds::NOT_NEW_VIEW_STATE;
    if (info.instance_state != 0 && (info.instance_state & ~gone) == 0) {
        return InstanceEvent::Gone;
    }
    if (info.view_state == dds::NEW_VIEW_STATE) {
        return InstanceEvent::New;
    }
    if (info.view_state == dds::NOT_NEW_VIEW_STATE || info.view_state == seen) {
        return InstanceEvent::Update;
    }
    throw PlexException("Plex InstanceEvent can not be deduced from sampleInfo");
}

inline bool matchInstanceState(const dds::SampleInfo& info, InstanceState selector)
{
    switch (selector) {
    case InstanceState::Any:
        return true;
    case InstanceState::Alive:
        return info.instance_state == dds::ALIVE_INSTANCE_STATE;
    case InstanceState::Disposed:
        return info.instance_state == dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE;
    }
    return false;
}

/// Whether a sample's view state is among the events wanted; an empty set wants all.
inline bool matchInstanceEvent(const dds::SampleInfo& info, const std::set<InstanceEvent>& wanted)
{
    return wanted.empty() ||
           (info.view_state == dds::NEW_VIEW_STATE && wanted.contains(InstanceEvent::New)) ||
           (info.view_state == dds::NOT_NEW_VIEW_STATE && wanted.contains(InstanceEvent::Update));
}

/// A filter ready for matching: a copy that later changes of the original do not reach, with its instance
/// turned into the handle that samples carry.
template <class T, class ST>
class SampleFilter
{
public:
    /// @throws IllegalStateException when the filter of a keyed type names an instance by another
    ///         transport's value.
    SampleFilter(const DataEventFilter<T>& filter, log4cplus::Logger& logger) : filter_(filter)
    {
        if (!filter.instance) {
            return;
        }
        filter_.instance = filter.instance->cloneKey();
        typename ST::PubSubType type;
        if (type.m_isGetKeyDefined) {
            InstanceHandle_t handle;
            type.getKey(asSample(&obtainImpl<T, ST>(*filter.instance, logger).wire()), &handle);
            handle_ = handle;
        }
    }

    InstanceState instanceState() const { return filter_.instanceState; }

    /// Whether a sample passes. On a type without a key a filter that names an instance lets nothing pass.
    bool matches(const dds::SampleInfo& info) const
    {
        return (!filter_.instance || (handle_ && *handle_ == info.instance_handle)) &&
               matchInstanceState(info, filter_.instanceState) && matchInstanceEvent(info, filter_.events);
    }

    /// Whether some sample could pass both filters.
    bool intersects(const SampleFilter& other) const
    {
        const auto& mine = filter_.events;
        const auto& theirs = other.filter_.events;
        const bool sameInstance = !filter_.instance || !other.filter_.instance ||
                                  filter_.instance->keyEquals(*other.filter_.instance);
        const bool sameState = filter_.instanceState == other.filter_.instanceState ||
                               filter_.instanceState == InstanceState::Any ||
                               other.filter_.instanceState == InstanceState::Any;
        const bool sameEvent =
            mine.empty() || theirs.empty() ||
            std::ranges::any_of(mine, [&](InstanceEvent event) { return theirs.contains(event); });
        return sameInstance && sameState && sameEvent;
    }

private:
    DataEventFilter<T> filter_;
    std::optional<InstanceHandle_t> handle_;
};

} // namespace ovra::plex::ps::internal
