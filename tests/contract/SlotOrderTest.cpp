// SPDX-License-Identifier: Apache-2.0
#include "SlotOf.hpp"

#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

// Applications, the middleware and bindings are built apart and call one another through these tables. A
// destructor takes two slots, which is where the numbers jump.
namespace plex::test
{

using namespace ovra::plex::ps;
using ovra::plex::Plex;
using std::chrono::milliseconds;

template <class T>
class SlotOrder : public testing::Test
{
protected:
    using Value = std::shared_ptr<T>;
    using Values = std::vector<std::shared_ptr<T>>;
    using Loan = std::shared_ptr<LoanedDataEntity<T>>;
    using Events = std::vector<std::shared_ptr<DataEvent<T>>>;
    using Filter = DataEventFilter<T>;
    using Callback = std::function<void(Subscriber<T>&, const DataEvent<T>&)>;
    using Notifier = std::function<void(Subscriber<T>&)>;
    using Registration = std::unique_ptr<Subscription>;
};

using ValueTypes = testing::Types<vexstubif::AltAz, vexstubif::DomeTemperature>;
TYPED_TEST_SUITE(SlotOrder, ValueTypes, );

TYPED_TEST(SlotOrder, OfDataEntityFactory)
{
    using Interface = DataEntityFactory<TypeParam>;
    EXPECT_EQ(slotOf<typename TestFixture::Value()>(&Interface::createDataEntity), 0);
    EXPECT_EQ(slotCount<Interface>(), 3);
}

TYPED_TEST(SlotOrder, OfInstancePublisher)
{
    using Interface = InstancePublisher<TypeParam>;
    EXPECT_EQ(slotOf<std::shared_ptr<Plex>() const>(&Interface::getPlex), 3);
    EXPECT_EQ((slotOf<void(const TypeParam&, const milliseconds&)>(&Interface::publish)), 4);
    EXPECT_EQ((slotOf<void(double, const TypeParam&, const milliseconds&)>(&Interface::publish)), 5);
    EXPECT_EQ(slotOf<void()>(&Interface::close), 6);
    EXPECT_EQ(slotCount<Interface>(), 7);
}

TYPED_TEST(SlotOrder, OfPublisher)
{
    using Interface = Publisher<TypeParam>;
    using Result = std::unique_ptr<InstancePublisher<TypeParam>>;
    EXPECT_EQ(slotOf<Result(const TypeParam&)>(&Interface::createInstancePublisher), 7);
    EXPECT_EQ(slotCount<Interface>(), 8);
}

TYPED_TEST(SlotOrder, OfSubscriber)
{
    using Interface = Subscriber<TypeParam>;
    using T = TypeParam;
    using Fixture = TestFixture;
    using EventFilter = typename Fixture::Filter;
    using Events = typename Fixture::Events;
    using Callback = typename Fixture::Callback;
    using Notifier = typename Fixture::Notifier;
    using Registration = typename Fixture::Registration;
    EXPECT_EQ(slotOf<void()>(&Interface::close), 3);
    EXPECT_EQ(slotOf<typename Fixture::Values(std::size_t)>(&Interface::read), 4);
    EXPECT_EQ(slotOf<typename Fixture::Value(const T&)>(&Interface::readInstance), 5);
    EXPECT_EQ((slotOf<bool(const T&, T&)>(&Interface::readInstance)), 6);
    EXPECT_EQ(slotOf<typename Fixture::Loan()>(&Interface::loanedRead), 7);
    EXPECT_EQ(slotOf<typename Fixture::Loan(const T&)>(&Interface::loanedReadInstance), 8);
    EXPECT_EQ((slotOf<std::size_t(const EventFilter&, Events&, std::size_t, const milliseconds&)>(
                  &Interface::readDataEvents)),
              9);
    EXPECT_EQ((slotOf<Registration(const EventFilter&, Callback)>(&Interface::subscribe)), 10);
    EXPECT_EQ((slotOf<std::size_t(std::size_t, const milliseconds&)>(&Interface::poll)), 11);
    EXPECT_EQ((slotOf<Registration(const EventFilter&, Callback)>(&Interface::subscribeAsync)), 12);
    EXPECT_EQ((slotOf<Registration(const EventFilter&, Notifier)>(&Interface::subscribeAsync)), 13);
    EXPECT_EQ(slotCount<Interface>(), 14);
}

TYPED_TEST(SlotOrder, OfMrvSubscriber)
{
    using Interface = MrvSubscriber<TypeParam>;
    using Values = typename TestFixture::Values;
    EXPECT_EQ(slotOf<void()>(&Interface::close), 0);
    EXPECT_EQ(slotOf<Values(const milliseconds&)>(&Interface::readMostRecent), 1);
    EXPECT_EQ(slotCount<Interface>(), 4);
}

TYPED_TEST(SlotOrder, OfLoanedDataEntity)
{
    using Interface = LoanedDataEntity<TypeParam>;
    EXPECT_EQ(slotOf<TypeParam&()>(&Interface::getData), 0);
    EXPECT_EQ(slotOf<void()>(&Interface::close), 1);
    EXPECT_EQ(slotCount<Interface>(), 4);
}

TYPED_TEST(SlotOrder, OfDataEvent)
{
    using Interface = DataEvent<TypeParam>;
    EXPECT_EQ(slotOf<bool() const>(&Interface::hasValidData), 0);
    EXPECT_EQ(slotOf<const std::shared_ptr<TypeParam>&() const>(&Interface::getData), 1);
    EXPECT_EQ(slotOf<InstanceState() const>(&Interface::getInstanceState), 2);
    EXPECT_EQ(slotOf<InstanceEvent() const>(&Interface::getInstanceEvent), 3);
    EXPECT_EQ(slotOf<double() const>(&Interface::getSourceTimestamp), 4);
    EXPECT_EQ(slotCount<Interface>(), 7);
}

TYPED_TEST(SlotOrder, OfDataEventFilter)
{
    EXPECT_EQ(slotCount<DataEventFilter<TypeParam>>(), 2);
}

TYPED_TEST(SlotOrder, OfDataEntity)
{
    using Interface = DataEntity<TypeParam>;
    EXPECT_EQ(slotOf<std::unique_ptr<TypeParam>() const>(&Interface::clone), 2);
    EXPECT_EQ(slotOf<bool(const TypeParam&) const>(&Interface::keyEquals), 3);
    EXPECT_EQ(slotOf<std::unique_ptr<TypeParam>() const>(&Interface::cloneKey), 4);
    EXPECT_EQ(slotOf<bool() const>(&Interface::hasKey), 5);
    EXPECT_EQ(slotCount<Interface>(), 6);
}

TEST(SlotOrderOfValues, OfDataEntityBase)
{
    EXPECT_EQ(slotCount<DataEntityBase>(), 2);
}

TEST(SlotOrderOfValues, OfAltAz)
{
    EXPECT_EQ(slotOf<double() const>(&vexstubif::AltAz::getAlt), 6);
    EXPECT_EQ(slotOf<void(double)>(&vexstubif::AltAz::setAlt), 7);
    EXPECT_EQ(slotOf<double() const>(&vexstubif::AltAz::getAz), 8);
    EXPECT_EQ(slotOf<void(double)>(&vexstubif::AltAz::setAz), 9);
    EXPECT_EQ(slotCount<vexstubif::AltAz>(), 10);
}

TEST(SlotOrderOfValues, OfDomeTemperature)
{
    EXPECT_EQ(slotOf<double() const>(&vexstubif::DomeTemperature::getTemp), 6);
    EXPECT_EQ(slotOf<void(double)>(&vexstubif::DomeTemperature::setTemp), 7);
    EXPECT_EQ(slotCount<vexstubif::DomeTemperature>(), 8);
}

TEST(SlotOrderOfSubscription, ClosesBeforeItIsDestroyed)
{
    EXPECT_EQ(slotOf<void()>(&Subscription::close), 0);
    EXPECT_EQ(slotCount<Subscription>(), 3);
}

TEST(SlotOrderOfQoS, IsTheDestructorOnly)
{
    EXPECT_EQ(slotCount<qos::QoS>(), 2);
    EXPECT_EQ(slotCount<qos::DurationBasedQoS>(), 2);
    EXPECT_EQ(slotCount<qos::Deadline>(), 2);
    EXPECT_EQ(slotCount<qos::Latency>(), 2);
}

} // namespace plex::test
