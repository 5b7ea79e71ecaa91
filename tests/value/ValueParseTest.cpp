#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <sstream>

// The scalar that a text spells, and a word of a stream as a string value.

namespace {

using namespace std::string_literals;

struct ParseCase
{
    const char* name;
    std::string text;
    Value expected;
};

std::ostream& operator<<(std::ostream& os, const ParseCase& row)
{
    return os << row.text;
}

class ValueParseTest : public testing::TestWithParam<ParseCase>
{};

TEST_P(ValueParseTest, Parses)
{
    const Value value = Value::parse(GetParam().text);
    EXPECT_TRUE(identical(value, GetParam().expected)) << describe(value);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Literals, ValueParseTest, testing::Values(
    ParseCase{"True",              "true",          true},
    ParseCase{"False",             "false",         false},
    ParseCase{"Null",              "null",          Value()},
    ParseCase{"Nil",               "nil",           Value()},
    ParseCase{"TrueCapital",       "True",          "True"},
    ParseCase{"TrueAndMore",       "truex",         "truex"},
    ParseCase{"TrueSpaceBefore",   " true",         " true"},
    ParseCase{"TrueSpaceAfter",    "true ",         "true "},
    ParseCase{"TrueZeroByte",      "true\0"s,       "true\0"s},
    ParseCase{"NilZeroByte",       "nil\0x"s,       "nil\0x"s},
    ParseCase{"NullCutOff",        "nul",           "nul"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(Numbers, ValueParseTest, testing::Values(
    ParseCase{"Integer",           "42",            42},
    ParseCase{"Zero",              "0",             0},
    ParseCase{"MinusZero",         "-0",            0},
    ParseCase{"Negative",          "-42",           -42},
    ParseCase{"Plus",              "+42",           42},
    ParseCase{"LeadingZeros",      "0042",          42},
    ParseCase{"Exponent",          "1e3",           1000},
    ParseCase{"ExponentCapital",   "1E+3",          1000},
    ParseCase{"WholeFraction",     "7.0",           7},
    ParseCase{"MinusZeroFraction", "-0.0",          0},
    ParseCase{"PointAtEnd",        "7.",            7},
    ParseCase{"PointAtStart",      ".5",            0.5},
    ParseCase{"PointThenExponent", "7.e1",          70},
    ParseCase{"FractionTimesExponent", "1.5e1",     15},
    ParseCase{"Real",              "4.5",           4.5},
    ParseCase{"RealNegative",      "-4.5",          -4.5},
    ParseCase{"RealSmall",         "1e-3",          0.001},
    ParseCase{"LargestInt",        "2147483647",    2147483647},
    ParseCase{"LeastInt",          "-2147483648",   std::numeric_limits<int>::min()},
    ParseCase{"AboveLargestInt",   "2147483648",    2147483648.0},
    ParseCase{"BelowLeastInt",     "-2147483649",   -2147483649.0},
    ParseCase{"LargestIntAndHalf", "2147483647.5",  2147483647.5},
    ParseCase{"LeastIntAndHalf",   "-2147483648.5", -2147483648.5},
    ParseCase{"ThreeBillion",      "3000000000",    3000000000.0},
    ParseCase{"BeyondLong",        "9223372036854775808", 9223372036854775808.0},
    ParseCase{"ManyDigits",        std::string(300, '9'), 1e300},
    ParseCase{"LargestReal",       "1.7976931348623157e308", std::numeric_limits<double>::max()},
    ParseCase{"Underflow",         "1e-999",        0},
    ParseCase{"NearestNotFormula", "1e23",          1e23},
    ParseCase{"SpaceBefore",       " 7",            7},
    ParseCase{"EverySpaceBefore",  " \t\n\v\f\r7",  7}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(Strings, ValueParseTest, testing::Values(
    ParseCase{"Empty",             "",              ""},
    ParseCase{"OnlySpace",         "  ",            "  "},
    ParseCase{"Text",              "abc",           "abc"},
    ParseCase{"SpaceAfter",        "7 ",            "7 "},
    ParseCase{"LineEndAfter",      "7\n",           "7\n"},
    ParseCase{"ZeroByteAfter",     "7\0"s,          "7\0"s},
    ParseCase{"ZeroByteBefore",    "\0" "7"s,       "\0" "7"s},
    ParseCase{"ZeroByteInside",    "1\0" "2"s,      "1\0" "2"s},
    ParseCase{"OnlyZeroByte",      "\0"s,           "\0"s},
    ParseCase{"TextAfter",         "12abc",         "12abc"},
    ParseCase{"TwoNumbers",        "1 2",           "1 2"},
    ParseCase{"Sign",              "-",             "-"},
    ParseCase{"TwoSigns",          "--1",           "--1"},
    ParseCase{"SignThenSpace",     "- 1",           "- 1"},
    ParseCase{"Point",             ".",             "."},
    ParseCase{"SignPoint",         "-.",            "-."},
    ParseCase{"TwoPoints",         "1.2.3",         "1.2.3"},
    ParseCase{"OnlyExponent",      "e5",            "e5"},
    ParseCase{"PointExponent",     ".e5",           ".e5"},
    ParseCase{"ExponentCutOff",    "1e",            "1e"},
    ParseCase{"ExponentSignCutOff", "1e+",          "1e+"},
    ParseCase{"ExponentFraction",  "1e1.5",         "1e1.5"},
    ParseCase{"ExponentTwice",     "1e1e1",         "1e1e1"},
    ParseCase{"Overflow",          "1e999",         "1e999"},
    ParseCase{"OverflowNegative",  "-1e999",        "-1e999"},
    ParseCase{"Hexadecimal",       "0x10",          "0x10"},
    ParseCase{"HexadecimalReal",   "0x1p3",         "0x1p3"},
    ParseCase{"Infinity",          "inf",           "inf"},
    ParseCase{"NotANumber",        "nan",           "nan"},
    ParseCase{"Comma",             "1,5",           "1,5"},
    ParseCase{"Quoted",            "\"a\"",         "\"a\""},
    ParseCase{"Array",             "[1]",           "[1]"}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(ValueParseStreamTest, AgreesWithExtractionFromAStream)
{
    if (!streamsReadPlainNumbers) {
        GTEST_SKIP() << "NOT TESTED: this standard library's streams read more than plain numbers";
    }
    // Every text of up to five of these characters.
    constexpr std::string_view alphabet = " 09+-.eEx";
    std::vector<std::string> texts{""};
    for (std::size_t next = 0; next < texts.size(); ++next) {
        const std::string text = texts[next];
        ASSERT_TRUE(identical(Value::parse(text), scalarByStream(text))) << "'" << text << "'";
        if (text.size() < 5) {
            for (const char c : alphabet) {
                texts.push_back(text + c);
            }
        }
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::string character{static_cast<char>(byte)};
        for (const std::string& text : {character, "1" + character, character + "1",
                                        "1" + character + "2", "1.5e" + character}) {
            EXPECT_TRUE(identical(Value::parse(text), scalarByStream(text))) << byte;
        }
    }
}

TEST(ValueParseLocaleTest, ReadsTheSameInAnyLocale)
{
    const ForeignGlobalLocale locale;
    EXPECT_TRUE(identical(Value::parse("1234567.5"), 1234567.5));
    EXPECT_TRUE(identical(Value::parse("1,5"), "1,5"));
    EXPECT_TRUE(identical(Value::parse("1.234.567"), "1.234.567"));
    EXPECT_TRUE(identical(Value::parse("true"), true));
    EXPECT_TRUE(identical(Value::parse("ja"), "ja"));
}

struct WordCase
{
    const char* name;
    std::string input;
    std::string word;
    std::string unread;
    std::string state;
};

std::ostream& operator<<(std::ostream& os, const WordCase& row)
{
    return os << row.input;
}

class ValueWordTest : public testing::TestWithParam<WordCase>
{};

TEST_P(ValueWordTest, IsExtracted)
{
    std::istringstream in(GetParam().input);
    Value value = Value::Array{"before"};
    EXPECT_EQ(&(in >> value), &in);
    EXPECT_TRUE(identical(value, GetParam().word)) << describe(value);
    EXPECT_EQ(stateText(in.rdstate()), GetParam().state);
    EXPECT_EQ(drain(in), GetParam().unread);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Words, ValueWordTest, testing::Values(
    //       name             input                word         unread     state
    WordCase{"Word",          "abc",               "abc",       "",        "eof"},
    WordCase{"WordAndSpace",  "abc def",           "abc",       " def",    "good"},
    WordCase{"EverySpace",    " \t\n\v\f\rabc\v",  "abc",       "\v",      "good"},
    WordCase{"Number",        "12 ",               "12",        " ",       "good"},
    WordCase{"Literal",       "nil ",              "nil",       " ",       "good"},
    WordCase{"JSON",          "[1,\"a b\"]",       "[1,\"a",    " b\"]",   "good"},
    WordCase{"Escape",        "\\n\\u0041 ",       "\\n\\u0041", " ",      "good"},
    WordCase{"ZeroByte",      "a\0b c"s,           "a\0b"s,     " c",      "good"},
    WordCase{"HighBytes",     "\xFF\xC2\xA0 ",     "\xFF\xC2\xA0", " ",    "good"},
    WordCase{"Nothing",       "",                  "",          "",        "eof fail"},
    WordCase{"OnlySpace",     "  ",                "",          "",        "eof fail"}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(ValueWordTest, OneAfterTheOther)
{
    std::istringstream in("a 1");
    Value first;
    Value second;
    Value third;
    in >> first >> second >> third;
    EXPECT_EQ(describe(first), "string a");
    EXPECT_EQ(describe(second), "string 1");
    EXPECT_EQ(describe(third), "string ");
}

TEST(ValueWordTest, IsEmptyWhenTheStreamHasFailedBefore)
{
    std::istringstream in("abc");
    in.setstate(std::ios_base::failbit);
    Value value = 1;
    in >> value;
    EXPECT_EQ(describe(value), "string ");
    EXPECT_EQ(drain(in), "abc");
}

/// A part of a word is not taken for a word.
TEST(ValueWordTest, IsEmptyWhenTheBufferThrows)
{
    MemoryBuffer buffer("abc", {"", 1, BufferKind::End::Throws});
    std::istream in(&buffer);
    Value value = 1;
    in >> value;
    EXPECT_TRUE(in.bad());
    EXPECT_EQ(describe(value), "string ");
}

TEST(ValueWordTest, IsAsLongAsTheWidthSays)
{
    std::istringstream in("abcdef");
    in.width(4);
    Value value;
    in >> value;
    EXPECT_EQ(describe(value), "string abcd");
    EXPECT_EQ(in.width(), 0);
    EXPECT_EQ(drain(in), "ef");
}

TEST(ValueWordTest, PassesOnAnExceptionThatTheStreamWasAskedFor)
{
    std::istringstream in;
    in.exceptions(std::ios_base::failbit);
    Value value = 1;
    EXPECT_THROW(in >> value, std::ios_base::failure);
    EXPECT_EQ(describe(value), "integer 1");
    EXPECT_EQ(in.exceptions(), std::ios_base::failbit);
}

} // namespace
