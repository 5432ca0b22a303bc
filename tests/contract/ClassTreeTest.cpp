// SPDX-License-Identifier: Apache-2.0
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <gtest/gtest.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace plex::test
{

namespace
{

using namespace ovra::plex;
using namespace ovra::plex::ps;
using namespace std::chrono_literals;

/// The language forbids a static cast down from a virtual base.
template <class Derived, class Base>
concept hasVirtualBase =
    std::derived_from<Derived, Base> && !requires(Base& base) { static_cast<Derived&>(base); };

template <class Derived, class Base>
concept hasPlainBase =
    std::derived_from<Derived, Base> && requires(Base& base) { static_cast<Derived&>(base); };

template <class Class>
constexpr bool isOnePointerLarge = sizeof(Class) == sizeof(void*);

template <class T>
constexpr bool interfacesOfTypeStandInTheirTree()
{
    static_assert(hasVirtualBase<DataEntity<T>, DataEntityBase>);
    static_assert(hasPlainBase<T, DataEntity<T>>);
    static_assert(hasVirtualBase<T, DataEntityBase>);
    static_assert(hasVirtualBase<InstancePublisher<T>, DataEntityFactory<T>>);
    static_assert(hasVirtualBase<Publisher<T>, InstancePublisher<T>>);
    static_assert(hasVirtualBase<Publisher<T>, DataEntityFactory<T>>);
    static_assert(hasVirtualBase<Subscriber<T>, DataEntityFactory<T>>);
    return true;
}

template <class T>
constexpr bool interfacesOfTypeHoldATablePointerOnly()
{
    static_assert(isOnePointerLarge<DataEntity<T>> && isOnePointerLarge<T>);
    static_assert(isOnePointerLarge<DataEntityFactory<T>>);
    static_assert(isOnePointerLarge<InstancePublisher<T>> && isOnePointerLarge<Publisher<T>>);
    static_assert(isOnePointerLarge<Subscriber<T>> && isOnePointerLarge<MrvSubscriber<T>>);
    static_assert(isOnePointerLarge<LoanedDataEntity<T>> && isOnePointerLarge<DataEvent<T>>);
    return true;
}

static_assert(interfacesOfTypeStandInTheirTree<vexstubif::AltAz>());
static_assert(interfacesOfTypeStandInTheirTree<vexstubif::DomeTemperature>());
static_assert(interfacesOfTypeHoldATablePointerOnly<vexstubif::AltAz>());
static_assert(interfacesOfTypeHoldATablePointerOnly<vexstubif::DomeTemperature>());

static_assert(hasPlainBase<PlexException, std::runtime_error>);
static_assert(hasPlainBase<IllegalStateException, PlexException>);
static_assert(sizeof(IllegalStateException) == sizeof(std::runtime_error));

static_assert(hasVirtualBase<qos::DurationBasedQoS, qos::QoS>);
static_assert(hasVirtualBase<qos::Deadline, qos::DurationBasedQoS>);
static_assert(hasVirtualBase<qos::Latency, qos::DurationBasedQoS>);

static_assert(isOnePointerLarge<DataEntityBase> && isOnePointerLarge<Subscription> &&
              isOnePointerLarge<qos::QoS>);

static_assert(std::has_virtual_destructor_v<DataEventFilter<vexstubif::AltAz>>);
static_assert(std::has_virtual_destructor_v<Plex>);

static_assert(std::same_as<Uri, network::uri>);
static_assert(std::same_as<Plex::Properties, std::map<std::string, std::string>>);
static_assert(std::same_as<qos::QoSList, std::vector<std::shared_ptr<qos::QoS>>>);
static_assert(
    std::same_as<Subscriber<vexstubif::AltAz>::Callback,
                 std::function<void(Subscriber<vexstubif::AltAz>&, const DataEvent<vexstubif::AltAz>&)>>);
static_assert(
    std::same_as<Subscriber<vexstubif::AltAz>::Notifier, std::function<void(Subscriber<vexstubif::AltAz>&)>>);

static_assert(std::same_as<std::underlying_type_t<InstanceState>, std::int32_t>);
static_assert(static_cast<int>(InstanceState::Alive) == 0);
static_assert(static_cast<int>(InstanceState::Disposed) == 1);
static_assert(static_cast<int>(InstanceState::Any) == 2);
static_assert(std::same_as<std::underlying_type_t<InstanceEvent>, std::int32_t>);
static_assert(static_cast<int>(InstanceEvent::New) == 0);
static_assert(static_cast<int>(InstanceEvent::Update) == 1);
static_assert(static_cast<int>(InstanceEvent::Gone) == 2);

using Filter = DataEventFilter<vexstubif::AltAz>;

std::ptrdiff_t offsetIn(const Filter& filter, const void* field)
{
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&filter);
}

} // namespace

TEST(Exceptions, SayTheirMessage)
{
    EXPECT_STREQ(PlexException("it broke").what(), "it broke");
    EXPECT_STREQ(IllegalStateException("it is closed").what(), "it is closed");
}

