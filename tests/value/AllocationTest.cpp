#include "tests/support/CountedNew.h"
#include "tests/value/ValueTestHelpers.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <new>

// What happens when memory runs out.

namespace {

using AllocationTest = NeedsCountedNew;

Value document()
{
    Value::Array elements{1, 2LL, 2.5, true, nullptr, Value(), std::string(40, 'x')};
    elements.emplace_back(Value::Hash{{std::string(40, 'a'), 1}, {"b", Value::Array{"c"}}});
    elements.push_back(nestedArrays(30, Value::Hash{{"deep", nestedHashes(30, "end")}}));
    return elements;
}

/// Lets the first, second, … allocation of `body` fail until it passes. Each failure must be told
/// by std::bad_alloc and leave `source` as it was and nothing allocated.
template <typename Body>
void failEachAllocation(const Value& source, Body body)
{
    const std::string before = source.to_json();
    for (long count = 0;; ++count) {
        const long unfreedBefore = Allocations::current().unfreed;
        bool passed = false;
        try {
            const AllocationLimit limit(count);
            body();
            passed = true;
        } catch (const std::bad_alloc&) {
            passed = false;
        }
        ASSERT_EQ(Allocations::current().unfreed, unfreedBefore) << count;
        ASSERT_EQ(source.to_json(), before) << count;
        if (passed) {
            EXPECT_GT(count, 0) << "nothing was allocated, so nothing was tested";
            return;
        }
        ASSERT_LT(count, 10000);
    }
}

TEST_F(AllocationTest, AFailedCopyFreesWhatItBuilt)
{
    const Value source = document();
    failEachAllocation(source, [&] { copyOf(source); });
}

TEST_F(AllocationTest, AFailedAssignmentKeepsThePreviousContent)
{
    const Value source = document();
    int failures = 0;
    int kept = 0;
    failEachAllocation(source, [&] {
        Value target = 17;
        try {
            target = source;
        } catch (const std::bad_alloc&) {
            ++failures;
            kept += target.to_i() == 17 ? 1 : 0;
            throw;
        }
    });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(kept, failures);
}

TEST_F(AllocationTest, AFailedRenderingLeavesTheValueAlone)
{
    const Value source = document();
    failEachAllocation(source, [&] { source.to_json(); });
    failEachAllocation(source, [&] { source.to_s(); });
}

TEST_F(AllocationTest, AFailedConversionLeavesTheValueAlone)
{
    const Value source = document();
    failEachAllocation(source, [&] { source.to_a(); });
    const Value hash = Value::Hash{{"k", source}};
    failEachAllocation(hash, [&] { hash.to_h(); });
    failEachAllocation(hash, [&] { hash.to_a(); });
}

TEST_F(AllocationTest, AFailedMergeLeavesTheTargetInOrder)
{
    const Value::Hash original{{"k", Value::Hash{{"x", Value::Hash{{"y", 1}}}, {"z", 2}}}};
    const std::pair<std::string, Value> entry(
        "k", Value::Hash{{"a", "new"}, {"x", Value::Hash{{"v", "new"}}}, {"z", nullptr}});
    const std::string merged = "{\"k\":{\"a\":\"new\",\"x\":{\"v\":\"new\",\"y\":1}}}";
    int failures = 0;
    for (long count = 0;; ++count) {
        Value target = original;
        auto& hash = target.holder().get<Value::Hash>();
        try {
            const AllocationLimit limit(count);
            Value::merge_hash_entry(hash, entry);
            break;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        // Merging the entry again completes what was begun.
        Value::merge_hash_entry(hash, entry);
        ASSERT_EQ(target.to_json(), merged) << count;
    }
    EXPECT_GT(failures, 0);
}

TEST_F(AllocationTest, DestructionAllocatesNothing)
{
    Value deep = nestedHashes(1000, document());
    Value wide = Value::Array{document(), document(), nestedArrays(1000, document())};
    const AllocationLimit none(0);
    deep = Value();
    wide = Value();
    EXPECT_TRUE(deep.holder().empty());
    EXPECT_TRUE(wide.holder().empty());
}

TEST_F(AllocationTest, MovesAllocateNothing)
{
    Value source = document();
    const AllocationLimit none(0);
    Value moved = std::move(source);
    source = std::move(moved);
    std::swap(source, moved);
    EXPECT_TRUE(source.holder().empty());
}

} // namespace
