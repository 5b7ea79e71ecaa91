#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>

// Reals to their last bit. Their formula is part of what the parser promises, so they are compared
// with it and not with the nearest double.

namespace {

/// A power of ten as the C library computes it, which for some exponents is not the double nearest
/// to it; a compiler that knew the exponent would put that there.
double power(double exponent)
{
    const volatile double base = 10.0;
    return std::pow(base, exponent);
}

struct RealCase
{
    const char* name;
    const char* input;
    double expected;
};

std::ostream& operator<<(std::ostream& os, const RealCase& row)
{
    return os << row.input;
}

class JSONParserRealTest : public testing::TestWithParam<RealCase>
{};

TEST_P(JSONParserRealTest, ReadsToTheLastBit)
{
    for (const bool negative : {false, true}) {
        const Value value = readJSON((negative ? "-" : "") + std::string(GetParam().input)).value;
        ASSERT_EQ(value.kind(), Value::Kind::Real);
        EXPECT_TRUE(identical(value, negative ? -GetParam().expected : GetParam().expected))
            << value.to_f();
    }
}

/// The formula for a number with these parts.
double real(double magnitude, long long fraction, int count, double exponent = 0.0)
{
    const double scaled = static_cast<double>(fraction) * power(-count);
    const double sum = magnitude + scaled;
    return sum * power(exponent);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Formula, JSONParserRealTest, testing::Values(
    RealCase{"Tenth",              "0.1",           real(0, 1, 1)},
    RealCase{"ThreeTenths",        "0.3",           real(0, 3, 1)},
    RealCase{"ThreeParts",         "12.375e-2",     real(12, 375, 3, -2)},
    RealCase{"TrailingZeros",      "1.50",          real(1, 50, 2)},
    RealCase{"LeadingZeros",       "0.00000000000000000000000123", real(0, 123, 26)},
    RealCase{"ZeroMagnitude",      "0.5e1",         real(0, 5, 1, 1)},
    RealCase{"MinusZero",          "0e1",           0.0},
    RealCase{"PowerOf23",          "1e23",          power(23)},
    RealCase{"PowerOf210",         "1e210",         power(210)},
    RealCase{"PowerOfMinus5",      "7e-5",          7 * power(-5)},
    RealCase{"MagnitudeRounded",   "9007199254740993e1", real(9007199254740992, 0, 0, 1)},
    RealCase{"LargestMagnitude",   "9223372036854775807.5", 9223372036854775808.0},
    // A fraction keeps as many digits as fit below 2^63, however many follow.
    RealCase{"Fraction18",         "0.999999999999999999", real(0, 999999999999999999, 18)},
    RealCase{"Fraction19Fits",     "0.9223372036854775807", real(0, 9223372036854775807, 19)},
    RealCase{"Fraction19Exceeds",  "0.9223372036854775808", real(0, 922337203685477580, 18)},
    RealCase{"Fraction19ExceedsMore", "0.9999999999999999999", real(0, 999999999999999999, 18)},
    RealCase{"Fraction19Small",    "0.1234567890123456789", real(0, 1234567890123456789, 19)},
    RealCase{"Fraction20",         "0.12345678901234567899", real(0, 1234567890123456789, 19)},
    RealCase{"IgnoredForGood",     "0.92233720368547758080001", real(0, 922337203685477580, 18)},
    RealCase{"FractionLong",       "3.14159265358979323846264338327950288419716939937510",
                                                    real(3, 1415926535897932384, 19)},
    RealCase{"FractionThenExponent", "0.99999999999999999999999e3", real(0, 999999999999999999, 18, 3)},
    RealCase{"Largest",            "1.7976931348623157e308", real(1, 7976931348623157, 16, 308)},
    RealCase{"Overflow",           "1.8e308",       real(1, 8, 1, 308)},
    RealCase{"OverflowFar",        "1e9223372036854775807", HUGE_VAL},
    RealCase{"UnderflowFar",       "1e-9223372036854775808", 0.0},
    RealCase{"UnderflowOfLargest", "9223372036854775807.5e-400", 0.0},
    RealCase{"Subnormal",          "5e-320",        5 * power(-320)},
    RealCase{"UnderflowOfFraction", "0.1e-9223372036854775808", 0.0}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(JSONParserRealTest, AnInfinitePowerOfZeroIsNotANumber)
{
    const double notANumber = readJSON("0e999").value.to_f();
    EXPECT_TRUE(std::isnan(notANumber));
    EXPECT_EQ(readJSON("-0e999").value.to_json(), "nan");
}

/// The magnitude 2^63 is converted as a signed number, and then its sign is turned.
TEST(JSONParserRealTest, TheLeastMagnitudeWithAFractionOrExponentIsPositive)
{
    EXPECT_TRUE(identical(readJSON("-9223372036854775808.5").value, 9223372036854775808.0));
    EXPECT_TRUE(identical(readJSON("-9223372036854775808e1").value, 92233720368547758080.0));
    EXPECT_TRUE(identical(readJSON("-9223372036854775807.5").value, -9223372036854775808.0));
    EXPECT_TRUE(
        identical(readJSON("-9223372036854775808.0").value, std::numeric_limits<long long>::min()));
}

/// The fraction is so small that it is 0.0, or so exact that it is not.
TEST(JSONParserRealTest, AFractionOfZeroMakesALongHoweverItWasWritten)
{
    const std::string zeros(400, '0');
    EXPECT_EQ(describe(readJSON("7." + zeros).value), "long 7");
    EXPECT_EQ(describe(readJSON("7." + zeros + "1").value), "long 7");
    EXPECT_EQ(describe(readJSON("7." + zeros + "1e0").value), "long 7");
    EXPECT_TRUE(identical(readJSON("7." + zeros + "1e1").value, 70.0));
    EXPECT_TRUE(identical(readJSON("7." + zeros.substr(0, 30) + "1").value, 7.0));
}

TEST(JSONParserRealTest, EveryExponentFollowsTheFormula)
{
    for (int exponent = -400; exponent <= 400; ++exponent) {
        if (exponent != 0) {
            EXPECT_TRUE(
                identical(readJSON("3e" + std::to_string(exponent)).value, 3.0 * power(exponent)))
                << exponent;
        }
    }
}

TEST(JSONParserNumberTest, ManyDigitsAreReadToTheirEnd)
{
    const std::string digits(100000, '9');
    const ReadOutcome fraction = readJSON("0." + digits + "x");
    EXPECT_TRUE(identical(fraction.value, real(0, 999999999999999999, 18)));
    EXPECT_EQ(fraction.unread, "x");
    const ReadOutcome zeros = readJSON("1e" + std::string(100000, '0') + "2x");
    EXPECT_TRUE(identical(zeros.value, 100.0));
    EXPECT_EQ(zeros.unread, "x");
    // Without a use for what exceeds, the read ends with the digit that does.
    const ReadOutcome integer = readJSON("99999999999999999999");
    EXPECT_EQ(describe(integer.value), "nil");
    EXPECT_EQ(integer.unread, "9");
}

TEST(JSONParserNumberTest, EveryByteAfterANumber)
{
    std::map<int, std::string> special = {{',', "array[long 1, long 2] /  / good"},
                                          {'.', "array[real 1.200000] /  / good"},
                                          {'e', "array[real 100.000000] /  / good"},
                                          {'E', "array[real 100.000000] /  / good"},
                                          {']', "array[long 1] / 2] / good"}};
    for (const int white : {9, 10, 11, 12, 13, 32}) {
        special[white] = "nil / 2] / good";
    }
    for (int digit = '0'; digit <= '9'; ++digit) {
        special[digit] = "array[long 1" + byteText(digit) + "2] /  / good";
    }
    for (int byte = 0; byte < 256; ++byte) {
        const auto expected = special.find(byte);
        EXPECT_EQ(outcomeOf("[1" + byteText(byte) + "2]"),
                  expected == special.end() ? "nil / " + byteText(byte) + "2] / good"
                                            : expected->second)
            << byte;
    }
}

} // namespace
