// SPDX-License-Identifier: Apache-2.0
// A module that plex_add_module() makes, as applications use it.
#include <plex/Plex.hpp>

#include <gtest/gtest.h>

#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <memory>
#include <vector>
#include <weather/Report.hpp>
#include <weather/log/Entry.hpp>

namespace plex::test
{

namespace
{

using weather::Report;

TEST(GeneratedModule, IsFoundByTheTransportAndExchangesItsTopics)
{
    const auto plex = ovra::plex::Plex::create({{"dds.module.path", PLEX_TEST_MODULE_DIRECTORY}});
    const auto subscriber = plex->createSubscriber<Report>(testUri());
    const auto publisher = plex->createPublisher<Report>(testUri());
    const auto report = publisher->createDataEntity();
    report->setStation("north");
    report->setWhen({10, 20});
    report->setWind(std::vector<float>{1.5F, 2.5F});
    report->setNote("calm");
    publisher->publish(*report, std::chrono::milliseconds(0));

    std::vector<std::shared_ptr<Report>> received;
    ASSERT_TRUE(waitFor([&] {
        received = subscriber->read(0);
        return !received.empty();
    }));
    const Report& first = *received.front();
    EXPECT_EQ(first.getStation(), "north");
    EXPECT_EQ(first.getWhen(), (common::values::Stamp{10, 20}));
    ASSERT_EQ(first.getWind().size(), 2U);
    EXPECT_EQ(first.getWind()[1], 2.5F);
    EXPECT_EQ(first.getNote(), "calm");
    EXPECT_TRUE(first.keyEquals(*report));
}

TEST(GeneratedModule, ExchangesTopicsOfAModuleWithinIt)
{
    using weather::log::Entry;
    const auto plex = ovra::plex::Plex::create({{"dds.module.path", PLEX_TEST_MODULE_DIRECTORY}});
    const auto subscriber = plex->createSubscriber<Entry>(testUri());
    const auto publisher = plex->createPublisher<Entry>(testUri());
    const auto entry = publisher->createDataEntity();
    entry->setLevel(common::Level::LOUD);
    entry->setText("thunder");
    publisher->publish(*entry, std::chrono::milliseconds(0));

    std::vector<std::shared_ptr<Entry>> received;
    ASSERT_TRUE(waitFor([&] {
        received = subscriber->read(0);
        return !received.empty();
    }));
    EXPECT_EQ(received.front()->getText(), "thunder");
    EXPECT_TRUE(received.front()->keyEquals(*entry));
}

} // namespace

} // namespace plex::test
