#include "tests/support/CountedNew.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <sstream>
#include <string>
#include <vector>

// What happens when memory runs out, and how much memory a text or a deep document takes: in
// proportion to its size, whatever characters it has. The time of every operation here is spent on
// allocating or in proportion to it.

namespace {

using ValueAllocationTest = NeedsCountedNew;
using JSONParserAllocationTest = NeedsCountedNew;
using CountedNewTest = NeedsCountedNew;

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

TEST_F(ValueAllocationTest, AFailedCopyFreesWhatItBuilt)
{
    const Value source = document();
    failEachAllocation(source, [&] { copyOf(source); });
}

TEST_F(ValueAllocationTest, AFailedAssignmentKeepsThePreviousContent)
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

TEST_F(ValueAllocationTest, AFailedRenderingLeavesTheValueAlone)
{
    const Value source = document();
    failEachAllocation(source, [&] { source.to_json(); });
    failEachAllocation(source, [&] { source.to_s(); });
}

TEST_F(ValueAllocationTest, AFailedConversionLeavesTheValueAlone)
{
    const Value source = document();
    failEachAllocation(source, [&] { source.to_a(); });
    const Value hash = Value::Hash{{"k", source}};
    failEachAllocation(hash, [&] { hash.to_h(); });
    failEachAllocation(hash, [&] { hash.to_a(); });
}

TEST_F(ValueAllocationTest, AFailedMergeLeavesTheTargetInOrder)
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

TEST_F(ValueAllocationTest, DestructionAllocatesNothing)
{
    Value deep = nestedHashes(1000, document());
    Value wide = Value::Array{document(), document(), nestedArrays(1000, document())};
    const AllocationLimit none(0);
    deep = Value();
    wide = Value();
    EXPECT_TRUE(deep.holder().empty());
    EXPECT_TRUE(wide.holder().empty());
}

TEST_F(ValueAllocationTest, MovesAllocateNothing)
{
    Value source = document();
    const AllocationLimit none(0);
    Value moved = std::move(source);
    source = std::move(moved);
    std::swap(source, moved);
    EXPECT_TRUE(source.holder().empty());
}

/// Lets the first, second, … allocation of the read fail until none does.
TEST_F(JSONParserAllocationTest, GivesNilWhenMemoryRunsOut)
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
TEST_F(JSONParserAllocationTest, GivesTheEmptyNilWithoutAnyMemory)
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

class ValueDepthCostTest : public NeedsCountedNew, public testing::WithParamInterface<CostCase>
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
TEST_P(ValueDepthCostTest, GrowsWithTheDepthOnly)
{
    const Allocations shallow = costOf(GetParam(), 300);
    const Allocations deep = costOf(GetParam(), 30000);
    EXPECT_LE(deep.count, shallow.count * 110 + 10);
    EXPECT_LE(deep.bytes, shallow.bytes * 220 + 1000);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ValueDepthCostTest,
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

/// Where the text stands in the value.
enum class Place
{
    String,
    Key,
    ManyStrings ///< the text cut into lines of 80 characters, each a string of an array
};

struct Characters
{
    const char* name;
    std::string unit; ///< The text is made of repetitions of this.
};

struct Texts
{
    Characters characters;
    std::size_t length;
    Place place;
};

std::ostream& operator<<(std::ostream& os, const Texts& row)
{
    return os << row.characters.name << ' ' << row.length;
}

std::string repeatedUpTo(const std::string& unit, std::size_t length)
{
    std::string text;
    while (text.size() < length) {
        text += unit;
    }
    text.resize(length);
    return text;
}

Value valueOf(const std::string& text, Place place)
{
    switch (place) {
    case Place::String:
        return text;
    case Place::Key:
        return Value::Hash{{text, 1LL}};
    default:
        Value::Array lines;
        for (std::size_t at = 0; at < text.size(); at += 80) {
            lines.emplace_back(text.substr(at, 80));
        }
        return lines;
    }
}

class ValueTextMemoryTest : public NeedsCountedNew, public testing::WithParamInterface<Texts>
{
protected:
    /// Runs `work`, which returns the length of its output.
    template <typename Work>
    static void expectLinear(const char* name, std::size_t input, Work work)
    {
        const std::size_t before = Allocations::current().bytes;
        const long heldBefore = Allocations::unfreedBytes();
        Allocations::takePeak();
        const std::size_t output = work();
        const std::size_t larger = std::max(input, output);
        const auto peak = static_cast<std::size_t>(Allocations::takePeak() - heldBefore);
        EXPECT_LE(peak, 10 * larger) << name;
        EXPECT_LE(Allocations::current().bytes - before, 20 * larger) << name;
        EXPECT_GE(peak, output / 2) << name << ": nothing was counted";
    }
};

TEST_P(ValueTextMemoryTest, IsLinear)
{
    const std::string text = repeatedUpTo(GetParam().characters.unit, GetParam().length);
    const Value value = valueOf(text, GetParam().place);
    const std::string json = value.to_json();

    expectLinear("to_json", text.size(), [&] {
        const std::string made = value.to_json();
        return made.size();
    });
    expectLinear("to_s", text.size(), [&] {
        const std::string made = value.to_s();
        return made.size();
    });
    std::istringstream in(json);
    Value read;
    expectLinear("parse_json", json.size(), [&] {
        read = Value::parse_json(in);
        return text.size();
    });
    EXPECT_EQ(read.to_s(), value.to_s());
    expectLinear("parse", text.size(), [&] {
        const Value made = Value::parse(text);
        return made.to_s().size();
    });
}

std::vector<Texts> allTexts()
{
    const std::vector<Characters> all = {
        {"LineEnds", "\n"},
        {"ControlCharacters", "\x1f"},
        {"Quotes", "\""},
        {"Plain", "a"},
        {"Digits", "7"},
        {"EverySecond", "a\n"},
        {"EverySecondControl", "\x01z"},
        {"OneInEach80", std::string(79, 'x') + '\n'},
        {"HighBytes", "\xC3\xA9"},
    };
    std::vector<Texts> rows;
    for (const Characters& characters : all) {
        for (const std::size_t length : {10'000U, 100'000U, 2'000'000U}) {
            for (const Place place : {Place::String, Place::Key, Place::ManyStrings}) {
                rows.push_back({characters, length, place});
            }
        }
    }
    return rows;
}

std::string nameOf(const testing::TestParamInfo<Texts>& row)
{
    const char* const places[] = {"String", "Key", "ManyStrings"};
    return std::string(row.param.characters.name) + std::to_string(row.param.length) +
           places[static_cast<int>(row.param.place)];
}

INSTANTIATE_TEST_SUITE_P(Texts, ValueTextMemoryTest, testing::ValuesIn(allTexts()), nameOf);

} // namespace
