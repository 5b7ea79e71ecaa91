#include "tests/support/CountedNew.h"
#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

// The reader when memory runs out, and that the memory for deep documents grows with their size
// only. The time of every operation here is spent on allocating or in proportion to it.

namespace {

using JSONReaderAllocationTest = NeedsCountedNew;
using CountedNewTest = NeedsCountedNew;

/// Lets the first, second, … allocation of the read fail until none does.
TEST_F(JSONReaderAllocationTest, GivesNilWhenMemoryRunsOut)
{
    const std::string text = R"({"a long enough name":[1,2.5,true,null,"a long enough string\n",)"
                             R"([[[[{"b":{"c":[]}}]]]]],"bare name that is long","d":"e"} )";
    std::istringstream in;
    int failures = 0;
    for (long limit = 0;; ++limit) {
        in.clear();
        in.str(text);
        const Allocations before = Allocations::current();
        bool read = false;
        {
            Value value;
            {
                const AllocationLimit none(limit);
                value = Value::parse_json(in);
            }
            read = value.kind() == Value::Kind::Hash;
            EXPECT_TRUE(read || value.kind() == Value::Kind::Nil);
        }
        EXPECT_EQ(Allocations::current().unfreed, before.unfreed) << limit;
        EXPECT_EQ(in.exceptions(), std::ios_base::goodbit) << limit;
        if (read) {
            break;
        }
        ++failures;
        ASSERT_LT(limit, 10000);
    }
    EXPECT_GT(failures, 20);
}

/// The nil of bad input is the one with a null pointer, for which there is memory even then.
TEST_F(JSONReaderAllocationTest, GivesTheEmptyNilWithoutAnyMemory)
{
    std::istringstream in("x");
    const AllocationLimit none(0);
    EXPECT_TRUE(Value::parse_json(in).holder().empty());
}

std::string nested(std::size_t depth)
{
    std::string text;
    for (std::size_t level = 0; level < depth; ++level) {
        text += level % 2 == 0 ? "[1,\"s\"," : "{\"a\":null,\"k\":";
    }
    text += "true";
    for (std::size_t level = depth; level > 0; --level) {
        text += level % 2 == 1 ? ",2]" : ",\"z\":[]}";
    }
    return text;
}

Value read(const std::string& text)
{
    std::istringstream in(text);
    return Value::parse_json(in);
}

struct CostCase
{
    const char* name;
    /// Does something with the value that was read from the text.
    std::function<void(const std::string& text, Value& value)> work;
};

std::ostream& operator<<(std::ostream& os, const CostCase& row)
{
    return os << row.name;
}

class DepthCostTest : public NeedsCountedNew, public testing::WithParamInterface<CostCase>
{};

Allocations costOf(const CostCase& row, std::size_t depth)
{
    const std::string text = nested(depth);
    Value value = read(text);
    const Allocations before = Allocations::current();
    row.work(text, value);
    const Allocations after = Allocations::current();
    return {after.count - before.count, after.bytes - before.bytes, 0};
}

/// A hundred times the depth may cost a hundred times as much, and not much more: what grows by
/// doubling may double once more.
TEST_P(DepthCostTest, GrowsWithTheDepthOnly)
{
    const Allocations shallow = costOf(GetParam(), 300);
    const Allocations deep = costOf(GetParam(), 30000);
    EXPECT_LE(deep.count, shallow.count * 110 + 10);
    EXPECT_LE(deep.bytes, shallow.bytes * 220 + 1000);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, DepthCostTest,
    testing::Values(CostCase{"Read", [](const std::string& text, Value&) { read(text); }},
                    CostCase{"ReadCutOff", [](const std::string& text,
                                              Value&) { read(text.substr(0, text.size() - 1)); }},
                    CostCase{"Copy", [](const std::string&, Value& value) { copyOf(value); }},
                    CostCase{"Assign",
                             [](const std::string&, Value& value) {
                                 Value target = 1;
                                 target = value;
                             }},
                    CostCase{"Text", [](const std::string&, Value& value) { value.to_s(); }},
                    CostCase{"JSON", [](const std::string&, Value& value) { value.to_json(); }},
                    CostCase{"Array", [](const std::string&, Value& value) { value.to_a(); }},
                    CostCase{"Merge",
                             [](const std::string&, Value& value) {
                                 Value::Hash target{{"k", Value::Hash()}};
                                 Value::merge_hash_entry(target, {"k", Value::Hash{{"l", value}}});
                             }},
                    CostCase{"Destroy", [](const std::string&, Value& value) { value = Value(); }}),
    [](const auto& row) { return std::string(row.param.name); });

/// The counts above are not all zero.
TEST_F(CountedNewTest, CountsWhatIsAllocated)
{
    const CostCase row{"", [](const std::string&, Value& value) { copyOf(value); }};
    EXPECT_GT(costOf(row, 1000).count, 1000);
    EXPECT_GT(costOf(row, 1000).bytes, 10000U);
}

} // namespace
