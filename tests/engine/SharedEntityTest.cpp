// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/SharedEntity.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace plex::test
{

using ovra::plex::ps::internal::SharedReader;
namespace dds = eprosima::fastdds::dds;

class SharedEntityTest : public testing::Test
{
protected:
    /// No reader at all, but its end is seen.
    std::shared_ptr<dds::DataReader> reader()
    {
        const std::shared_ptr<void> end(this, [](void* test) {
            auto* const self = static_cast<SharedEntityTest*>(test);
            EXPECT_EQ(self->usesGoingOn, 0);
            ++self->ends;
        });
        return {end, nullptr};
    }

    std::atomic<int> ends = 0;
    std::atomic<int> usesGoingOn = 0;
    SharedReader shared;
};

TEST_F(SharedEntityTest, IsNotUsedBeforeItIsSet)
{
    EXPECT_FALSE(shared.use());
    shared.set(reader());
    EXPECT_TRUE(shared.use());
    EXPECT_EQ(ends, 0);
}

TEST_F(SharedEntityTest, IsNotUsedOnceClosed)
{
    shared.set(reader());
    const auto before = shared.use();
    shared.close();
    EXPECT_FALSE(shared.use());
    EXPECT_TRUE(before);
}

TEST_F(SharedEntityTest, ClosingEndsAnUnusedReader)
{
    shared.set(reader());
    shared.use().end();
    shared.close();
    EXPECT_EQ(ends, 1);
    shared.close();
    EXPECT_EQ(ends, 1);
}

TEST_F(SharedEntityTest, LastUseEndsAClosedReader)
{
    shared.set(reader());
    auto first = shared.use();
    {
        const auto second = shared.use();
        shared.close();
        first.end();
        first.end(); // no second end of the same use
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST_F(SharedEntityTest, UseMayBeHandedOn)
{
    shared.set(reader());
    {
        auto use = shared.use();
        shared.close();
        const auto handedOn = std::move(use);
        EXPECT_FALSE(
            use); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): that is asked here
        EXPECT_TRUE(handedOn);
        use.end();
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST_F(SharedEntityTest, EndsOnceAndAfterAllUsesOfManyThreads)
{
    constexpr int rounds = 300;
    for (int round = 0; round < rounds; ++round) {
        SharedReader raced;
        raced.set(reader());
        std::atomic<int> started = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                ++started;
                while (const auto use = raced.use()) {
                    ++usesGoingOn;
                    --usesGoingOn;
                }
            });
        }
        while (started < 3) {
            std::this_thread::yield();
        }
        raced.close();
        for (auto& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(ends, round + 1);
    }
}

} // namespace plex::test
