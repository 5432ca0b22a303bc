// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEvent.hpp>

#include <memory>
#include <set>
#include <utility>

namespace ovra::plex::ps
{

/// Selects samples by instance, instance state and kind of event. A default filter selects everything that
/// is alive. The filters of one subscriber's subscriptions must not intersect.
///
/// A plain value: copy it freely; not for use by several threads while it is changed.
template <class T>
class PLEX_EXPORT DataEventFilter
{
public:
    DataEventFilter() = default;

    explicit DataEventFilter(InstanceState state, std::set<InstanceEvent> wanted = {},
                             std::shared_ptr<T> keyValue = nullptr)
        : instance(std::move(keyValue))
        , instanceState(state)
        , events(std::move(wanted))
    {
    }

    DataEventFilter(const DataEventFilter&) = default;
    DataEventFilter(DataEventFilter&&) noexcept = default;
    DataEventFilter& operator=(const DataEventFilter&) = default;
    DataEventFilter& operator=(DataEventFilter&&) noexcept = default;
    virtual ~DataEventFilter() = default;

    /// The instance wanted, named by a value that carries its key; empty for every instance. On a type
    /// without a key a filter that names an instance matches nothing.
    std::shared_ptr<T> instance;

    /// Which instances are wanted.
    InstanceState instanceState = InstanceState::Alive;

    /// The events wanted; empty for all. Matched against whether the reader sees the instance for the
    /// first time (New) or not (Update) only, so Gone never matches.
    std::set<InstanceEvent> events;
};

} // namespace ovra::plex::ps
