#include "value/JSONParser.h"

#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>

// The parser's functions one by one, as a caller meets them who wants only a part of a document.

namespace {

/// A parser over a text, and what is left of that.
class Reading
{
public:
    explicit Reading(const std::string& text) : m_in(text), parser(m_in) {}

    std::string unread() { return drain(m_in); }
    std::string state() const { return stateText(m_in.rdstate()); }

private:
    std::istringstream m_in;

public:
    JSONParser parser;
};

/// What a function of the parser gives for a text: "result / unread / state", where the result of
/// one that throws is "error" or, when the stream failed, "failure".
template <typename Function>
std::string outcomeOf(const std::string& text, Function function)
{
    Reading reading(text);
    std::string result;
    try {
        result = function(reading.parser);
    } catch (const std::ios_base::failure&) {
        result = "failure";
    } catch (const std::exception& error) {
        result = typeid(error) == typeid(std::exception) ? "error" : error.what();
    }
    const std::string state = reading.state();
    return result + " / " + reading.unread() + " / " + state;
}

struct FunctionCase
{
    const char* name;
    std::function<std::string(JSONParser&)> function;
    const char* input;
    const char* outcome;
};

std::ostream& operator<<(std::ostream& os, const FunctionCase& row)
{
    return os << row.input;
}

template <Value (JSONParser::*function)()>
std::string described(JSONParser& parser)
{
    return describe((parser.*function)());
}

template <auto function>
std::string numbered(JSONParser& parser)
{
    return std::to_string((parser.*function)());
}

std::string whitespace(JSONParser& parser)
{
    parser.skipWhitespace();
    return "skipped";
}

/// The number and how many digits were used.
std::string countedDigits(JSONParser& parser)
{
    int count = -1;
    const long long digits = parser.getDigits(false, &count);
    return std::to_string(digits) + " of " + std::to_string(count);
}

std::string countedNegative(JSONParser& parser)
{
    int count = -1;
    const long long digits = parser.getDigits(true, &count);
    return std::to_string(digits) + " of " + std::to_string(count);
}

std::string digits(JSONParser& parser)
{
    return std::to_string(parser.getDigits(false, nullptr));
}

std::string negativeDigits(JSONParser& parser)
{
    return std::to_string(parser.getDigits(true, nullptr));
}

class JSONParserTest : public testing::TestWithParam<FunctionCase>
{};

TEST_P(JSONParserTest, Reads)
{
    EXPECT_EQ(outcomeOf(GetParam().input, GetParam().function), GetParam().outcome);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Functions, JSONParserTest, testing::Values(
    FunctionCase{"Token",               described<&JSONParser::getToken>,  " [1]2", "array[long 1] / 2 / good"},
    FunctionCase{"TokenBad",            described<&JSONParser::getToken>,  " [1}2", "nil / }2 / good"},
    FunctionCase{"TokenNone",           described<&JSONParser::getToken>,  "",      "nil /  / eof fail"},
    FunctionCase{"Value",               described<&JSONParser::getValue>,  " \"a\"b", "string a / b / good"},
    FunctionCase{"ValueBad",            described<&JSONParser::getValue>,  " ]",    "error / ] / good"},
    FunctionCase{"ValueNone",           described<&JSONParser::getValue>,  " ",     "failure /  / eof fail"},
    FunctionCase{"Whitespace",          whitespace,                        " \t\n\v\f\rx ", "skipped / x  / good"},
    FunctionCase{"WhitespaceNone",      whitespace,                        "x",     "skipped / x / good"},
    FunctionCase{"WhitespaceToTheEnd",  whitespace,                        "  ",    "skipped /  / eof"},
    FunctionCase{"Peek",                numbered<&JSONParser::peekChar>,   "a",     "97 / a / good"},
    FunctionCase{"PeekHighByte",        numbered<&JSONParser::peekChar>,   "\xFF",  "-1 / \xFF / good"},
    FunctionCase{"PeekNone",            numbered<&JSONParser::peekChar>,   "",      "failure /  / eof"},
    FunctionCase{"Get",                 numbered<&JSONParser::getChar>,    "ab",    "97 / b / good"},
    FunctionCase{"GetHighByte",         numbered<&JSONParser::getChar>,    "\x80",  "-128 /  / good"},
    FunctionCase{"GetNone",             numbered<&JSONParser::getChar>,    "",      "failure /  / eof fail"},
    FunctionCase{"Object",              described<&JSONParser::getObject>, "{\"a\":1}2", "hash{a: long 1} / 2 / good"},
    FunctionCase{"ObjectAfterSpace",    described<&JSONParser::getObject>, " {}",   "error /  {} / good"},
    FunctionCase{"ObjectOfArray",       described<&JSONParser::getObject>, "[]",    "error / [] / good"},
    FunctionCase{"Array",               described<&JSONParser::getArray>,  "[1]2",  "array[long 1] / 2 / good"},
    FunctionCase{"ArrayAfterSpace",     described<&JSONParser::getArray>,  " []",   "error /  [] / good"},
    FunctionCase{"ArrayOfObject",       described<&JSONParser::getArray>,  "{}",    "error / {} / good"},
    FunctionCase{"ArrayBad",            described<&JSONParser::getArray>,  "[1,]",  "error / ] / good"},
    FunctionCase{"ArrayCutOff",         described<&JSONParser::getArray>,  "[[1",   "failure /  / eof fail"},
    FunctionCase{"String",              described<&JSONParser::getString>, "\"a\"b", "string a / b / good"},
    FunctionCase{"StringAfterSpace",    described<&JSONParser::getString>, " \"a\"", "error /  \"a\" / good"},
    FunctionCase{"StringOfOther",       described<&JSONParser::getString>, "a",     "error / a / good"},
    FunctionCase{"StringNone",          described<&JSONParser::getString>, "",      "failure /  / eof"},
    FunctionCase{"True",                described<&JSONParser::getTrue>,   "truer", "boolean true / r / good"},
    FunctionCase{"TrueBad",             described<&JSONParser::getTrue>,   "trick", "error / ck / good"},
    FunctionCase{"TrueAfterSpace",      described<&JSONParser::getTrue>,   " true", "error / true / good"},
    FunctionCase{"False",               described<&JSONParser::getFalse>,  "falsetto", "boolean false / tto / good"},
    FunctionCase{"FalseBad",            described<&JSONParser::getFalse>,  "true",  "error / rue / good"},
    FunctionCase{"Null",                described<&JSONParser::getNull>,   "nullify", "nil / ify / good"},
    FunctionCase{"NullCutOff",          described<&JSONParser::getNull>,   "nul",   "failure /  / eof fail"},
    FunctionCase{"Number",              described<&JSONParser::getNumber>, "-12x",  "long -12 / x / good"},
    FunctionCase{"NumberAfterSpace",    described<&JSONParser::getNumber>, " 12",   "error /  12 / good"},
    FunctionCase{"NumberOfOther",       described<&JSONParser::getNumber>, "x",     "error / x / good"},
    FunctionCase{"HexDigit",            numbered<&JSONParser::getHexDigit>, "f0",   "15 / 0 / good"},
    FunctionCase{"HexDigitCapital",     numbered<&JSONParser::getHexDigit>, "A",    "10 /  / good"},
    FunctionCase{"HexDigitBad",         numbered<&JSONParser::getHexDigit>, "g",    "error / g / good"},
    FunctionCase{"HexDigitNone",        numbered<&JSONParser::getHexDigit>, "",     "failure /  / eof"},
    FunctionCase{"Unicode",             numbered<&JSONParser::getUnicode>, "fFfE0", "65534 / 0 / good"},
    FunctionCase{"UnicodeSurrogate",    numbered<&JSONParser::getUnicode>, "D83D",  "55357 /  / good"},
    FunctionCase{"UnicodeBad",          numbered<&JSONParser::getUnicode>, "00 0",  "error /  0 / good"},
    FunctionCase{"UnicodeCutOff",       numbered<&JSONParser::getUnicode>, "000",   "failure /  / eof"},
    FunctionCase{"Digits",              digits,         "007x",                     "7 / x / good"},
    FunctionCase{"DigitsToTheEnd",      digits,         "12",                       "12 /  / eof"},
    FunctionCase{"DigitsNone",          digits,         "x",                        "error / x / good"},
    FunctionCase{"DigitsAtTheEnd",      digits,         "",                         "failure /  / eof"},
    FunctionCase{"DigitsSign",          digits,         "-1",                       "error / -1 / good"},
    FunctionCase{"DigitsLargest",       digits,         "9223372036854775807x",     "9223372036854775807 / x / good"},
    FunctionCase{"DigitsTooLarge",      digits,         "9223372036854775808x",     "error / x / good"},
    FunctionCase{"NegativeDigitsLargest", negativeDigits, "9223372036854775808x",   "-9223372036854775808 / x / good"},
    FunctionCase{"NegativeDigitsTooLarge", negativeDigits, "9223372036854775809x",  "error / x / good"},
    FunctionCase{"Counted",             countedDigits,  "0120x",                    "120 of 4 / x / good"},
    FunctionCase{"CountedNone",         countedDigits,  "x",                        "error / x / good"},
    FunctionCase{"CountedZeros",        countedDigits,  "00000000000000000000000001", "1 of 26 /  / eof"},
    FunctionCase{"Counted18",           countedDigits,  "999999999999999999x",      "999999999999999999 of 18 / x / good"},
    FunctionCase{"Counted19",           countedDigits,  "9223372036854775807x",     "9223372036854775807 of 19 / x / good"},
    FunctionCase{"Counted19TooLarge",   countedDigits,  "9223372036854775808x",     "922337203685477580 of 18 / x / good"},
    FunctionCase{"Counted20",           countedDigits,  "12345678901234567890x",    "1234567890123456789 of 19 / x / good"},
    FunctionCase{"CountedNegative19",   countedNegative, "9223372036854775808x",    "-9223372036854775808 of 19 / x / good"},
    FunctionCase{"CountedNegative19TooLarge", countedNegative, "9223372036854775809x", "922337203685477580 of 18 / x / good"},
    FunctionCase{"CountedIgnoredForGood", countedDigits, "92233720368547758081x",   "922337203685477580 of 18 / x / good"}),
    [](const auto& row) { return row.param.name; });
// clang-format on

TEST(JSONParserUseTest, ReadsOneValueAfterTheOther)
{
    Reading reading("1 [2]\"3\" x 4");
    EXPECT_EQ(describe(reading.parser.getToken()), "long 1");
    EXPECT_EQ(describe(reading.parser.getToken()), "array[long 2]");
    EXPECT_EQ(describe(reading.parser.getToken()), "string 3");
    EXPECT_EQ(describe(reading.parser.getToken()), "nil");
    EXPECT_EQ(describe(reading.parser.getToken()), "nil") << "the x is still there";
    EXPECT_EQ(reading.parser.getChar(), 'x');
    EXPECT_EQ(describe(reading.parser.getToken()), "long 4");
    EXPECT_EQ(describe(reading.parser.getToken()), "nil") << "the stream has ended";
}

TEST(JSONParserUseTest, SetsTheMaskForItsLifetime)
{
    std::istringstream in("1 2");
    in.exceptions(std::ios_base::badbit);
    {
        JSONParser parser(in);
        EXPECT_EQ(in.exceptions(),
                  std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
        parser.getToken();
        EXPECT_EQ(in.exceptions(),
                  std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
    }
    EXPECT_EQ(in.exceptions(), std::ios_base::badbit);
    EXPECT_EQ(stateText(in.rdstate()), "good");
}

TEST(JSONParserUseTest, PutsTheMaskBackAfterAnException)
{
    std::istringstream in("x");
    EXPECT_THROW(JSONParser(in).getValue(), std::exception);
    EXPECT_EQ(in.exceptions(), std::ios_base::goodbit);
}

} // namespace
