#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ConversionCase
{
    const char* name;
    Value value;
    bool b;
    bool rubyB;
    int i;
    long long l;
    double f;
};

std::ostream& operator<<(std::ostream& os, const ConversionCase& row)
{
    return os << row.name;
}

class ValueConversionTest : public testing::TestWithParam<ConversionCase>
{};

void expectConversions(const ConversionCase& row)
{
    const std::string before = describe(row.value);
    for (const bool rubyRules : {false, true}) {
        SCOPED_TRACE(rubyRules);
        const BooleanRules rules(rubyRules);
        EXPECT_EQ(row.value.to_b(), rubyRules ? row.rubyB : row.b);
        EXPECT_EQ(row.value.to_i(), row.i);
        EXPECT_EQ(row.value.to_l(), row.l);
        const double f = row.value.to_f();
        EXPECT_TRUE(f == row.f || (std::isnan(f) && std::isnan(row.f))) << f;
        EXPECT_EQ(std::signbit(f), std::signbit(row.f));
    }
    EXPECT_EQ(describe(row.value), before) << "a conversion changes nothing";
}

TEST_P(ValueConversionTest, Converts)
{
    expectConversions(GetParam());
}

TEST_P(ValueConversionTest, ConvertsTheSameInAForeignLocale)
{
    const ForeignGlobalLocale locale;
    expectConversions(GetParam());
}

/// A value of the string kind: all but the empty one are true.
ConversionCase string(const char* name, const char* text, int i, long long l, double f)
{
    return {name, Value(text), *text != '\0', true, i, l, f};
}

const auto rowName = [](const auto& row) { return std::string(row.param.name); };

constexpr double two31 = 2147483648.0;
constexpr double two63 = 9223372036854775808.0;

