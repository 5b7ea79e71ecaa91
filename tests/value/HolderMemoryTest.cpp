#include "tests/value/HolderMemoryTestHelpers.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using Dynamic::HolderMemory;

namespace {

/// Runs `body` on a thread of its own, from whose first holder to the last of its destructors all
/// allocations are its own. Returns how many of them were not freed on it.
template <typename Body>
long unfreedByThread(Body body)
{
    long unfreed = 0;
    std::thread([&] {
        const long before = Allocations::current().unfreed;
        body();
        unfreed = Allocations::current().unfreed - before;
    }).join();
    return unfreed;
}

template <std::size_t... octets>
void mixSizes()
{
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same run each time
    std::vector<std::shared_ptr<void>> all;
    std::vector<bool (*)(const void*)> checks;
    for (std::size_t round = 0; round < 200; ++round) {
        (
            [&] {
                auto object =
                    std::make_unique<Filled<octets>>(static_cast<unsigned char>(round + octets));
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.get()) % HolderMemory::alignment,
                          0);
                all.emplace_back(std::move(object));
                checks.push_back([](const void* address) {
                    return static_cast<const Filled<octets>*>(address)->intact();
                });
            }(),
            ...);
        const std::size_t gone = random() % all.size();
        all[gone].reset();
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(!all[i] || checks[i](all[i].get())) << i;
    }
}

TEST(HolderMemorySizesTest, ObjectsOfAllSizesKeepApart)
{
    mixSizes<1, 2, 7, 8, 9, 15, 16, 17, 24, 31, 32, 40, 48, 56, 57, 63, 64>();
}

TEST(HolderMemoryBlocksTest, AreUsedUnlessAddressSanitizerIsThere)
{
    EXPECT_EQ(HolderMemory::inBlocks(), !BUILT_WITH_ADDRESS_SANITIZER);
}

TEST_F(HolderMemoryTest, ManyObjectsCostFewAllocations)
{
    std::vector<std::unique_ptr<Small>> all(1000);
    const long before = Allocations::current().count;
    for (auto& each : all) {
        each = std::make_unique<Small>(1);
    }
    // Each takes 8 octets more, as does each block.
    const long perBlock = (HolderMemory::blockSize - 8) / (16 + 8);
    EXPECT_LE(Allocations::current().count - before, 1000 / perBlock + 1);
    EXPECT_GE(Allocations::current().count - before, 1000 / perBlock);
}

TEST_F(HolderMemoryTest, BlocksGoBackWithTheLastOfTheirObjectsInWhateverOrder)
{
    const long unfreed = unfreedByThread([] {
        std::vector<std::unique_ptr<Small>> all(1000);
        const long before = Allocations::current().unfreed;
        for (auto& each : all) {
            each = std::make_unique<Small>(1);
        }
        std::shuffle(all.begin(), all.end(),
                     std::mt19937(1)); // NOLINT(cert-msc32-c,cert-msc51-cpp)
        for (auto& each : all) {
            each.reset();
        }
        EXPECT_EQ(Allocations::current().unfreed - before, 1) << "the block that is handed out";
    });
    EXPECT_EQ(unfreed, 1) << "it goes when the thread ends, after this was counted";
}

TEST_F(HolderMemoryTest, AnObjectThatStaysKeepsItsBlockOnly)
{
    std::vector<std::unique_ptr<Small>> all(1000);
    const auto first = std::make_unique<Small>(7);
    const long before = Allocations::current().unfreed;
    for (auto& each : all) {
        each = std::make_unique<Small>(1);
    }
    all.clear();
    EXPECT_LE(Allocations::current().unfreed - before, 1);
    EXPECT_TRUE(first->intact());
}

