// SPDX-License-Identifier: Apache-2.0
#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <memory>
#include <string>

// This program does not link the module library: it opens it as the transport does, its symbols kept apart.
namespace plex::test
{

namespace
{

using ovra::plex::Plex;
using ovra::plex::PlexException;
using ovra::plex::Uri;
using ovra::plex::ps::DataEntity;
using ovra::plex::ps::DataEntityBase;
using ovra::plex::ps::Publisher;
using ovra::plex::ps::qos::QoSList;

template <class Function>
Function* factory(const std::string& symbol)
{
    void* const library = dlopen(PLEX_TEST_MODULE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror(); // NOLINT(concurrency-mt-unsafe): no other thread loads
    void* const function = dlsym(library, symbol.c_str());
    EXPECT_NE(function, nullptr) << dlerror(); // NOLINT(concurrency-mt-unsafe): no other thread loads
    return reinterpret_cast<Function*>(function);
}

template <class T>
std::unique_ptr<T> createValue(const std::string& type)
{
    return std::unique_ptr<T>(factory<T*()>("generated_dds_DataEntity_vexstubif_" + type)());
}

/// Casts a value up to its root, by itself a mere address, and from there to each of its classes.
template <class T, class Other>
void expectCastsBothWays(T& value)
{
    DataEntityBase* const root = &value;
    EXPECT_EQ(dynamic_cast<T*>(root), &value);
    auto* const middle = dynamic_cast<DataEntity<T>*>(root);
    EXPECT_EQ(middle, static_cast<DataEntity<T>*>(&value));
    EXPECT_EQ(dynamic_cast<T*>(middle), &value);
    EXPECT_EQ(dynamic_cast<DataEntityBase*>(middle), root);
    EXPECT_EQ(dynamic_cast<DataEntity<Other>*>(root), nullptr);
    EXPECT_EQ(dynamic_cast<Other*>(root), nullptr);
}

} // namespace

TEST(DynamicCast, WorksBothWaysOnValuesOfAnOpenedLibrary)
{
    const auto altAz = createValue<vexstubif::AltAz>("AltAz");
    expectCastsBothWays<vexstubif::AltAz, vexstubif::DomeTemperature>(*altAz);
    const auto domeTemperature = createValue<vexstubif::DomeTemperature>("DomeTemperature");
    expectCastsBothWays<vexstubif::DomeTemperature, vexstubif::AltAz>(*domeTemperature);
}

TEST(DynamicCast, WorksBothWaysOnValuesOfTheMiddleware)
{
    const auto plex = Plex::create({{"dds.module.path", PLEX_TEST_MODULE_DIR}});
    const auto altAz = plex->createDataEntity<vexstubif::AltAz>();
    expectCastsBothWays<vexstubif::AltAz, vexstubif::DomeTemperature>(*altAz);
    const auto domeTemperature = plex->createDataEntity<vexstubif::DomeTemperature>();
    expectCastsBothWays<vexstubif::DomeTemperature, vexstubif::AltAz>(*domeTemperature);
}

TEST(DynamicCast, LeavesValuesUsableThroughTheirInterface)
{
    const auto value = createValue<vexstubif::AltAz>("AltAz");
    value->setAlt(1.5);
    value->setAz(2.5);
    const auto clone = value->clone();
    EXPECT_EQ(clone->getAlt(), 1.5);
    EXPECT_EQ(clone->getAz(), 2.5);
}

TEST(DynamicCast, LetsExceptionsOfAnOpenedLibraryBeCaughtByTheirType)
{
    using Factory = Publisher<vexstubif::AltAz>*(const std::shared_ptr<Plex>&, const Uri&, const QoSList&,
                                                 const Plex::Properties&);
    auto* const createPublisher = factory<Factory>("generated_dds_Publisher_vexstubif_AltAz");
    EXPECT_THROW(createPublisher(nullptr, Uri("dds+ps://0/topic"), {}, {}), PlexException);
}

} // namespace plex::test
