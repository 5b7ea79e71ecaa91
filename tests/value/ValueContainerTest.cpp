#include "tests/value/ValueTestHelpers.h"
#include "value/Value.h"

#include <gtest/gtest.h>

namespace {

struct ContainerCase
{
    const char* name;
    Value value;
    const char* array;
    const char* hash;
};

std::ostream& operator<<(std::ostream& os, const ContainerCase& row)
{
    return os << row.name;
}

class ValueContainerTest : public testing::TestWithParam<ContainerCase>
{};

TEST_P(ValueContainerTest, ConvertsToArrayAndHash)
{
    EXPECT_EQ(describe(GetParam().value.to_a()), GetParam().array);
    EXPECT_EQ(describe(GetParam().value.to_h()), GetParam().hash);
}

INSTANTIATE_TEST_SUITE_P(
    All, ValueContainerTest,
    testing::Values(
        ContainerCase{"EmptyNil", Value(), "array[]", "hash{}"},
        ContainerCase{"Nil", Value(nullptr), "array[]", "hash{}"},
        ContainerCase{"Boolean", Value(true), "array[boolean true]", "hash{}"},
        ContainerCase{"Integer", Value(7), "array[integer 7]", "hash{}"},
        ContainerCase{"Long", Value(7LL), "array[long 7]", "hash{}"},
        ContainerCase{"Real", Value(0.5), "array[real 0.500000]", "hash{}"},
        ContainerCase{"String", Value("s"), "array[string s]", "hash{}"},
        ContainerCase{"EmptyArray", Value(Value::Array{}), "array[]", "hash{}"},
        ContainerCase{"Array", Value(Value::Array{1, nullptr}), "array[integer 1, nil]", "hash{}"},
        ContainerCase{"ArrayOfPairs", nestedArrays(1, Value::Array{"a", 1}),
                      "array[array[string a, integer 1]]", "hash{}"},
        ContainerCase{"EmptyHash", Value(Value::Hash{}), "array[]", "hash{}"},
        ContainerCase{"Hash", Value(Value::Hash{{"b", true}, {"a", 1}}),
                      "array[array[string a, integer 1], array[string b, boolean true]]",
                      "hash{a: integer 1, b: boolean true}"},
        ContainerCase{"OtherType", Value(Dynamic::Any(5U)), "array[]", "hash{}"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueContainerTest, TheArrayAndTheHashAreCopies)
{
    const Value array = nestedArrays(2, 1);
    array.to_a()[0].holder().get<Value::Array>()[0] = 2;
    EXPECT_EQ(describe(array), "array[array[integer 1]]");
    const Value hash = Value::Hash{{"a", Value::Array{1}}};
    hash.to_h()["a"].holder().get<Value::Array>()[0] = 2;
    hash.to_a()[0].holder().get<Value::Array>()[1].holder().get<Value::Array>()[0] = 2;
    EXPECT_EQ(describe(hash), "hash{a: array[integer 1]}");
}

} // namespace
