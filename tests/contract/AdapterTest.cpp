// SPDX-License-Identifier: Apache-2.0
#include "ForeignValues.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <generated/vexstubif/DomeTemperatureAdapter.hpp>
#include <generated/vexstubif/Factories.hpp>
#include <plex/ps/DataEntities.hpp>

#include <gtest/gtest.h>

#include <LogCapture.hpp>
#include <type_traits>

namespace plex::test
{

namespace
{

namespace adapters = generated::ddsimpl::vexstubif;
namespace wire = generated::dds_::vexstubif;
using ovra::plex::IllegalStateException;
using ovra::plex::icd::dds::Borrow;
using ovra::plex::ps::createDataEntityFrom;
using ovra::plex::ps::createDataEntityInternal;
using ovra::plex::ps::obtainImpl;

/// What these tests know of one topic type.
struct AltAzKind {
    using Interface = vexstubif::AltAz;
    using Adapter = adapters::AltAz;
    using Wire = wire::AltAz;
    using Foreign = ForeignAltAz;

    static constexpr auto exportedFactory = generated_dds_DataEntity_vexstubif_AltAz;

    /// All fields follow from one number.
    static void fill(Interface& value, double number)
    {
        value.setAlt(number);
        value.setAz(-number);
    }

    static void fill(Wire& value, double number)
    {
        value.alt(number);
        value.az(-number);
    }

    static bool holds(const Interface& value, double number)
    {
        return value.getAlt() == number && value.getAz() == -number;
    }

    static bool holds(const Wire& value, double number)
    {
        return value.alt() == number && value.az() == -number;
    }
};

struct DomeTemperatureKind {
    using Interface = vexstubif::DomeTemperature;
    using Adapter = adapters::DomeTemperature;
    using Wire = wire::DomeTemperature;
    using Foreign = ForeignDomeTemperature;

    static constexpr auto exportedFactory = generated_dds_DataEntity_vexstubif_DomeTemperature;

    static void fill(Interface& value, double number) { value.setTemp(number); }

    static void fill(Wire& value, double number) { value.temp(number); }

    static bool holds(const Interface& value, double number) { return value.getTemp() == number; }

    static bool holds(const Wire& value, double number) { return value.temp() == number; }
};

constexpr const char* refusal = "Data type for instance or value is incorrect. Not a DDS supported type";

} // namespace

template <class Kind>
class Adapter : public testing::Test
{
protected:
    using Interface = typename Kind::Interface;
    using Type = typename Kind::Adapter;
    using Wire = typename Kind::Wire;

    static std::shared_ptr<Interface> createDefault() { return createDataEntityInternal<Interface, Type>(); }

    static Wire wireHolding(double number)
    {
        Wire value;
        Kind::fill(value, number);
        return value;
    }

