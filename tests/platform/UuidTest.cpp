// SPDX-License-Identifier: Apache-2.0
#include <plex/common/UUID.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace plex::test
{

namespace
{

using ovra::plex::ps::detail::newUUID;

std::vector<std::string> manyUuids(std::size_t count)
{
    std::vector<std::string> uuids(count);
    for (auto& uuid : uuids) {
        uuid = newUUID();
    }
    return uuids;
}

} // namespace

TEST(Uuid, HasTheFormOfARandomOne)
{
    for (const auto& uuid : manyUuids(1000)) {
        EXPECT_THAT(uuid, testing::MatchesRegex(
                              "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
    }
}

TEST(Uuid, IsNewEachTimeInEveryThread)
{
    constexpr std::size_t perThread = 20'000;
    std::vector<std::vector<std::string>> results(8);
    {
        std::vector<std::jthread> threads;
        for (auto& result : results) {
            threads.emplace_back([&result] { result = manyUuids(perThread); });
        }
    }
    std::set<std::string> all;
    for (const auto& result : results) {
        all.insert(result.begin(), result.end());
    }
    EXPECT_EQ(all.size(), results.size() * perThread);
}

} // namespace plex::test
