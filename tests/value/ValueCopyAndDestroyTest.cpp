#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

// A document nested a million levels deep, on a small stack: no operation may need a stack as deep
// as the document, nor time that grows faster than its size.

namespace {

constexpr std::size_t deep = 1000000;
constexpr std::size_t deepMixed = 200000; // each level holds several values

/// Arrays and hashes in turn, each with a leaf before and after the nested one.
Value nestedMixed(std::size_t depth)
{
    Value content("end");
    for (; depth > 0; --depth) {
        if (depth % 2 == 0) {
            Value::Array around;
            around.emplace_back(1);
            around.push_back(std::move(content));
            around.emplace_back("s");
            content = std::move(around);
        } else {
            Value::Hash around;
            around.emplace("a", nullptr);
            around.emplace("b", std::move(content));
            around.emplace("c", Value::Array{2});
            content = std::move(around);
        }
    }
    return content;
}

struct DepthCase
{
    const char* name;
    Value (*make)();
    std::string (*text)();
    std::string (*json)();
};

std::ostream& operator<<(std::ostream& os, const DepthCase& row)
{
    return os << row.name;
}

class ValueDepthTest : public testing::TestWithParam<DepthCase>
{};

TEST_P(ValueDepthTest, IsDestroyed)
{
    runOnSmallStack([] { const Value value = GetParam().make(); });
}

TEST_P(ValueDepthTest, IsWritten)
{
    runOnSmallStack([] {
        const Value value = GetParam().make();
        EXPECT_TRUE(value.to_json() == GetParam().json());
        EXPECT_TRUE(value.to_s() == GetParam().text());
    });
}

TEST_P(ValueDepthTest, IsCopiedAndAssigned)
{
    runOnSmallStack([] {
        Value source = GetParam().make();
        const Value copy = source;
        Value target = GetParam().make();
        target = source;
        source = nullptr;
        const std::string json = GetParam().json();
        EXPECT_TRUE(copy.to_json() == json);
        EXPECT_TRUE(target.to_json() == json);
        target = Value(1);
    });
}

TEST_P(ValueDepthTest, IsConverted)
{
    runOnSmallStack([] {
        const Value value = GetParam().make();
        EXPECT_TRUE(value.to_b());
        EXPECT_EQ(value.to_i(), 0);
        EXPECT_EQ(value.to_l(), 0);
        EXPECT_EQ(value.to_f(), 0.0);
        const Value array = value.to_a();
        EXPECT_FALSE(array.holder().get<Value::Array>().empty());
        const Value hash = value.to_h();
        EXPECT_EQ(hash.holder().get<Value::Hash>().empty(), value.kind() == Value::Kind::Array);
    });
}

TEST_P(ValueDepthTest, IsLookedUp)
{
    runOnSmallStack([] {
        const Value::Hash hash{{"k", GetParam().make()}};
        EXPECT_TRUE(Value::lookup(hash, "k", nullptr).to_json() == GetParam().json());
    });
}

TEST_P(ValueDepthTest, IsExtracted)
{
    runOnSmallStack([] {
        const Value::Hash hash{{"k", GetParam().make()}};
        EXPECT_TRUE(Value::extract(hash, "k").to_json() == GetParam().json());
        EXPECT_TRUE(Value::extract(hash, Value::Array{"k"}).to_json() ==
                    "{\"k\":" + GetParam().json() + "}");
    });
}

TEST_P(ValueDepthTest, IsASelector)
{
    runOnSmallStack([] {
        const Value selector = nestedArrays(1, GetParam().make());
        EXPECT_EQ(describe(Value::extract({{GetParam().text(), 1}}, selector).to_a()[0].to_a()[1]),
                  "integer 1");
    });
}

TEST_P(ValueDepthTest, IsMergedAndDeleted)
{
    runOnSmallStack([] {
        const std::pair<std::string, Value> entry("k", GetParam().make());
        Value::Hash target{{"k", 1}};
        Value::merge_hash_entry(target, entry);
        EXPECT_TRUE(target.at("k").to_json() == GetParam().json());
        Value::merge_hash_entry(target, {"k", nullptr});
        EXPECT_TRUE(target.empty());
    });
}

INSTANTIATE_TEST_SUITE_P(
    Deep, ValueDepthTest,
    testing::Values(DepthCase{"Arrays", [] { return nestedArrays(deep, 1); },
                              [] { return repeat("[", deep) + "1" + repeat("]", deep); },
                              [] { return repeat("[", deep) + "1" + repeat("]", deep); }},
                    DepthCase{"Hashes", [] { return nestedHashes(deep, 1); },
                              [] { return repeat("{k => ", deep) + "1" + repeat("}", deep); },
                              [] { return repeat("{\"k\":", deep) + "1" + repeat("}", deep); }},
                    DepthCase{"Mixed", [] { return nestedMixed(deepMixed); },
                              [] {
                                  return repeat("{a => nil, b => [1, ", deepMixed / 2) + "end" +
                                         repeat(", s], c => [2]}", deepMixed / 2);
                              },
                              [] {
                                  return repeat("{\"a\":null,\"b\":[1,", deepMixed / 2) +
                                         "\"end\"" + repeat(",\"s\"],\"c\":[2]}", deepMixed / 2);
                              }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueDepthTest, MergesAHashIntoAHashAtEveryDepth)
{
    runOnSmallStack([] {
        Value::Hash target{{"k", nestedHashes(deep, Value::Hash{{"x", 1}, {"y", 2}})}};
        Value::merge_hash_entry(target,
                                {"k", nestedHashes(deep, Value::Hash{{"x", nullptr}, {"z", 3}})});
        EXPECT_TRUE(Value(std::move(target)).to_json() ==
                    repeat("{\"k\":", deep + 1) + "{\"y\":2,\"z\":3}" + repeat("}", deep + 1));
    });
}

TEST(ValueDepthTest, EveryDepthAroundTheBoundsIsCopiedWhole)
{
    for (std::size_t depth = 0; depth < 70; ++depth) {
        // The innermost has what looks alike when it is lost: nothing, and empty containers.
        const Value leaves(Value::Array{Value(), nullptr, Value::Array(), Value::Hash()});
        const Value source(Value::Array{nestedMixed(depth), nestedArrays(depth, leaves)});
        const Value copy = copyOf(source);
        EXPECT_EQ(describe(copy), describe(source)) << depth;
    }
}

TEST(ValueDepthTest, ManyDeepBranchesSideBySide)
{
    runOnSmallStack([] {
        Value::Array branches;
        for (int i = 0; i < 1000; ++i) {
            branches.push_back(nestedMixed(200));
        }
        const Value source = nestedArrays(100, std::move(branches));
        EXPECT_TRUE(copyOf(source).to_json() == source.to_json());
    });
}

TEST(ValueDepthTest, AShallowBranchOnEitherSideOfEachDeepOne)
{
    runOnSmallStack([] {
        Value content("end");
        for (std::size_t level = 0; level < deepMixed; ++level) {
            if (level % 2 == 0) {
                Value::Array around;
                around.emplace_back(Value::Array{1});
                around.push_back(std::move(content));
                around.emplace_back(Value::Array{2});
                content = std::move(around);
            } else {
                Value::Hash around;
                around.emplace("a", Value::Array{1});
                around.emplace("b", std::move(content));
                around.emplace("c", Value::Hash{{"d", 2}});
                content = std::move(around);
            }
        }
        EXPECT_TRUE(copyOf(content).to_json() == content.to_json());
    });
}

TEST(ValueDepthTest, ARawHolderOfADeepArrayIsCopiedAndDestroyed)
{
    runOnSmallStack([] {
        const Dynamic::Any any = std::move(nestedArrays(deep, 1).holder());
        EXPECT_TRUE(copyOf(any).type() == typeid(Value::Array));
        EXPECT_EQ(copyOf(any.get<Value::Array>()).size(), 1U);
    });
}

} // namespace
