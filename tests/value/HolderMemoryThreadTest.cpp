#include "tests/value/HolderMemoryTestHelpers.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// Holders made by one thread and deleted by another, and threads that end.

namespace {

/// Makes objects in its destructor.
struct Late
{
    std::unique_ptr<Small>* place = nullptr;
    long* unfreed = nullptr;
    Late() = default;
    Late(const Late&) = delete;
    Late& operator=(const Late&) = delete;
    ~Late()
    {
        if (place) {
            *place = std::make_unique<Small>(5);
            const long before = Allocations::current().unfreed;
            {
                const auto another = std::make_unique<Small>(6);
            }
            *unfreed = Allocations::current().unfreed - before;
        }
    }
};

thread_local Late late;

TEST_F(HolderMemoryTest, AThreadThatEndsGivesItsBlockBack)
{
    // What the thread itself allocates is freed on this one; so is its block, if its last object
    // outlives it.
    std::unique_ptr<Small> outlives;
    std::thread([&] { outlives = std::make_unique<Small>(9); }).join();
    EXPECT_TRUE(outlives->intact());
    EXPECT_EQ(outlives->fill(), 9);
    const long before = Allocations::current().unfreed;
    outlives.reset();
    EXPECT_EQ(Allocations::current().unfreed - before, -1);
}

TEST_F(HolderMemoryTest, AnObjectMadeAfterTheThreadGaveItsBlockBackIsWhole)
{
    std::unique_ptr<Small> made;
    long unfreed = -1;
    std::thread([&] {
        // First used before the thread's first block, so destroyed after its last was given back.
        late.place = &made;
        late.unfreed = &unfreed;
        const auto early = std::make_unique<Small>(4);
    }).join();
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->intact());
    EXPECT_EQ(unfreed, 0) << "a block of its own, which goes back with it";
    const long before = Allocations::current().unfreed;
    made.reset();
    EXPECT_EQ(Allocations::current().unfreed - before, -1);
}

TEST(HolderMemoryThreadsTest, ValuesOfOneThreadAreDestroyedByOthers)
{
    constexpr std::size_t threads = 4;
    constexpr std::size_t values = 2000;
    std::vector<Value> all(threads * values);
    const auto onThreads = [&](auto body) {
        std::vector<std::thread> running;
        running.reserve(threads);
        for (std::size_t thread = 0; thread < threads; ++thread) {
            running.emplace_back([&body, thread] { body(thread); });
        }
        for (auto& each : running) {
            each.join();
        }
    };
    onThreads([&](std::size_t thread) {
        for (std::size_t i = 0; i < values; ++i) {
            all[thread * values + i] = Value::Array{static_cast<int>(i), std::to_string(i)};
        }
    });
    for (std::size_t i = 0; i < threads * values; ++i) {
        const std::size_t number = i % values;
        EXPECT_EQ(all[i].to_s(),
                  "[" + std::to_string(number) + ", " + std::to_string(number) + "]");
    }
    // Each takes every fourth, so that all have a part of each block.
    onThreads([&](std::size_t thread) {
        for (std::size_t i = thread; i < threads * values; i += threads) {
            all[i] = Value();
        }
    });
}

} // namespace