    log4cplus::Logger logger = log4cplus::Logger::getInstance("anyLogger");
};

using Kinds = testing::Types<AltAzKind, DomeTemperatureKind>;
TYPED_TEST_SUITE(Adapter, Kinds, );

TYPED_TEST(Adapter, OwningStartsWithDefaults)
{
    EXPECT_TRUE(TypeParam::holds(*this->createDefault(), 0.0));
    EXPECT_TRUE(TypeParam::holds(typename TypeParam::Adapter{}, 0.0));
}

TYPED_TEST(Adapter, FieldsAreThoseOfTheWireValue)
{
    typename TypeParam::Adapter adapter;
    TypeParam::fill(adapter, 1.5);
    EXPECT_TRUE(TypeParam::holds(adapter.wire(), 1.5));
    TypeParam::fill(adapter.wire(), 2.5);
    EXPECT_TRUE(TypeParam::holds(adapter, 2.5));
    EXPECT_EQ(&std::as_const(adapter).wire(), &adapter.wire());
}

TYPED_TEST(Adapter, OwningKeepsACopyOfTheWireValueItIsMadeFrom)
{
    auto source = this->wireHolding(1.5);
    const typename TypeParam::Adapter adapter(source);
    TypeParam::fill(source, 2.5);
    EXPECT_TRUE(TypeParam::holds(adapter, 1.5));
}

TYPED_TEST(Adapter, BorrowingViewsAWireValueAndLeavesItBehind)
{
    auto borrowed = this->wireHolding(1.5);
    {
        typename TypeParam::Adapter adapter(borrowed, Borrow{});
        EXPECT_EQ(&adapter.wire(), &borrowed);
        EXPECT_TRUE(TypeParam::holds(adapter, 1.5));
        TypeParam::fill(adapter, 2.5);
    }
    EXPECT_TRUE(TypeParam::holds(borrowed, 2.5));
}

TYPED_TEST(Adapter, CloneIsIndependentAndOfTheSameClass)
{
    auto original = this->createDefault();
    TypeParam::fill(*original, 1.5);
    const auto clone = original->clone();
    EXPECT_NE(dynamic_cast<typename TypeParam::Adapter*>(clone.get()), nullptr);
    EXPECT_TRUE(TypeParam::holds(*clone, 1.5));
    TypeParam::fill(*clone, 2.5);
    EXPECT_TRUE(TypeParam::holds(*original, 1.5));
    original.reset();
    EXPECT_TRUE(TypeParam::holds(*clone, 2.5));
}

TYPED_TEST(Adapter, CloneOfABorrowingOneOwnsItsValue)
{
    auto borrowed = this->wireHolding(1.5);
    const auto clone = typename TypeParam::Adapter(borrowed, Borrow{}).clone();
    TypeParam::fill(borrowed, 2.5);
    EXPECT_TRUE(TypeParam::holds(*clone, 1.5));
}

TYPED_TEST(Adapter, CloneOfTheKeyHasDefaultsOnly)
{
    auto value = this->createDefault();
    TypeParam::fill(*value, 1.5);
    const auto key = value->cloneKey();
    EXPECT_TRUE(TypeParam::holds(*key, 0.0));
    EXPECT_NE(dynamic_cast<typename TypeParam::Adapter*>(key.get()), nullptr);
    EXPECT_TRUE(TypeParam::holds(*value, 1.5));
}

TYPED_TEST(Adapter, HasNoKeySoThatNoTwoKeysAreEqual)
{
    const auto value = this->createDefault();
    EXPECT_FALSE(value->hasKey());
    EXPECT_FALSE(value->keyEquals(*value));
    EXPECT_FALSE(value->keyEquals(*value->clone()));
    EXPECT_FALSE(value->keyEquals(typename TypeParam::Foreign{}));
}

TYPED_TEST(Adapter, AssignsEveryFieldOfAWireValue)
{
    typename TypeParam::Adapter adapter;
    adapter.assign(this->wireHolding(1.5));
    EXPECT_TRUE(TypeParam::holds(adapter, 1.5));
}

TYPED_TEST(Adapter, CopiesEveryFieldBetweenValuesOfAnyMaker)
{
    typename TypeParam::Foreign foreign;
    typename TypeParam::Adapter adapter;
    TypeParam::fill(foreign, 1.5);
    TypeParam::Adapter::copy(foreign, adapter);
    EXPECT_TRUE(TypeParam::holds(adapter, 1.5));
    TypeParam::fill(adapter, 2.5);
    TypeParam::Adapter::copy(adapter, foreign);
    EXPECT_TRUE(TypeParam::holds(foreign, 2.5));
}

TYPED_TEST(Adapter, IsNotCopied)
{
    using Type = typename TypeParam::Adapter;
    EXPECT_FALSE(std::is_copy_constructible_v<Type>);
    EXPECT_FALSE(std::is_copy_assignable_v<Type>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<Type>);
}

TYPED_TEST(Adapter, OfAReadSampleIsACopyOfIt)
{
    auto sample = this->wireHolding(1.5);
    const auto value =
        createDataEntityFrom<typename TypeParam::Interface, typename TypeParam::Adapter>(sample);
    TypeParam::fill(sample, 2.5);
    EXPECT_TRUE(TypeParam::holds(*value, 1.5));
    EXPECT_EQ(value.use_count(), 1);
}

TYPED_TEST(Adapter, ComesFromTheExportedFactoryWithDefaults)
{
    const std::unique_ptr<typename TypeParam::Interface> value(TypeParam::exportedFactory());
    EXPECT_NE(dynamic_cast<typename TypeParam::Adapter*>(value.get()), nullptr);
    EXPECT_TRUE(TypeParam::holds(*value, 0.0));
}

TYPED_TEST(Adapter, IsObtainedBehindAnInterfaceReference)
{
    using Interface = typename TypeParam::Interface;
    using Type = typename TypeParam::Adapter;
    Type adapter;
    Interface& value = adapter;
    const Interface& constantValue = adapter;
    TypeParam::fill(value, 1.5);

    EXPECT_TRUE((std::is_same_v<decltype(obtainImpl<Interface, Type>(value, this->logger)), Type&>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(obtainImpl<Interface, Type>(constantValue, this->logger)), const Type&>));
    EXPECT_EQ(&(obtainImpl<Interface, Type>(value, this->logger)), &adapter);
    EXPECT_EQ(&(obtainImpl<Interface, Type>(constantValue, this->logger)), &adapter);
    EXPECT_TRUE(TypeParam::holds(obtainImpl<Interface, Type>(constantValue, this->logger).wire(), 1.5));
}

TYPED_TEST(Adapter, IsNotLoggedWhenObtained)
{
    const LogCapture log;
    typename TypeParam::Adapter adapter;
    obtainImpl<typename TypeParam::Interface, typename TypeParam::Adapter>(adapter, this->logger);
    EXPECT_TRUE(log.records().empty());
}

namespace
{

/// Hands a foreign value over and expects its refusal, logged as coming from a line.
template <class Kind, class Value>
void expectRefusal(Value& value, log4cplus::Logger& logger, int line)
{
    const LogCapture log;
    try {
        obtainImpl<typename Kind::Interface, typename Kind::Adapter>(value, logger);
        FAIL() << "a foreign value was accepted";
    } catch (const IllegalStateException& error) {
        EXPECT_STREQ(error.what(), refusal);
    }
    ASSERT_EQ(log.records().size(), 1U);
    const auto record = log.records().front();
    EXPECT_EQ(record.logger, logger.getName());
    EXPECT_EQ(record.level, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_EQ(record.text, refusal);
    EXPECT_EQ(record.file, "include/plex/ps/internal/DdsBasePubSub");
    EXPECT_EQ(record.line, line);
}

} // namespace

TYPED_TEST(Adapter, IsNotFoundBehindAConstantForeignValue)
{
    const typename TypeParam::Foreign foreign;
    expectRefusal<TypeParam>(static_cast<const typename TypeParam::Interface&>(foreign), this->logger, 105);
}

TYPED_TEST(Adapter, IsNotFoundBehindAModifiableForeignValue)
{
    typename TypeParam::Foreign foreign;
    expectRefusal<TypeParam>(static_cast<typename TypeParam::Interface&>(foreign), this->logger, 127);
}

TYPED_TEST(Adapter, IsRefusedWithoutARecordWhereErrorsAreNotLogged)
{
    const LogCapture log;
    this->logger.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    typename TypeParam::Foreign foreign;
    typename TypeParam::Interface& value = foreign;
    EXPECT_THROW(
        (obtainImpl<typename TypeParam::Interface, typename TypeParam::Adapter>(value, this->logger)),
        IllegalStateException);
    EXPECT_TRUE(log.records().empty());
    this->logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
}

TEST(SampleDeleter, IgnoresNull)
{
    EXPECT_NO_THROW(ovra::plex::icd::dds::ddsSampleDeleter<wire::AltAz>(nullptr));
    EXPECT_NO_THROW(ovra::plex::icd::dds::noOpDeleter<wire::AltAz>(nullptr));
}

} // namespace plex::test
