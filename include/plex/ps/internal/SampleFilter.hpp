// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEventFilter.hpp>
#include <plex/Export.hpp>
#include <plex/fastdds/Generation.hpp>
#include <plex/ps/DataEntities.hpp>

#include <fastdds/dds/subscriber/SampleInfo.hpp>

#include <algorithm>
#include <optional>
#include <set>

/// How filters are matched against samples and against each other.
namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

/// What a sample means for its instance.
/// @throws PlexException when its states fit no event.
PLEX_EXPORT InstanceEvent deduceInstanceEvent(const dds::SampleInfo& info);

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

/// Whether some sample could pass both filters.
template <class T>
bool intersect(const DataEventFilter<T>& left, const DataEventFilter<T>& right)
{
    const bool sameInstance = !left.instance || !right.instance || left.instance->keyEquals(*right.instance);
    const bool sameState = left.instanceState == right.instanceState ||
                           left.instanceState == InstanceState::Any ||
                           right.instanceState == InstanceState::Any;
    const bool sameEvent =
        left.events.empty() || right.events.empty() ||
        std::ranges::any_of(left.events, [&](InstanceEvent event) { return right.events.contains(event); });
    return sameInstance && sameState && sameEvent;
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
            fastdds::InstanceHandle_t handle;
            type.getKey(fastdds::asSample(&obtainImpl<T, ST>(*filter.instance, logger).wire()), &handle);
            handle_ = handle;
        }
    }

    InstanceState instanceState() const { return filter_.instanceState; }

    const DataEventFilter<T>& original() const { return filter_; }

    /// The instance that it names; none also on a type without a key.
    const std::optional<fastdds::InstanceHandle_t>& instance() const { return handle_; }

    /// Whether a sample is of an instance that is wanted, in a state that is. On a type without a key a
    /// filter that names an instance wants none.
    bool wantsInstance(const dds::SampleInfo& info) const
    {
        return (!filter_.instance || (handle_ && *handle_ == info.instance_handle)) &&
               matchInstanceState(info, filter_.instanceState);
    }

private:
    DataEventFilter<T> filter_;
    std::optional<fastdds::InstanceHandle_t> handle_;
};

} // namespace ovra::plex::ps::internal
