// SPDX-License-Identifier: Apache-2.0
#include "CountingAllocator.hpp"

#include <generated/vexstubif/AltAzAdapter.hpp>
#include <generated/vexstubif/DomeTemperatureAdapter.hpp>
#include <generated/vexstubif/Factories.hpp>
#include <plex/ps/DataEntities.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace plex::test
{

namespace
{

using ovra::plex::PlexException;
using ovra::plex::ps::createDataEntityFrom;
using ovra::plex::ps::createDataEntityInternal;

struct AltAzKind {
    using Interface = vexstubif::AltAz;
    using Adapter = generated::ddsimpl::vexstubif::AltAz;
    static constexpr auto exportedFactory = generated_dds_DataEntity_vexstubif_AltAz;
};

struct DomeTemperatureKind {
    using Interface = vexstubif::DomeTemperature;
    using Adapter = generated::ddsimpl::vexstubif::DomeTemperature;
    static constexpr auto exportedFactory = generated_dds_DataEntity_vexstubif_DomeTemperature;
};

/// Runs an operation for which no memory for wire values can be had, and expects it to say so and to give
/// back all that it took.
void expectRefusal(const std::function<void()>& operation)
{
    const auto before = liveAllocations();
    {
        const WithoutNothrowMemory shortage;
        try {
            operation();
            FAIL() << "a value was made without memory";
        } catch (const PlexException&) {
            FAIL() << "want of memory is not the middleware's error";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "failed to create a DDS sample");
        }
    }
    EXPECT_EQ(liveAllocations(), before);
}

} // namespace

template <class Kind>
class AdapterMemory : public testing::Test
{
protected:
    using Interface = typename Kind::Interface;
    using Adapter = typename Kind::Adapter;
};

using Kinds = testing::Types<AltAzKind, DomeTemperatureKind>;
TYPED_TEST_SUITE(AdapterMemory, Kinds, );

TYPED_TEST(AdapterMemory, ShortageIsSaidByTheConstructors)
{
    const typename TypeParam::Adapter::DdsType sample;
    expectRefusal([] { const typename TypeParam::Adapter adapter; });
    expectRefusal([&] { const typename TypeParam::Adapter adapter(sample); });
}

TYPED_TEST(AdapterMemory, ShortageIsSaidByCloneAndCloneKey)
{
    const typename TypeParam::Adapter adapter;
    expectRefusal([&] { adapter.clone(); });
    expectRefusal([&] { adapter.cloneKey(); });
}

TYPED_TEST(AdapterMemory, ShortageIsSaidByTheMakersOfSharedValues)
{
    using Interface = typename TypeParam::Interface;
    using Adapter = typename TypeParam::Adapter;
    const typename Adapter::DdsType sample;
    expectRefusal([] { createDataEntityInternal<Interface, Adapter>(); });
    expectRefusal([&] { createDataEntityFrom<Interface, Adapter>(sample); });
}

TYPED_TEST(AdapterMemory, ShortageIsSaidByTheExportedFactory)
{
    expectRefusal([] { delete TypeParam::exportedFactory(); });
}

TYPED_TEST(AdapterMemory, OfASharedValueIsOneBlockBesidesTheWireValue)
{
    using Interface = typename TypeParam::Interface;
    using Adapter = typename TypeParam::Adapter;
    const auto before = liveAllocations();
    const auto value = createDataEntityInternal<Interface, Adapter>();
    EXPECT_EQ(liveAllocations(), before + 2);
}

TYPED_TEST(AdapterMemory, IsGivenBackWithTheValue)
{
    const auto before = liveAllocations();
    {
        const std::unique_ptr<typename TypeParam::Interface> value(TypeParam::exportedFactory());
        const auto clone = value->clone();
        const auto key = value->cloneKey();
        EXPECT_EQ(liveAllocations(), before + 6);
    }
    EXPECT_EQ(liveAllocations(), before);
}

TYPED_TEST(AdapterMemory, OfABorrowedValueIsLeftAlone)
{
    typename TypeParam::Adapter::DdsType borrowed;
    const auto before = liveAllocations();
    const typename TypeParam::Adapter adapter(borrowed, ovra::plex::icd::dds::Borrow{});
    EXPECT_EQ(liveAllocations(), before);
}

} // namespace plex::test