TEST(Exceptions, KeepTheirMessageWhenCopied)
{
    const PlexException original("it broke");
    PlexException copy(original);
    EXPECT_STREQ(copy.what(), "it broke");
    copy = PlexException("it broke again");
    EXPECT_STREQ(copy.what(), "it broke again");
    EXPECT_STREQ(original.what(), "it broke");
}

TEST(Exceptions, OfIllegalStateAreCaughtAsPlexExceptions)
{
    try {
        throw IllegalStateException("it is closed");
    } catch (const PlexException& error) {
        EXPECT_STREQ(error.what(), "it is closed");
        EXPECT_NE(dynamic_cast<const IllegalStateException*>(&error), nullptr);
    }
}

TEST(Exceptions, OfPlexAreNotTakenForIllegalState)
{
    const PlexException error("it broke");
    EXPECT_EQ(dynamic_cast<const IllegalStateException*>(static_cast<const std::exception*>(&error)),
              nullptr);
}

TEST(QualityOfService, IsToldApartByDynamicCastOnly)
{
    const qos::QoSList list{std::make_shared<qos::Deadline>(10ms), std::make_shared<qos::Latency>(20ms)};
    const auto* const deadline = dynamic_cast<const qos::Deadline*>(list[0].get());
    const auto* const latency = dynamic_cast<const qos::Latency*>(list[1].get());
    ASSERT_NE(deadline, nullptr);
    ASSERT_NE(latency, nullptr);
    EXPECT_EQ(deadline->getDurationMs(), 10);
    EXPECT_EQ(latency->getDurationMs(), 20);
    EXPECT_EQ(dynamic_cast<const qos::Latency*>(list[0].get()), nullptr);
    EXPECT_EQ(dynamic_cast<const qos::Deadline*>(list[1].get()), nullptr);
    EXPECT_NE(dynamic_cast<const qos::DurationBasedQoS*>(list[0].get()), nullptr);
    EXPECT_NE(dynamic_cast<const qos::DurationBasedQoS*>(list[1].get()), nullptr);
}

TEST(QualityOfService, OfAPlainDurationIsNeitherDeadlineNorLatency)
{
    const qos::DurationBasedQoS duration(5ms);
    const qos::QoS* const any = &duration;
    EXPECT_EQ(duration.getDurationMs(), 5);
    EXPECT_EQ(dynamic_cast<const qos::Deadline*>(any), nullptr);
    EXPECT_EQ(dynamic_cast<const qos::Latency*>(any), nullptr);
}

TEST(QualityOfService, HoldsEveryDurationOf32BitMilliseconds)
{
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int64_t count : {0L, 1L, -1L, long{Limits::max()}, long{Limits::min()}}) {
        EXPECT_EQ(qos::Deadline(std::chrono::milliseconds(count)).getDurationMs(), count);
        EXPECT_EQ(qos::Latency(std::chrono::milliseconds(count)).getDurationMs(), count);
    }
}

TEST(QualityOfService, RefusesDurationsBeyond32BitMilliseconds)
{
    using Limits = std::numeric_limits<std::int32_t>;
    for (const auto duration :
         {std::chrono::milliseconds(Limits::max()) + 1ms, std::chrono::milliseconds(Limits::min()) - 1ms,
          std::chrono::milliseconds::max(), std::chrono::milliseconds::min()}) {
        EXPECT_THROW(qos::Deadline{duration}, PlexException);
        EXPECT_THROW(qos::Latency{duration}, PlexException);
    }
}

TEST(DataEventFilter, SelectsEveryEventOfWhatIsAliveByDefault)
{
    const Filter filter;
    EXPECT_EQ(filter.instance, nullptr);
    EXPECT_EQ(filter.instanceState, InstanceState::Alive);
    EXPECT_TRUE(filter.events.empty());
}

TEST(DataEventFilter, HasInstanceStateAndEventsInThisOrder)
{
    const Filter filter;
    EXPECT_EQ(offsetIn(filter, &filter.instance), 8);
    EXPECT_EQ(offsetIn(filter, &filter.instanceState), 24);
    EXPECT_EQ(offsetIn(filter, &filter.events), 32);
    EXPECT_EQ(sizeof filter, 32 + sizeof(decltype(filter.events)));
}

TEST(DataEventFilter, TakesItsFieldsFromItsConstructor)
{
    const auto plex = Plex::create();
    const std::shared_ptr<vexstubif::AltAz> value = plex->createDataEntity<vexstubif::AltAz>();
    const Filter filter(InstanceState::Any, {InstanceEvent::Gone}, value);
    EXPECT_EQ(filter.instance, value);
    EXPECT_EQ(filter.instanceState, InstanceState::Any);
    EXPECT_EQ(filter.events, std::set<InstanceEvent>{InstanceEvent::Gone});
}

TEST(DataEventFilter, IsAValue)
{
    const Filter original(InstanceState::Disposed, {InstanceEvent::New, InstanceEvent::Update});
    Filter copy(original);
    copy.events.clear();
    EXPECT_EQ(original.events.size(), 2U);
    copy = original;
    EXPECT_EQ(copy.instanceState, InstanceState::Disposed);
    EXPECT_EQ(copy.events, original.events);
    const Filter moved(std::move(copy));
    EXPECT_EQ(moved.events, original.events);
}

} // namespace plex::test
