#include "value/Value.h"
#include "tests/value/helpers/Values.h"
#include "value/JSONParser.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <sstream>
#include <thread>
#include <type_traits>
#include <utility>

namespace {

static_assert(sizeof(Value) == sizeof(Dynamic::Any), "the holder is the only field");
static_assert(std::is_nothrow_default_constructible_v<Value>);
static_assert(std::is_nothrow_move_constructible_v<Value>, "a growing array must not copy");
static_assert(std::is_nothrow_move_assignable_v<Value>);
static_assert(std::is_nothrow_destructible_v<Value>);

// What must not become a value in silence.
static_assert(!std::is_constructible_v<Value, int*>);
static_assert(!std::is_constructible_v<Value, const int*>);
static_assert(!std::is_constructible_v<Value, const void*>);
static_assert(!std::is_constructible_v<Value, unsigned char*>);
static_assert(!std::is_constructible_v<Value, Value*>);
static_assert(!std::is_constructible_v<Value, void (*)()>);
static_assert(!std::is_constructible_v<Value, int Foreign::*>);
static_assert(!std::is_constructible_v<Value, void (Foreign::*)()>);
static_assert(!std::is_constructible_v<Value, long double>, "it would lose digits");
static_assert(!std::is_constructible_v<Value, Foreign>);
static_assert(!std::is_convertible_v<Dynamic::Any, Value>);

enum Unscoped
{
    Seven = 7
};

struct ConstructionCase
{
    const char* name;
    Value value;
    const char* description;
};

std::ostream& operator<<(std::ostream& os, const ConstructionCase& row)
{
    return os << row.name;
}

class ValueConstructionTest : public testing::TestWithParam<ConstructionCase>
{};

TEST_P(ValueConstructionTest, GivesKindAndContent)
{
    EXPECT_EQ(describe(GetParam().value), GetParam().description);
    const Value copy = GetParam().value;
    EXPECT_EQ(describe(copy), GetParam().description);
}

const char* const text = "chars";
char writable[] = "writable";
const std::string constantString = "constant";
const Value::Array constantArray{1, true};
const Value::Hash constantHash{{"a", 1}, {"b", nullptr}};

INSTANTIATE_TEST_SUITE_P(
    All, ValueConstructionTest,
    testing::Values(
        ConstructionCase{"Default", Value(), "empty nil"},
        ConstructionCase{"NullVoidPointer", Value(static_cast<void*>(nullptr)), "nil"},
        ConstructionCase{"NullPointer", Value(nullptr), "nil"},
        ConstructionCase{"True", Value(true), "boolean true"},
        ConstructionCase{"False", Value(false), "boolean false"},
        ConstructionCase{"Int", Value(0), "integer 0"},
        ConstructionCase{"LeastInt", Value(INT_MIN), "integer -2147483648"},
        ConstructionCase{"LongLong", Value(5LL), "long 5"},
        ConstructionCase{"LeastLongLong", Value(LLONG_MIN), "long -9223372036854775808"},
        ConstructionCase{"Double", Value(2.5), "real 2.500000"},
        ConstructionCase{"String", Value(constantString), "string constant"},
        ConstructionCase{"StringMoved", Value(std::string("moved")), "string moved"},
        ConstructionCase{"Array", Value(constantArray), "array[integer 1, boolean true]"},
        ConstructionCase{"ArrayMoved", Value(Value::Array{2}), "array[integer 2]"},
        ConstructionCase{"Hash", Value(constantHash), "hash{a: integer 1, b: nil}"},
        ConstructionCase{"HashMoved", Value(Value::Hash{{"c", 3}}), "hash{c: integer 3}"},
        // Beside the eight:
        ConstructionCase{"Literal", Value("text"), "string text"},
        ConstructionCase{"EmptyLiteral", Value(""), "string "},
        ConstructionCase{"Chars", Value(text), "string chars"},
        ConstructionCase{"WritableChars", Value(writable), "string writable"},
        ConstructionCase{"NullChars", Value(static_cast<const char*>(nullptr)), "nil"},
        ConstructionCase{"StringView", Value(std::string_view("viewed", 4)), "string view"},
        ConstructionCase{"Float", Value(0.5F), "real 0.500000"},
        ConstructionCase{"Short", Value(short{-3}), "integer -3"},
        ConstructionCase{"UnsignedShort", Value(std::uint16_t{65535}), "integer 65535"},
        ConstructionCase{"Enumerator", Value(Seven), "integer 7"},
        ConstructionCase{"Long", Value(-8L), "long -8"},
        ConstructionCase{"Unsigned", Value(UINT_MAX), "long 4294967295"},
        ConstructionCase{"UnsignedLong", Value(9UL), "long 9"},
        ConstructionCase{"UnsignedLongLong", Value(10ULL), "long 10"},
        ConstructionCase{"UnsignedLargestLong", Value(9223372036854775807ULL),
                         "long 9223372036854775807"},
        ConstructionCase{"UnsignedAboveLongs", Value(9223372036854775808ULL),
                         "string 9223372036854775808"},
        ConstructionCase{"UnsignedLargest", Value(ULLONG_MAX), "string 18446744073709551615"},
        ConstructionCase{"HolderOfKind", Value(Dynamic::Any(6)), "integer 6"},
        ConstructionCase{"EmptyHolder", Value(Dynamic::Any()), "empty nil"},
        ConstructionCase{"HolderOfUnsigned", Value(Dynamic::Any(6U)), "other"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueTest, ADefaultHolderIsEmptyAndAnExplicitNilIsNot)
{
    EXPECT_TRUE(Value().holder().type() == typeid(void));
    EXPECT_TRUE(Value(nullptr).holder().type() == typeid(void*));
    EXPECT_TRUE(Value().kind() == Value::Kind::Nil);
    EXPECT_TRUE(Value(nullptr).kind() == Value::Kind::Nil);
}

TEST(ValueTest, ANilKeepsNoAddress)
{
    int object = 0;
    EXPECT_EQ(Value(static_cast<void*>(&object)).holder().get<void*>(), nullptr);
}

TEST(ValueTest, AKeyInsertedByIndexHoldsTheEmptyNil)
{
    Value::Hash hash;
    EXPECT_EQ(describe(hash["new"]), "empty nil");
}

TEST(ValueTest, AStringKeepsEveryByte)
{
    const std::string bytes("\0a\xff\0", 4);
    EXPECT_EQ(Value(bytes).to_s(), bytes);
    EXPECT_EQ(Value(std::string_view(bytes)).to_s(), bytes);
}

TEST(ValueTest, MovesAStringArrayOrHashInWithoutCopying)
{
    std::string longText(100, 'x');
    const char* const bytes = longText.data();
    EXPECT_EQ(Value(std::move(longText)).holder().get<std::string>().data(), bytes);
    Value::Array array{1, 2};
    const Value* const elements = array.data();
    EXPECT_EQ(Value(std::move(array)).holder().get<Value::Array>().data(), elements);
    Value::Hash hash{{"a", 1}};
    const Value* const entry = &hash["a"];
    EXPECT_EQ(&Value(std::move(hash)).holder().get<Value::Hash>().at("a"), entry);
}

TEST(ValueTest, ACopyIsDeep)
{
    const Value source = Value::Hash{{"list", Value::Array{1, Value::Hash{{"x", "y"}}}}};
    Value copy = source;
    Value assigned;
    assigned = source;
    const std::string before = describe(source);
    for (Value* const changed : {&copy, &assigned}) {
        EXPECT_EQ(describe(*changed), before);
        auto& list = changed->holder().get<Value::Hash>().at("list").holder().get<Value::Array>();
        list[1].holder().get<Value::Hash>()["x"] = 2;
        list.erase(list.begin());
        EXPECT_EQ(describe(*changed), "hash{list: array[hash{x: integer 2}]}");
    }
    EXPECT_EQ(describe(source), before);
}

TEST(ValueTest, AValueMovedFromIsNil)
{
    Value source = Value::Array{1};
    const Value target = std::move(source);
    EXPECT_EQ(describe(target), "array[integer 1]");
    EXPECT_EQ(describe(source), "empty nil"); // NOLINT(bugprone-use-after-move): it is promised
}

TEST(ValueTest, SurvivesAssignmentOfItselfAndOfItsOwnPart)
{
    Value value = Value::Array{Value::Hash{{"k", "inner"}}};
    const Value& itself = value;
    value = itself;
    EXPECT_EQ(describe(value), "array[hash{k: string inner}]");
    value = value.holder().get<Value::Array>()[0];
    EXPECT_EQ(describe(value), "hash{k: string inner}");
    value = std::move(value.holder().get<Value::Hash>()["k"]);
    EXPECT_EQ(describe(value), "string inner");
}

TEST(ValueTest, OnlyScalarsAndStringsAreBasic)
{
    for (const Value& basic : {Value(true), Value(0), Value(0LL), Value(0.0), Value("")}) {
        EXPECT_TRUE(basic.is_basic()) << describe(basic);
    }
    const Value other{Dynamic::Any(Foreign())};
    for (const Value& compound :
         {Value(), Value(nullptr), Value(Value::Array{}), Value(Value::Hash{}), other}) {
        EXPECT_FALSE(compound.is_basic()) << describe(compound);
    }
}

TEST(ValueTest, ManyThreadsMayReadOneValue)
{
    Value::Array elements;
    for (int i = 0; i < 100; ++i) {
        elements.push_back(nestedHashes(30, i));
    }
    const Value value = std::move(elements);
    const std::string expected = value.to_json();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const bool right = value.to_json() == expected && copyOf(value).to_json() == expected;
            wrong += right ? 0 : 1;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

template <typename Expected, typename Result>
constexpr bool gives(Result (Value::*)() const)
{
    return std::is_same_v<Result, Expected>;
}

template <typename Expected, typename Result>
constexpr bool gives(Result (JSONParser::*)())
{
    return std::is_same_v<Result, Expected>;
}

TEST(ValueInterfaceTest, ResultsHaveTheirTypes)
{
    static_assert(gives<bool>(&Value::to_b));
    static_assert(gives<int>(&Value::to_i));
    static_assert(gives<long long>(&Value::to_l));
    static_assert(gives<double>(&Value::to_f));
    static_assert(gives<std::string>(&Value::to_s));
    static_assert(gives<std::string>(&Value::to_json));
    static_assert(gives<std::vector<Value>>(&Value::to_a));
    static_assert(gives<std::map<std::string, Value>>(&Value::to_h));
    static_assert(gives<int>(&JSONParser::peekChar));
    static_assert(gives<int>(&JSONParser::getChar));
    static_assert(gives<std::uint16_t>(&JSONParser::getHexDigit));
    static_assert(gives<std::uint16_t>(&JSONParser::getUnicode));
    static_assert(
        std::is_same_v<decltype(std::declval<JSONParser&>().getDigits(false, nullptr)), long long>);
}

TEST(ValueInterfaceTest, StreamOperatorsAreFreeFunctions)
{
    std::ostream& (*const insert)(std::ostream&, const Value&) = &::operator<<;
    std::istream& (*const extract)(std::istream&, Value&) = &::operator>>;
    std::stringstream stream;
    ::operator<<(stream, Value(1)) << ' ';
    insert(stream, Value("a"));
    Value word;
    ::operator>>(stream, word);
    EXPECT_EQ(word.to_s(), "1");
    extract(stream, word);
    EXPECT_EQ(word.to_s(), "a");
}

TEST(ValueInterfaceTest, CopiesAreReturnedAndNoReferences)
{
    const Value::Hash hash;
    const Value value;
    static_assert(std::is_same_v<decltype(Value::lookup(hash, "", value)), Value>);
    static_assert(std::is_same_v<decltype(Value::extract(hash, value)), Value>);
    static_assert(
        std::is_same_v<decltype(Dynamic::AnyCast<std::string>(std::declval<const Dynamic::Any&>())),
                       std::string>);
}

struct NoValue
{};
enum class Scoped
{
    One
};

/// Every type converts to a holder. A value is made of holders all the same, not of what they take.
TEST(ValueInterfaceTest, OnlyHoldersAndTheKindsMakeAValue)
{
    static_assert(std::is_constructible_v<Value, Dynamic::Any>);
    static_assert(std::is_constructible_v<Value, Dynamic::Any&>);
    static_assert(std::is_constructible_v<Value, const Dynamic::Any&>);
    static_assert(std::is_nothrow_constructible_v<Value, Dynamic::Any>);
    static_assert(!std::is_convertible_v<Dynamic::Any, Value>);
    static_assert(!std::is_constructible_v<Value, NoValue>);
    static_assert(!std::is_constructible_v<Value, std::vector<int>>);
    static_assert(!std::is_constructible_v<Value, Scoped>);
    static_assert(!std::is_constructible_v<Value, int*>);
    static_assert(!std::is_assignable_v<Value&, NoValue>);
    static_assert(!std::is_assignable_v<Value&, Dynamic::Any>);
}

} // namespace