TEST_F(HolderMemoryTest, WhenMemoryRunsOutTheNextCallIsAsGood)
{
    std::vector<std::unique_ptr<Small>> all(100);
    int failures = 0;
    for (auto& each : all) {
        const AllocationLimit limit(0);
        try {
            each = std::make_unique<Small>(3);
        } catch (const std::bad_alloc&) {
            ++failures;
            break;
        }
    }
    EXPECT_EQ(failures, 1);
    for (auto& each : all) {
        each = std::make_unique<Small>(3);
    }
    for (auto& each : all) {
        EXPECT_TRUE(each->intact());
    }
}

TEST_F(HolderMemoryTest, ABlockIsUsedToItsEndAlsoAfterAFailure)
{
    // On a thread of its own, so in a new block.
    std::thread([] {
        std::array<std::unique_ptr<Filled<64>>, 6> all;
        for (auto& each : all) {
            each = std::make_unique<Filled<64>>(1);
        }
        static_assert(HolderMemory::blockSize == 8 + 6 * (8 + 64) + (8 + 48), "what is left");
        const auto fits = [](auto make) {
            const AllocationLimit none(0);
            try {
                make();
            } catch (const std::bad_alloc&) {
                return false;
            }
            return true;
        };
        EXPECT_FALSE(fits([] { std::make_unique<Filled<64>>(2); }));
        EXPECT_TRUE(fits([] { std::make_unique<Filled<48>>(3); }));
    }).join();
}

TEST_F(HolderMemoryTest, AnOperatorDeleteMayMakeObjectsItself)
{
    // On a thread of its own, so from new blocks. Six objects fill one but for 56 octets.
    std::thread([] {
        using Large = Filled<64>;
        static std::array<std::unique_ptr<Large>, 6> made;
        std::array<std::unique_ptr<Large>, 6> first;
        for (auto& each : first) {
            each = std::make_unique<Large>(1);
        }
        for (auto& each : first) {
            each.reset();
        }
        const AtNextDelete reentering([] {
            for (auto& each : made) {
                each = std::make_unique<Large>(2);
            }
        });
        const auto next = std::make_unique<Large>(3); // frees the first block
        const auto last = std::make_unique<Large>(4);
        EXPECT_TRUE(next->intact());
        EXPECT_TRUE(last->intact());
        for (auto& each : made) {
            ASSERT_TRUE(each) << "nothing was freed";
            EXPECT_TRUE(each->intact());
            each.reset();
        }
    }).join();
}

TEST(HolderMemoryNullTest, DeletingNothingIsAllowed)
{
    HolderMemory::operator delete(nullptr);
}

TEST(HolderMemoryForTest, TakesTheHoldersOfAllKindsOfValues)
{
    using Dynamic::HolderMemoryFor;
    EXPECT_TRUE((std::is_same_v<HolderMemoryFor<bool>, HolderMemory>) );
    EXPECT_TRUE((std::is_same_v<HolderMemoryFor<double>, HolderMemory>) );
    EXPECT_TRUE((std::is_same_v<HolderMemoryFor<std::string>, HolderMemory>) );
    EXPECT_TRUE((std::is_same_v<HolderMemoryFor<Value::Array>, HolderMemory>) );
    EXPECT_TRUE((std::is_same_v<HolderMemoryFor<Value::Hash>, HolderMemory>) );
}

TEST(HolderMemoryForTest, LeavesLargeAndStrictlyAlignedObjectsToTheHeap)
{
    struct alignas(64) Strict
    {
        int number;
    };
    struct Large
    {
        std::array<char, 100> octets;
    };
    const Dynamic::Any strict(Strict{1});
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&strict.get<Strict>()) % alignof(Strict), 0);
    const Dynamic::Any large(Large{{'a'}});
    EXPECT_EQ(Dynamic::Any(large).get<Large>().octets[0], 'a'); // NOLINT: the copy is tested
    EXPECT_FALSE((std::is_same_v<Dynamic::HolderMemoryFor<Strict>, HolderMemory>) );
    EXPECT_FALSE((std::is_same_v<Dynamic::HolderMemoryFor<Large>, HolderMemory>) );
}

} // namespace
