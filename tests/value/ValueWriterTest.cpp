#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <climits>
#include <iomanip>
#include <sstream>

namespace {

struct WriterCase
{
    const char* name;
    Value value;
    const char* text;
    const char* json;
};

std::ostream& operator<<(std::ostream& os, const WriterCase& row)
{
    return os << row.name;
}

class ValueWriterTest : public testing::TestWithParam<WriterCase>
{};

TEST_P(ValueWriterTest, WritesBothTexts)
{
    const std::string before = describe(GetParam().value);
    EXPECT_EQ(GetParam().value.to_s(), GetParam().text);
    EXPECT_EQ(GetParam().value.to_json(), GetParam().json);
    EXPECT_EQ(describe(GetParam().value), before);
}

TEST_P(ValueWriterTest, WritesBothTextsTheSameInAForeignLocale)
{
    const ForeignGlobalLocale locale;
    EXPECT_EQ(GetParam().value.to_s(), GetParam().text);
    EXPECT_EQ(GetParam().value.to_json(), GetParam().json);
}

TEST_P(ValueWriterTest, WritesBothTextsTheSameByTheRubyRules)
{
    const BooleanRules ruby(true);
    EXPECT_EQ(GetParam().value.to_s(), GetParam().text);
    EXPECT_EQ(GetParam().value.to_json(), GetParam().json);
}

TEST_P(ValueWriterTest, InsertsTheInspectionText)
{
    std::ostringstream out;
    EXPECT_EQ(&(out << GetParam().value), &out);
    EXPECT_EQ(out.str(), GetParam().text);
}

TEST(ValueWriterStreamTest, InsertsZeroBytesToo)
{
    std::ostringstream out;
    out << std::setw(5) << Value(std::string("a\0b", 3));
    EXPECT_EQ(out.str(), std::string("  a\0b", 5));
}

using Array = Value::Array;
using Hash = Value::Hash;

Hash insertedBackwards()
{
    Hash hash;
    hash["b"] = 1LL;
    hash["a"] = Array{true, nullptr};
    return hash;
}

const Value foreign{Dynamic::Any(5U)};

INSTANTIATE_TEST_SUITE_P(
    Kinds, ValueWriterTest,
    testing::Values(
        WriterCase{"EmptyNil", Value(), "nil", "null"},
        WriterCase{"Nil", Value(nullptr), "nil", "null"},
        WriterCase{"True", Value(true), "true", "true"},
        WriterCase{"False", Value(false), "false", "false"}, WriterCase{"Zero", Value(0), "0", "0"},
        WriterCase{"LeastInteger", Value(INT_MIN), "-2147483648", "-2147483648"},
        WriterCase{"LargestInteger", Value(INT_MAX), "2147483647", "2147483647"},
        WriterCase{"LeastLong", Value(LLONG_MIN), "-9223372036854775808", "-9223372036854775808"},
        WriterCase{"LargestLong", Value(LLONG_MAX), "9223372036854775807", "9223372036854775807"},
        WriterCase{"String", Value("a b"), "a b", "\"a b\""},
        WriterCase{"EmptyString", Value(""), "", "\"\""},
        WriterCase{"QuoteAndBackslash", Value("\"\\"), "\"\\", "\"\\\"\\\\\""},
        WriterCase{"TabVerticalTabAndUTF8", Value("\t\v\xc3\xa9"), "\t\v\xc3\xa9",
                   "\"\\t\\u000b\xc3\xa9\""},
        WriterCase{"Solidus", Value("a/b"), "a/b", "\"a/b\""},
        WriterCase{"EmptyArray", Value(Array{}), "[]", "[]"},
        WriterCase{"EmptyHash", Value(Hash{}), "{}", "{}"},
        WriterCase{"ArrayOfNil", Value(Array{nullptr}), "[nil]", "[null]"},
        WriterCase{"ArrayOfEmptyNil", Value(Array{Value()}), "[nil]", "[null]"},
        WriterCase{"ArrayOfScalars", Value(Array{1, "s", 2.5, false}), "[1, s, 2.5, false]",
                   "[1,\"s\",2.5,false]"},
        WriterCase{"NestedEmpties", Value(Array{Array{}, Hash{}, nestedArrays(1, Array{}), ""}),
                   "[[], {}, [[]], ]", "[[],{},[[]],\"\"]"},
        WriterCase{"HashInKeyOrder", Value(insertedBackwards()), "{a => [true, nil], b => 1}",
                   "{\"a\":[true,null],\"b\":1}"},
        WriterCase{"HashOfContainers",
                   Value(Hash{{"x", Hash{}}, {"y", Hash{{"z", Array{}}}}, {"z", 3}}),
                   "{x => {}, y => {z => []}, z => 3}", "{\"x\":{},\"y\":{\"z\":[]},\"z\":3}"},
        WriterCase{"KeysAreEscapedInJSON", Value(Hash{{"a\"\n", 1}, {"", 2}}),
                   "{ => 2, a\"\n => 1}", "{\"\":2,\"a\\\"\\n\":1}"},
        WriterCase{"KeysInByteOrder",
                   Value(Hash{{"\xc3\xa9", 1}, {"b", 2}, {"B", 3}, {"10", 4}, {"9", 5}}),
                   "{10 => 4, 9 => 5, B => 3, b => 2, \xc3\xa9 => 1}",
                   "{\"10\":4,\"9\":5,\"B\":3,\"b\":2,\"\xc3\xa9\":1}"},
        WriterCase{"OtherType", foreign, "", ""},
        WriterCase{"ArrayOfOtherType", Value(Array{foreign}), "[]", "[]"},
        WriterCase{"OtherTypeLeavesASlot", Value(Array{1, foreign, 2, foreign}), "[1, , 2, ]",
                   "[1,,2,]"},
        WriterCase{"HashOfOtherType", Value(Hash{{"a", foreign}, {"b", 1}}), "{a => , b => 1}",
                   "{\"a\":,\"b\":1}"},
        WriterCase{"Responders",
                   Value(Array{Hash{{"hostname", "192.0.2.10"}}, Hash{{"hostname", "192.0.2.9"}}}),
                   "[{hostname => 192.0.2.10}, {hostname => 192.0.2.9}]",
                   "[{\"hostname\":\"192.0.2.10\"},{\"hostname\":\"192.0.2.9\"}]"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueWriterTest, AVoidPointerThatIsNotNullIsStillNil)
{
    int object = 0;
    const Value value(Dynamic::Any(static_cast<void*>(&object)));
    EXPECT_EQ(value.to_s(), "nil");
    EXPECT_EQ(value.to_json(), "null");
}

struct StreamCase
{
    const char* name;
    std::ios_base::fmtflags adjustment;
    int width;
    char fill;
    Value value;
    const char* text;
};

std::ostream& operator<<(std::ostream& os, const StreamCase& row)
{
    return os << row.name;
}

class ValueStreamTest : public testing::TestWithParam<StreamCase>
{};

TEST_P(ValueStreamTest, PadsTheWholeText)
{
    std::ostringstream out;
    out.fill(GetParam().fill);
    if (GetParam().adjustment != 0) {
        out.setf(GetParam().adjustment, std::ios_base::adjustfield);
    }
    out.width(GetParam().width);
    out << GetParam().value;
    EXPECT_EQ(out.str(), GetParam().text);
    EXPECT_EQ(out.width(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, ValueStreamTest,
    testing::Values(StreamCase{"RightByDefault", {}, 10, ' ', Value(42), "        42"},
                    StreamCase{"Right", std::ios_base::right, 10, ' ', Value("abc"), "       abc"},
                    StreamCase{"Left", std::ios_base::left, 10, '*', Value(true), "true******"},
                    StreamCase{"InternalActsAsForStrings", std::ios_base::internal, 6, '0',
                               Value(-42), "000-42"},
                    StreamCase{"ArrayAsOne", {}, 10, '.', Value(Array{1, 2}), "....[1, 2]"},
                    StreamCase{"WiderText", {}, 3, '.', Value("abcdef"), "abcdef"},
                    StreamCase{"Nil", {}, 5, '.', Value(), "..nil"},
                    StreamCase{"EmptyText", {}, 2, '.', Value(""), ".."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ValueStreamTest, NumberFlagsOfTheStreamDoNotReachTheText)
{
    std::ostringstream out;
    out << std::hex << std::showpos << std::boolalpha << std::fixed << std::setprecision(1);
    out << Value(255) << ' ' << Value(2.25) << ' ' << Value(true);
    EXPECT_EQ(out.str(), "255 2.25 true");
}

std::string expectedEscape(unsigned byte)
{
    switch (byte) {
    case 34:
        return "\\\"";
    case 92:
        return "\\\\";
    case 8:
        return "\\b";
    case 9:
        return "\\t";
    case 10:
        return "\\n";
    case 12:
        return "\\f";
    case 13:
        return "\\r";
    default:
        break;
    }
    if (byte < 32) {
        std::ostringstream out;
        out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << byte;
        return out.str();
    }
    return std::string(1, static_cast<char>(byte));
}

TEST(ValueWriterStringTest, EscapesEveryByteAloneBetweenOthersAndAsAKey)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string raw(1, static_cast<char>(byte));
        const std::string escaped = expectedEscape(byte);
        EXPECT_EQ(Value(raw).to_json(), "\"" + escaped + "\"") << byte;
        std::string between = raw;
        std::string betweenEscaped = escaped;
        between.append(1, 'a').append(raw).append(raw);
        betweenEscaped.append(1, 'a').append(escaped).append(escaped);
        EXPECT_EQ(Value(between).to_json(), "\"" + betweenEscaped + "\"") << byte;
        EXPECT_EQ(Value(Value::Hash{{raw, 1}}).to_json(), "{\"" + escaped + "\":1}") << byte;
        EXPECT_EQ(Value(raw).to_s(), raw) << byte;
        EXPECT_EQ(Value(Value::Hash{{raw, 1}}).to_s(), "{" + raw + " => 1}") << byte;
    }
}

TEST(ValueWriterStringTest, WritesStringsOfEveryLengthWhole)
{
    for (std::size_t length = 0; length < 300; ++length) {
        std::string raw;
        std::string escaped;
        for (std::size_t i = 0; i < length; ++i) {
            const auto byte = static_cast<unsigned>(i * 7 % 256);
            raw += static_cast<char>(byte);
            escaped += expectedEscape(byte);
        }
        ASSERT_EQ(Value(raw).to_json(), "\"" + escaped + "\"");
        ASSERT_EQ(Value(Value::Array{raw, raw}).to_json(),
                  std::string("[\"").append(escaped).append("\",\"").append(escaped) + "\"]");
        const std::string worst(length, '\x1f');
        ASSERT_EQ(Value(worst).to_json().size(), 6 * length + 2);
    }
}

} // namespace
