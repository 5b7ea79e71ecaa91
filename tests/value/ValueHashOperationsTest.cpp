#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

namespace {

const Value::Hash stored{{"a", 1},      {"b", nullptr},    {"5", "five"},   {"-5", "minus five"},
                         {"true", "T"}, {"false", "F"},    {"2.5", "real"}, {"", "nameless"},
                         {"nil", "N"},  {"[1, a]", "list"}};

TEST(ValueLookupTest, GivesACopyOfTheStoredValue)
{
    Value::Hash hash{{"list", Value::Array{1}}};
    Value found = Value::lookup(hash, "list", "fallback");
    EXPECT_EQ(describe(found), "array[integer 1]");
    found.holder().get<Value::Array>().clear();
    EXPECT_EQ(describe(hash), "hash{list: array[integer 1]}");
}

TEST(ValueLookupTest, GivesTheFallbackForAnAbsentKey)
{
    const Value fallback = Value::Array{"f"};
    Value found = Value::lookup(stored, "absent", fallback);
    EXPECT_EQ(describe(found), "array[string f]");
    found.holder().get<Value::Array>().clear();
    EXPECT_EQ(describe(fallback), "array[string f]");
}

TEST(ValueLookupTest, GivesAPresentNilInItsOwnForm)
{
    EXPECT_EQ(describe(Value::lookup(stored, "b", "fallback")), "nil");
    Value::Hash hash;
    hash["indexed"];
    EXPECT_EQ(describe(Value::lookup(hash, "indexed", "fallback")), "empty nil");
}

struct ExtractCase
{
    const char* name;
    Value selector;
    std::string result;
};

std::ostream& operator<<(std::ostream& os, const ExtractCase& row)
{
    return os << row.name;
}

class ValueExtractTest : public testing::TestWithParam<ExtractCase>
{};

TEST_P(ValueExtractTest, Selects)
{
    EXPECT_EQ(describe(Value::extract(stored, GetParam().selector)), GetParam().result);
}

TEST_P(ValueExtractTest, SelectsTheSameByTheRubyRules)
{
    const BooleanRules ruby(true);
    EXPECT_EQ(describe(Value::extract(stored, GetParam().selector)), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    All, ValueExtractTest,
    testing::Values(ExtractCase{"String", Value("a"), "integer 1"},
                    ExtractCase{"StringOfNil", Value("b"), "nil"},
                    ExtractCase{"AbsentString", Value("zz"), "nil"},
                    ExtractCase{"EmptyString", Value(""), "string nameless"},
                    ExtractCase{"StringThatReadsNil", Value("nil"), "string N"},
                    ExtractCase{"Integer", Value(5), "string five"},
                    ExtractCase{"NegativeLong", Value(-5LL), "string minus five"},
                    ExtractCase{"AbsentInteger", Value(6), "nil"},
                    ExtractCase{"Real", Value(2.5), "string real"},
                    ExtractCase{"WholeReal", Value(5.0), "string five"},
                    ExtractCase{"True", Value(true), "string T"},
                    ExtractCase{"False", Value(false), "string F"},
                    ExtractCase{"EmptyArray", Value(Value::Array{}), "hash{}"},
                    ExtractCase{"Array", Value(Value::Array{"a", "zz"}), "hash{a: integer 1}"},
                    ExtractCase{"ArrayWithNilEntry", Value(Value::Array{"b"}), "hash{b: nil}"},
                    ExtractCase{"ArrayWithRepeats", Value(Value::Array{5, "a", "5", 5LL, 5.0}),
                                "hash{5: string five, a: integer 1}"},
                    ExtractCase{"ArrayOfEveryKind",
                                Value(Value::Array{nullptr, Value(), true, Value::Array{1, "a"},
                                                   Value::Hash{}}),
                                "hash{[1, a]: string list, nil: string N, true: string T}"},
                    ExtractCase{"Nil", Value(nullptr), describe(stored)},
                    ExtractCase{"EmptyNil", Value(), describe(stored)},
                    ExtractCase{"Hash", Value(Value::Hash{{"a", "a"}}), "nil"},
                    ExtractCase{"EmptyHash", Value(Value::Hash{}), "nil"},
                    ExtractCase{"OtherType", Value(Dynamic::Any(5U)), "nil"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueExtractTest, GivesAPresentNilInItsOwnForm)
{
    Value::Hash hash;
    hash["indexed"];
    EXPECT_EQ(describe(Value::extract(hash, "indexed")), "empty nil");
    EXPECT_EQ(describe(Value::extract(hash, Value::Array{"indexed"})), "hash{indexed: empty nil}");
}

TEST(ValueExtractTest, TheResultIsACopy)
{
    const Value::Hash hash{{"list", Value::Array{1}}};
    Value one = Value::extract(hash, "list");
    one.holder().get<Value::Array>().clear();
    for (const Value& selector : {Value(Value::Array{"list"}), Value(nullptr)}) {
        Value several = Value::extract(hash, selector);
        several.holder().get<Value::Hash>().at("list") = 2;
    }
    EXPECT_EQ(describe(hash), "hash{list: array[integer 1]}");
}

struct MergeCase
{
    const char* name;
    Value::Hash target;
    Value incoming; ///< for the key "k"
    const char* result;
};

std::ostream& operator<<(std::ostream& os, const MergeCase& row)
{
    return os << row.name;
}

class ValueMergeTest : public testing::TestWithParam<MergeCase>
{};

TEST_P(ValueMergeTest, Merges)
{
    Value::Hash target = GetParam().target;
    const std::pair<std::string, Value> entry("k", GetParam().incoming);
    Value::merge_hash_entry(target, entry);
    EXPECT_EQ(describe(target), GetParam().result);
    EXPECT_EQ(describe(entry.second), describe(GetParam().incoming)) << "the entry stays as it is";
}

using Hash = Value::Hash;

INSTANTIATE_TEST_SUITE_P(
    All, ValueMergeTest,
    testing::Values(
        MergeCase{"NilDeletes", Hash{{"j", 0}, {"k", 1}}, nullptr, "hash{j: integer 0}"},
        MergeCase{"EmptyNilDeletes", Hash{{"k", 1}}, Value(), "hash{}"},
        MergeCase{"NilDeletesAHash", Hash{{"k", Hash{{"x", 1}}}}, nullptr, "hash{}"},
        MergeCase{"NilForAnAbsentKey", Hash{{"j", 0}}, nullptr, "hash{j: integer 0}"},
        MergeCase{"Inserts", Hash{}, 7, "hash{k: integer 7}"},
        MergeCase{"Replaces", Hash{{"k", "old"}}, 7, "hash{k: integer 7}"},
        MergeCase{"ReplacesANil", Hash{{"k", nullptr}}, 7, "hash{k: integer 7}"},
        MergeCase{"ArrayReplacesArray", Hash{{"k", Value::Array{1, 2}}}, Value::Array{3},
                  "hash{k: array[integer 3]}"},
        MergeCase{"ScalarReplacesHash", Hash{{"k", Hash{{"x", 1}}}}, 7, "hash{k: integer 7}"},
        MergeCase{"HashReplacesScalar", Hash{{"k", 7}}, Hash{{"x", 1}},
                  "hash{k: hash{x: integer 1}}"},
        MergeCase{"HashMergesIntoHash", Hash{{"k", Hash{{"y", 2}}}}, Hash{{"x", 1}},
                  "hash{k: hash{x: integer 1, y: integer 2}}"},
        MergeCase{"EmptyHashMergesNothing", Hash{{"k", Hash{{"y", 2}}}}, Hash{},
                  "hash{k: hash{y: integer 2}}"},
        MergeCase{"NestedNilDeletes", Hash{{"k", Hash{{"x", 1}, {"y", 2}}}}, Hash{{"x", nullptr}},
                  "hash{k: hash{y: integer 2}}"},
        MergeCase{"NestedNilLeavesAnEmptyHash", Hash{{"k", Hash{{"x", 1}}}}, Hash{{"x", Value()}},
                  "hash{k: hash{}}"},
        MergeCase{"NilsOfAnInsertedHashAreKept", Hash{}, Hash{{"x", nullptr}, {"y", 1}},
                  "hash{k: hash{x: nil, y: integer 1}}"},
        MergeCase{"NilsOfAReplacingHashAreKept", Hash{{"k", 7}}, Hash{{"x", nullptr}},
                  "hash{k: hash{x: nil}}"},
        MergeCase{
            "EveryDepth",
            Hash{{"k", Hash{{"a", Hash{{"b", Hash{{"c", 1}, {"d", 2}}}, {"e", 3}}}, {"f", 4}}}},
            Hash{{"a", Hash{{"b", Hash{{"c", nullptr}, {"n", 5}}}, {"e", Hash{{"o", 6}}}}},
                 {"f", nullptr},
                 {"g", Hash{{"p", nullptr}}}},
            "hash{k: hash{a: hash{b: hash{d: integer 2, n: integer 5}, e: hash{o: integer 6}}, "
            "g: hash{p: nil}}}"},
        MergeCase{"OtherTypeReplaces", Hash{{"k", 1}}, Value(Dynamic::Any(5U)), "hash{k: other}"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueMergeTest, WhatIsStoredIsACopy)
{
    Hash target;
    const std::pair<std::string, Value> entry("k", Value::Array{1});
    Value::merge_hash_entry(target, entry);
    target.at("k").holder().get<Value::Array>().clear();
    EXPECT_EQ(describe(entry.second), "array[integer 1]");
}

TEST(ValueMergeTest, AnEntryCanBeACopyOfOneOfTheTargetItself)
{
    Hash target{{"k", Hash{{"x", 1}}}};
    Value::merge_hash_entry(target, *target.begin());
    EXPECT_EQ(describe(target), "hash{k: hash{x: integer 1}}");
}

} // namespace
