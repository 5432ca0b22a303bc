// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/fastdds/Generation.hpp>
#include <plex/module/SampleOwnership.hpp>

#include <concepts>

namespace ovra::plex::ps
{

namespace adapter
{

/// ST names its wire type, a regular value, as ST::DdsType.
template <class ST>
concept HasWireType = requires { typename ST::DdsType; } &&
                      std::default_initializable<typename ST::DdsType> && std::copyable<typename ST::DdsType>;

/// ST names the topic data type over its wire type as ST::PubSubType; it is made without arguments.
template <class ST>
concept HasTopicDataType = requires { typename ST::PubSubType; } &&
                           std::derived_from<typename ST::PubSubType, fastdds::TopicDataType> &&
                           std::default_initializable<typename ST::PubSubType>;

/// ST implements the interface type T, a DataEntity<T>.
template <class ST, class T>
concept ImplementsInterface = std::derived_from<ST, T> && std::derived_from<T, DataEntity<T>>;

/// ST() is an adapter that owns a default wire value, or throws std::runtime_error.
template <class ST>
concept MakesOwningAdapter = std::default_initializable<ST>;

/// ST(wire, Borrow{}) is an adapter that views a wire value without owning it.
template <class ST>
concept MakesBorrowingAdapter =
    std::constructible_from<ST, typename ST::DdsType&, ovra::plex::icd::dds::Borrow>;

/// wire() reaches the wire value behind an adapter.
template <class ST>
concept ReachesWireValue = requires(ST& adapter, const ST& constAdapter) {
    { adapter.wire() } -> std::same_as<typename ST::DdsType&>;
    { constAdapter.wire() } -> std::same_as<const typename ST::DdsType&>;
};

/// assign(wire) copies every field of a wire value; ST::copy(from, to) every field between interface values.
template <class ST, class T>
concept CopiesFields = requires(ST& adapter, const typename ST::DdsType& wire, const T& from, T& to) {
    adapter.assign(wire);
    ST::copy(from, to);
};

} // namespace adapter

/// All that the engine needs of a module's adapter type ST for the interface type T. The engine knows a
/// module through nothing else.
template <class ST, class T>
concept TopicAdapter =
    adapter::HasWireType<ST> && adapter::HasTopicDataType<ST> && adapter::ImplementsInterface<ST, T> &&
    adapter::MakesOwningAdapter<ST> && adapter::MakesBorrowingAdapter<ST> && adapter::ReachesWireValue<ST> &&
    adapter::CopiesFields<ST, T>;

/// Says in a sentence which requirement an adapter type misses.
template <class T, class ST>
constexpr bool checkTopicAdapter()
{
    static_assert(
        adapter::HasWireType<ST>,
        "The adapter must name its wire type, a default-constructible and copyable value, as DdsType");
    static_assert(adapter::HasTopicDataType<ST>,
                  "The adapter must name its topic data type, made without arguments, as PubSubType");
    static_assert(adapter::ImplementsInterface<ST, T>,
                  "The adapter must implement the interface type, which must be a DataEntity of itself");
    static_assert(adapter::MakesOwningAdapter<ST>,
                  "The adapter must have a default constructor that makes it own a default wire value");
    static_assert(adapter::MakesBorrowingAdapter<ST>,
                  "The adapter must have a constructor (DdsType&, Borrow) that makes it view a wire value");
    static_assert(adapter::ReachesWireValue<ST>,
                  "The adapter must reach its wire value through wire(), const and not const");
    static_assert(adapter::CopiesFields<ST, T>,
                  "The adapter must copy fields through assign(const DdsType&) and a static copy(from, to)");
    return TopicAdapter<ST, T>;
}

} // namespace ovra::plex::ps