// Columns: value, to_b(), to_b() by the Ruby rules, to_i(), to_l(), to_f().
INSTANTIATE_TEST_SUITE_P(
    Kinds, ValueConversionTest,
    testing::Values(ConversionCase{"EmptyNil", Value(), false, false, 0, 0, 0.0},
                    ConversionCase{"Nil", Value(nullptr), false, false, 0, 0, 0.0},
                    ConversionCase{"False", Value(false), false, false, 0, 0, 0.0},
                    ConversionCase{"True", Value(true), true, true, 1, 1, 1.0},
                    ConversionCase{"EmptyArray", Value(Value::Array{}), true, true, 0, 0, 0.0},
                    ConversionCase{"Array", Value(Value::Array{5}), true, true, 0, 0, 0.0},
                    ConversionCase{"EmptyHash", Value(Value::Hash{}), true, true, 0, 0, 0.0},
                    ConversionCase{"Hash", Value(Value::Hash{{"5", 5}}), true, true, 0, 0, 0.0},
                    ConversionCase{"OtherType", Value(Dynamic::Any(5U)), false, true, 0, 0, 0.0}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Integers, ValueConversionTest,
    testing::Values(
        ConversionCase{"Zero", Value(0), true, true, 0, 0, 0.0},
        ConversionCase{"Five", Value(5), false, true, 5, 5, 5.0},
        ConversionCase{"MinusOne", Value(-1), false, true, -1, -1, -1.0},
        ConversionCase{"Largest", Value(INT_MAX), false, true, INT_MAX, INT_MAX, two31 - 1},
        ConversionCase{"Least", Value(INT_MIN), false, true, INT_MIN, INT_MIN, -two31},
        ConversionCase{"LongZero", Value(0LL), true, true, 0, 0, 0.0},
        ConversionCase{"LongThreeBillion", Value(3000000000LL), false, true, -1294967296,
                       3000000000LL, 3e9},
        ConversionCase{"LongAboveInt", Value(2147483648LL), false, true, INT_MIN, 2147483648LL,
                       two31},
        ConversionCase{"LongBelowInt", Value(-2147483649LL), false, true, INT_MAX, -2147483649LL,
                       -two31 - 1},
        ConversionCase{"LongLow32BitsZero", Value(1LL << 32), false, true, 0, 1LL << 32,
                       4294967296.0},
        ConversionCase{"LongLow32BitsOne", Value((1LL << 40) + 1), false, true, 1, (1LL << 40) + 1,
                       1099511627777.0},
        ConversionCase{"LongLargest", Value(LLONG_MAX), false, true, -1, LLONG_MAX, two63},
        ConversionCase{"LongLeast", Value(LLONG_MIN), false, true, 0, LLONG_MIN, -two63},
        ConversionCase{"LongToNearestEven", Value(9007199254740993LL), false, true, 1,
                       9007199254740993LL, 9007199254740992.0}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Reals, ValueConversionTest,
    testing::Values(
        ConversionCase{"Zero", Value(0.0), true, true, 0, 0, 0.0},
        ConversionCase{"NegativeZero", Value(-0.0), true, true, 0, 0, -0.0},
        ConversionCase{"TwoAndAHalf", Value(2.5), false, true, 2, 2, 2.5},
        ConversionCase{"TruncatesTowardZero", Value(-2.9), false, true, -2, -2, -2.9},
        ConversionCase{"BelowOne", Value(0.999), false, true, 0, 0, 0.999},
        ConversionCase{"Smallest", Value(5e-324), false, true, 0, 0, 5e-324},
        ConversionCase{"JustInInt", Value(two31 - 0.5), false, true, INT_MAX, INT_MAX, two31 - 0.5},
        ConversionCase{"JustAboveInt", Value(two31), false, true, INT_MIN, 2147483648LL, two31},
        ConversionCase{"LeastInt", Value(-two31), false, true, INT_MIN, -2147483648LL, -two31},
        ConversionCase{"TruncatesIntoInt", Value(-two31 - 0.5), false, true, INT_MIN, -2147483648LL,
                       -two31 - 0.5},
        ConversionCase{"JustBelowInt", Value(-two31 - 1), false, true, INT_MIN, -2147483649LL,
                       -two31 - 1},
        ConversionCase{"ThreeBillion", Value(3e9), false, true, INT_MIN, 3000000000LL, 3e9},
        ConversionCase{"OneE20", Value(1e20), false, true, INT_MIN, LLONG_MIN, 1e20},
        ConversionCase{"MinusOneE20", Value(-1e20), false, true, INT_MIN, LLONG_MIN, -1e20},
        ConversionCase{"JustInLong", Value(9223372036854774784.0), false, true, INT_MIN,
                       9223372036854774784LL, 9223372036854774784.0},
        ConversionCase{"JustAboveLong", Value(two63), false, true, INT_MIN, LLONG_MIN, two63},
        ConversionCase{"LeastLong", Value(-two63), false, true, INT_MIN, LLONG_MIN, -two63},
        ConversionCase{"Infinity", Value(infinity), false, true, INT_MIN, LLONG_MIN, infinity},
        ConversionCase{"MinusInfinity", Value(-infinity), false, true, INT_MIN, LLONG_MIN,
                       -infinity},
        ConversionCase{"NotANumber", Value(notANumber), false, true, INT_MIN, LLONG_MIN,
                       notANumber}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Strings, ValueConversionTest,
    testing::Values(
        string("Empty", "", 0, 0, 0.0), string("Blank", "  ", 0, 0, 0.0),
        string("Letters", "abc", 0, 0, 0.0), string("Zero", "0", 0, 0, 0.0),
        string("Number", "42", 42, 42, 42.0), string("LeadingBlank", " 42xyz", 42, 42, 42.0),
        string("EveryWhiteSpace", "\t\n\v\f\r 7", 7, 7, 7.0),
        string("NonBreakingSpace",
               "\xa0"
               "7",
               0, 0, 0.0),
        string("LettersAfter", "12abc", 12, 12, 12.0), string("Fraction", "1.9", 1, 1, 1.9),
        string("Plus", "+5", 5, 5, 5.0), string("Minus", "-5", -5, -5, -5.0),
        string("TwoSigns", "+-5", 0, 0, 0.0), string("TwoMinuses", "--5", 0, 0, 0.0),
        string("SignOnly", "-", 0, 0, 0.0), string("PlusOnly", "+", 0, 0, 0.0),
        string("SignThenBlank", "- 5", 0, 0, 0.0), string("LeadingZeros", "0010", 10, 10, 10.0),
        string("Hexadecimal", "0x10", 0, 0, 0.0), string("Grouped", "1,234", 1, 1, 1.0),
        string("GroupedByPoints", "1.234.567", 1, 1, 1.234), string("TrueText", "true", 0, 0, 0.0),
        string("Infinity", "inf", 0, 0, 0.0), string("InfinitySigned", "-infinity", 0, 0, 0.0),
        string("NotANumber", "nan", 0, 0, 0.0),
        string("LargestInt", "2147483647", INT_MAX, INT_MAX, two31 - 1),
        string("AboveInt", "2147483648", INT_MAX, 2147483648LL, two31),
        string("LeastInt", "-2147483648", INT_MIN, INT_MIN, -two31),
        string("BelowInt", "-2147483649", INT_MIN, -2147483649LL, -two31 - 1),
        string("LargestLong", "9223372036854775807", INT_MAX, LLONG_MAX, two63),
        string("AboveLong", "9223372036854775808", INT_MAX, LLONG_MAX, two63),
        string("PlusAboveLong", "+9223372036854775808", INT_MAX, LLONG_MAX, two63),
        string("LeastLong", "-9223372036854775808", INT_MIN, LLONG_MIN, -two63),
        string("BelowLong", "-9223372036854775809", INT_MIN, LLONG_MIN, -two63),
        string("FiftyDigits", "10000000000000000000000000000000000000000000000000", INT_MAX,
               LLONG_MAX, 1e49),
        string("FiftyLeadingZeros", "000000000000000000000000000000000000000000000000007", 7, 7,
               7.0)),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    RealStrings, ValueConversionTest,
    testing::Values(
        string("Exponent", "1e3", 1, 1, 1000.0), string("UpperExponent", "1E3", 1, 1, 1000.0),
        string("SignedExponent", "25e-1", 25, 25, 2.5), string("PlusExponent", "2e+2", 2, 2, 200.0),
        string("LeadingPoint", ".5", 0, 0, 0.5), string("SignAndPoint", "-.5", 0, 0, -0.5),
        string("TrailingPoint", "5.", 5, 5, 5.0), string("PointOnly", ".", 0, 0, 0.0),
        string("PointAndExponent", ".e5", 0, 0, 0.0), string("TwoPoints", "1.5.5", 1, 1, 1.5),
        string("PointInExponent", "1e2.5", 1, 1, 100.0),
        string("TwoExponents", "1e2e3", 1, 1, 100.0), string("BrokenOffExponent", "1e", 1, 1, 0.0),
        string("BrokenOffSignedExponent", "2.5e+", 2, 2, 0.0),
        string("ExponentOfLetters", "1ex", 1, 1, 0.0), string("NegativeZero", "-0", 0, 0, -0.0),
        string("Overflow", "1e400", 1, 1, infinity),
        string("MinusOverflow", "-1e400", -1, -1, -infinity),
        string("LargestFinite", "1.7976931348623157e308", 1, 1, std::numeric_limits<double>::max()),
        string("Underflow", "1e-400", 1, 1, 0.0), string("Subnormal", "5e-324", 5, 5, 5e-324),
        string("HugeExponent", "1e99999999999999999999", 1, 1, infinity),
        string("ManyDigits", "0.1000000000000000055511151231257827021181583404541015625", 0, 0,
               0.1)),
    rowName);

TEST(ValueConversionTest, AStringWithANullByteEndsItsNumberThere)
{
    const Value value(std::string("12\0"
                                  "34",
                                  5));
    EXPECT_EQ(value.to_i(), 12);
    EXPECT_EQ(value.to_l(), 12);
    EXPECT_EQ(value.to_f(), 12.0);
}

TEST(ValueConversionTest, TheSwitchStartsFalseAndChangesThroughTheSetter)
{
    EXPECT_FALSE(Value::s_followRubyBooleanEvaluationRules);
    const BooleanRules restored(false);
    Value::follow_ruby_boolean_evaluation_rules(true);
    EXPECT_TRUE(Value::s_followRubyBooleanEvaluationRules);
    Value::follow_ruby_boolean_evaluation_rules(false);
    EXPECT_FALSE(Value::s_followRubyBooleanEvaluationRules);
}

TEST(ValueConversionTest, NumbersAreTrueWhenZeroUnlessTheRubyRulesHold)
{
    const BooleanRules restored(false);
    EXPECT_TRUE(Value(0).to_b());
    EXPECT_FALSE(Value(5).to_b());
    EXPECT_TRUE(Value(0.0).to_b());
    EXPECT_FALSE(Value(2.5).to_b());
    Value::follow_ruby_boolean_evaluation_rules(true);
    for (const Value& number : {Value(0), Value(5), Value(0.0), Value(2.5)}) {
        EXPECT_TRUE(number.to_b());
    }
}

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
