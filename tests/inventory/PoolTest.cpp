#include "inventory/Pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using inventory::workInParallel;

TEST(PoolTest, EachNumberOnce)
{
    for (const std::size_t parallel : {1U, 2U, 64U}) {
        std::vector<std::atomic<int>> times(500);
        workInParallel(
            times.size(), parallel, [&](std::size_t number) { ++times[number]; },
            [](std::size_t) {});
        for (const std::atomic<int>& each : times) {
            EXPECT_EQ(each, 1);
        }
    }
}

TEST(PoolTest, NothingToDo)
{
    workInParallel(
        0, 64, [](std::size_t) { FAIL(); }, [](std::size_t) { FAIL(); });
}

TEST(PoolTest, AsManyThreadsAsWantedButNoMoreThanThereIsWork)
{
    // All wait for each other, which fewer threads could not.
    std::atomic<int> waiting{0};
    workInParallel(
        8, 64,
        [&](std::size_t) {
            ++waiting;
            while (waiting < 8) {
                std::this_thread::yield();
            }
        },
        [](std::size_t) {});
    EXPECT_EQ(waiting, 8);
    std::mutex mutex;
    std::set<std::thread::id> threads;
    workInParallel(
        100, 3,
        [&](std::size_t) {
            const std::lock_guard<std::mutex> lock(mutex);
            threads.insert(std::this_thread::get_id());
        },
        [](std::size_t) {});
    EXPECT_LE(threads.size(), 3U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(PoolTest, WhatIsThrownCostsOneNumber)
{
    std::atomic<int> done{0};
    workInParallel(
        10, 2,
        [&](std::size_t number) {
            if (number % 2 == 0) {
                throw std::runtime_error("one of them");
            }
            ++done;
        },
        [](std::size_t) {});
    EXPECT_EQ(done, 5);
}

TEST(PoolTest, ProgressIsToldOnTheCallersThread)
{
    std::atomic<bool> told{false};
    workInParallel(
        1, 1,
        [&](std::size_t) {
            while (!told) {
                std::this_thread::yield();
            }
        },
        [&, caller = std::this_thread::get_id()](std::size_t done) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_EQ(done, 0U);
            told = true;
        });
    EXPECT_TRUE(told);
}

} // namespace
