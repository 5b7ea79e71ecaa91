#include "value/JSONParser.h"
#include "tests/value/helpers/ReferenceReader.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// The parser's functions one by one, as a caller meets them who wants only a part of a document;
// then whole documents: what each reads as, how much of it is left and in what state the stream is;
// then what a read does to its stream beyond that.

namespace {

using namespace std::string_literals;

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
std::string outcomeOfCall(const std::string& text, Function function)
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
    EXPECT_EQ(outcomeOfCall(GetParam().input, GetParam().function), GetParam().outcome);
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

/// A document with what becomes of it.
struct DocumentCase
{
    std::string name;
    std::string input;
    std::string result; ///< as describe() tells it
    std::string unread;
    std::string state; ///< as stateText() tells it
};

std::ostream& operator<<(std::ostream& os, const DocumentCase& row)
{
    return os << row.input;
}

// Why a number that ends the stream leaves it in one of two states: only the next character shows
// that a number has ended, so the parser peeks at it. The first peek at the end of the stream sets
// eofbit; a second one finds the stream no longer good and sets failbit too. After "0" there is one
// peek, for a point or an exponent. After "12" there is another one before it, for a further digit.
// clang-format off
const std::vector<DocumentCase> documents = {
    // name               input                    result                        unread    state
    // White space
    {"Empty",             "",                      "nil",                        "",       "eof fail"},
    {"OnlySpace",         " \t\n\v\f\r",           "nil",                        "",       "eof fail"},
    {"AllWhiteSpace",     " \t\n\v\f\rtrue",       "boolean true",               "",       "good"},
    {"VerticalTabAndFormFeed", " \v\f12 ",         "long 12",                    " ",      "good"},
    {"WhiteSpaceInArray", "[\v1\f,\t2\r\n]\n",     "array[long 1, long 2]",      "\n",     "good"},
    {"WhiteSpaceInHash",  "{\v\"a\"\f:\r\n1\t}",   "hash{a: long 1}",            "",       "good"},
    {"Backspace",         "\b1",                   "nil",                        "\b1",    "good"},
    {"ShiftOut",          "\0161",                 "nil",                        "\0161",  "good"},
    {"NoBreakSpace",      "\xC2\xA0" "1",          "nil",                        "\xC2\xA0" "1", "good"},
    {"ByteOrderMark",     "\xEF\xBB\xBF" "1",      "nil",                        "\xEF\xBB\xBF" "1", "good"},
    {"ZeroByte",          "\0"s "1",               "nil",                        "\0"s "1", "good"},

    // Literals
    {"True",              "true",                  "boolean true",               "",       "good"},
    {"False",             "false",                 "boolean false",              "",       "good"},
    {"Null",              "null",                  "nil",                        "",       "good"},
    {"TrueAndMore",       "truex",                 "boolean true",               "x",      "good"},
    {"FalseAndMore",      "falsehood",             "boolean false",              "hood",   "good"},
    {"NullAndMore",       "null1",                 "nil",                        "1",      "good"},
    {"TrueCutOff",        "tru",                   "nil",                        "",       "eof fail"},
    {"TrueBroken",        "trae",                  "nil",                        "e",      "good"},
    {"FalseBroken",       "fxlse",                 "nil",                        "lse",    "good"},
    {"NullBroken",        "nulL.",                 "nil",                        ".",      "good"},
    {"CapitalTrue",       "True",                  "nil",                        "True",   "good"},
    {"Nil",               "nil",                   "nil",                        "l",      "good"},
    {"Nan",               "nan",                   "nil",                        "n",      "good"},
    {"Inf",               "inf",                   "nil",                        "inf",    "good"},
    {"Letter",            "x",                     "nil",                        "x",      "good"},
    {"SingleQuotes",      "'a'",                   "nil",                        "'a'",    "good"},
    {"Comment",           "//\n1",                 "nil",                        "//\n1",  "good"},

    // Arrays
    {"EmptyArray",        "[]",                    "array[]",                    "",       "good"},
    {"EmptyArraySpace",   "[ ]",                   "array[]",                    "",       "good"},
    {"Array",             "[1,2,3]x",              "array[long 1, long 2, long 3]", "x",   "good"},
    {"ArrayOfAll",        "[null,true,false,1,1.5,\"s\",[],{}]",
     "array[nil, boolean true, boolean false, long 1, real 1.500000, string s, array[], hash{}]",
                                                                                 "",       "good"},
    {"NestedArrays",      "[[[]],[[1],[2]]]",      "array[array[array[]], array[array[long 1], array[long 2]]]", "", "good"},
    {"CommaAtArrayEnd",   "[1,]",                  "nil",                        "]",      "good"},
    {"CommaAtArrayEndSpace", "[1, ]",              "nil",                        "]",      "good"},
    {"OnlyCommaInArray",  "[,]",                   "nil",                        ",]",     "good"},
    {"TwoCommas",         "[1,,2]",                "nil",                        ",2]",    "good"},
    {"NoComma",           "[1 2]",                 "nil",                        "2]",     "good"},
    {"ArrayClosedAsHash", "[1}",                   "nil",                        "}",      "good"},
    {"EmptyArrayClosedAsHash", "[}",               "nil",                        "}",      "good"},
    {"ColonInArray",      "[\"a\":1]",             "nil",                        ":1]",    "good"},
    {"OnlyClosing",       "]",                     "nil",                        "]",      "good"},
    {"ArrayCutOff",       "[",                     "nil",                        "",       "eof fail"},
    {"ArrayCutOffAfterNumber", "[0",               "nil",                        "",       "eof fail"},
    {"ArrayCutOffAfterComma", "[1,",               "nil",                        "",       "eof fail"},
    {"ArrayThenArray",    "[1][2]",                "array[long 1]",              "[2]",    "good"},
    {"BadElementDeepIn",  "[1,[2,[3,x],4],5]",     "nil",                        "x],4],5]", "good"},

    // Hashes
    {"EmptyHash",         "{}",                    "hash{}",                     "",       "good"},
    {"EmptyHashSpace",    "{ }",                   "hash{}",                     "",       "good"},
    {"Hash",              R"({"b":1,"a":[2]}x)",   "hash{a: array[long 2], b: long 1}", "x", "good"},
    {"RepeatedName",      R"({"b":1,"a":2,"b":3})", "hash{a: long 2, b: long 3}", "",      "good"},
    {"RepeatedNameAfterContainer", R"({"a":[1,{"b":2}],"a":{"c":3}})", "hash{a: hash{c: long 3}}", "", "good"},
    {"RepeatedNameThenNull", R"({"a":1,"a":null})", "hash{a: nil}",              "",       "good"},
    {"NullMember",        R"({"a":null})",         "hash{a: nil}",               "",       "good"},
    {"EmptyName",         R"({"":1})",             "hash{: long 1}",             "",       "good"},
    {"EscapedName",       R"({"\u0061\/\n":1})",   "hash{a/\n: long 1}",         "",       "good"},
    {"NameWithZeroByte",  R"({"a\u0000b":1})",     "hash{a\0b: long 1}"s,        "",       "good"},
    {"NestedHashes",      R"({"a":{"b":{}}})",     "hash{a: hash{b: hash{}}}",   "",       "good"},
    {"CommaAtHashEnd",    R"({"a":1,})",           "nil",                        "}",      "good"},
    {"CommaAtHashEndSpace", R"({"a":1 , })",       "nil",                        "}",      "good"},
    {"OnlyCommaInHash",   "{,}",                   "nil",                        ",}",     "good"},
    {"NoCommaInHash",     R"({"a":1 "b":2})",      "nil",                        R"("b":2})", "good"},
    {"HashClosedAsArray", R"({"a":1])",            "nil",                        "]",      "good"},
    {"EmptyHashClosedAsArray", "{]",               "nil",                        "]",      "good"},
    {"NumberAsName",      "{1:2}",                 "nil",                        "1:2}",   "good"},
    {"LiteralAsName",     "{true:2}",              "nil",                        "true:2}", "good"},
    {"NoValue",           R"({"a":})",             "nil",                        "}",      "good"},
    {"TwoColons",         R"({"a"::1})",           "nil",                        ":1}",    "good"},
    {"EqualsSign",        R"({"a"=1})",            "nil",                        "=1}",    "good"},
    {"HashCutOff",        "{",                     "nil",                        "",       "eof fail"},
    {"HashCutOffInName",  R"({"a)",                "nil",                        "",       "eof fail"},
    {"HashCutOffAfterColon", R"({"a":)",           "nil",                        "",       "eof fail"},
    {"HashCutOffAfterValue", R"({"a":0)",          "nil",                        "",       "eof fail"},

    // Names without colon and value are dropped.
    {"BareName",          R"({"a"})",              "hash{}",                     "",       "good"},
    {"BareNameSpace",     R"({ "a" }x)",           "hash{}",                     "x",      "good"},
    {"BareNameFirst",     R"({"a" , "b" : true})", "hash{b: boolean true}",      "",       "good"},
    {"BareNameLast",      R"({"b":true,"a"})",     "hash{b: boolean true}",      "",       "good"},
    {"BareNameBetween",   R"({"a":1,"b","c":2})",  "hash{a: long 1, c: long 2}", "",       "good"},
    {"BareNames",         R"({"a","b" , "c"})",    "hash{}",                     "",       "good"},
    {"BareNameKeepsValue", R"({"a":1,"a"})",       "hash{a: long 1}",            "",       "good"},
    {"BareNameThenValue", R"({"a","a":1})",        "hash{a: long 1}",            "",       "good"},
    {"BareNameDeepIn",    R"([{"a":{"b"}},1])",    "array[hash{a: hash{}}, long 1]", "",   "good"},
    {"BareNameComma",     R"({"a",})",             "nil",                        "}",      "good"},
    {"BareNameTwoCommas", R"({"a",,"b":1})",       "nil",                        R"(,"b":1})", "good"},
    {"BareNameBracket",   R"({"a"])",              "nil",                        "]",      "good"},
    {"BareNameNumber",    R"({"a" 1})",            "nil",                        "1}",     "good"},
    {"BareNameCutOff",    R"({"a")",               "nil",                        "",       "eof fail"},
    {"BareNameCutOffAfterComma", R"({"a",)",       "nil",                        "",       "eof fail"},

    // Strings
    {"EmptyString",       R"("")",                 "string ",                    "",       "good"},
    {"String",            R"("abc"def)",           "string abc",                 "def",    "good"},
    {"StringThenQuote",   R"("abc"")" ,            "string abc",                 "\"",     "good"},
    {"EveryEscape",       R"("\"\/\\\b\f\n\r\t")", "string \"/\\\b\f\n\r\t",     "",       "good"},
    {"RawControls",       "\"a\n\t\0b\x7F\""s,     "string a\n\t\0b\x7F"s,       "",       "good"},
    {"MalformedUTF8",     "\"\xFF\xC3\x28\x80\"",  "string \xFF\xC3\x28\x80",    "",       "good"},
    {"UnknownEscape",     R"("\x41")",             "nil",                        R"(41")", "good"},
    {"CapitalEscape",     R"("\N")",               "nil",                        R"(")",   "good"},
    {"CapitalUEscape",    R"("\U0041")",           "nil",                        R"(0041")", "good"},
    {"ApostropheEscape",  R"("\'")",               "nil",                        R"(")",   "good"},
    {"StringCutOff",      R"("abc)",               "nil",                        "",       "eof fail"},
    {"StringCutOffInEscape", R"("\)",              "nil",                        "",       "eof fail"},
    {"StringCutOffInUnicode", R"("\u)",            "nil",                        "",       "eof"},
    {"StringCutOffInDigits", R"("\u00e)",          "nil",                        "",       "eof"},
    {"StringCutOffAfterHighSurrogate", R"("\ud83d)", "nil",                      "",       "eof fail"},
    {"StringCutOffInLowSurrogate", R"("\ud83d\ude0)", "nil",                     "",       "eof"},
    {"Unicode1",          R"("\u0041\u007F")",     "string A\x7F",               "",       "good"},
    {"Unicode2",          R"("\u0080\u00e9\u07FF")", "string \xC2\x80\xC3\xA9\xDF\xBF", "", "good"},
    {"Unicode3",          R"("\u0800\uFFFF")",     "string \xE0\xA0\x80\xEF\xBF\xBF", "",  "good"},
    {"Unicode4",          R"("\ud83d\ude00")",     "string \xF0\x9F\x98\x80",    "",       "good"},
    {"FirstPair",         R"("\uD800\uDC00")",     "string \xF0\x90\x80\x80",    "",       "good"},
    {"LastPair",          R"("\uDBFF\uDFFF")",     "string \xF4\x8F\xBF\xBF",    "",       "good"},
    {"UnicodeZero",       R"("a\u0000b")",         "string a\0b"s,               "",       "good"},
    {"LowSurrogateAlone", R"("\ude00")",           "string \xED\xB8\x80",        "",       "good"},
    {"LowSurrogateFirst", R"("\udc00")",           "string \xED\xB0\x80",        "",       "good"},
    {"LowSurrogateLast",  R"("\udfff")",           "string \xED\xBF\xBF",        "",       "good"},
    {"LowThenPair",       R"("\udfff\ud800\udc00")", "string \xED\xBF\xBF\xF0\x90\x80\x80", "", "good"},
    {"AroundSurrogates",  R"("\ud7ff\ue000")",     "string \xED\x9F\xBF\xEE\x80\x80", "",  "good"},
    {"HighSurrogateAlone", R"("\ud83d")",          "nil",                        "",       "good"},
    {"HighSurrogateThenLetter", R"("\ud83dx")",    "nil",                        "\"",     "good"},
    {"HighSurrogateThenEscape", R"("\ud83d\n")",   "nil",                        "\"",     "good"},
    {"HighSurrogateThenHigh", R"("\ud83d\ud83d")", "nil",                        "\"",     "good"},
    {"HighSurrogateThenOther", R"("\ud83d\u0041")", "nil",                       "\"",     "good"},
    {"BadHexDigit1",      R"("\ug000")",           "nil",                        R"(g000")", "good"},
    {"BadHexDigit4",      R"("\u000g")",           "nil",                        R"(g")",  "good"},
    {"BadHexDigitInPair", R"("\ud83d\ude0 ")",     "nil",                        R"( ")",  "good"},
    {"FewHexDigits",      R"("\u12")",             "nil",                        "\"",     "good"},
    {"ManyHexDigits",     R"("\u00410")",          "string A0",                  "",       "good"},

    // Numbers
    {"Zero",              "0",                     "long 0",                     "",       "eof"},
    {"ZeroAndSpace",      "0 ",                    "long 0",                     " ",      "good"},
    {"MinusZero",         "-0",                    "long 0",                     "",       "eof"},
    {"One",               "1",                     "long 1",                     "",       "eof fail"},
    {"Minus",             "-",                     "nil",                        "",       "eof"},
    {"MinusLetter",       "-x",                    "nil",                        "x",      "good"},
    {"MinusMinus",        "--1",                   "nil",                        "-1",     "good"},
    {"MinusSpace",        "- 1",                   "nil",                        " 1",     "good"},
    {"Plus",              "+1",                    "nil",                        "+1",     "good"},
    {"LeadingPoint",      ".5",                    "nil",                        ".5",     "good"},
    {"LeadingZero",       "01",                    "long 0",                     "1",      "good"},
    {"LeadingZeros",      "012",                   "long 0",                     "12",     "good"},
    {"LeadingZeroInArray", "[01]",                 "nil",                        "1]",     "good"},
    {"Hexadecimal",       "0x10",                  "long 0",                     "x10",    "good"},
    {"TextBehind",        "12abc",                 "long 12",                    "abc",    "good"},
    {"Point",             "1.",                    "nil",                        "",       "eof"},
    {"PointLetter",       "1.x",                   "nil",                        "x",      "good"},
    {"PointExponent",     "1.e5",                  "nil",                        "e5",     "good"},
    {"TwoPoints",         "1.5.5",                 "real 1.500000",              ".5",     "good"},
    {"Fraction",          "1.5",                   "real 1.500000",              "",       "eof fail"},
    {"FractionNegative",  "-1.5,",                 "real -1.500000",             ",",      "good"},
    {"FractionZero",      "1.0",                   "long 1",                     "",       "eof fail"},
    {"FractionZeros",     "1.000 ",                "long 1",                     " ",      "good"},
    {"FractionZeroNegative", "-0.0",               "long 0",                     "",       "eof fail"},
    {"FractionOfMinusZero", "-0.5",                "real -0.500000",             "",       "eof fail"},
    {"Exponent",          "1e2",                   "real 100.000000",            "",       "eof"},
    {"ExponentCapital",   "1E5",                   "real 100000.000000",         "",       "eof"},
    {"ExponentPlus",      "1e+2 ",                 "real 100.000000",            " ",      "good"},
    {"ExponentMinus",     "25e-1",                 "real 2.500000",              "",       "eof"},
    {"ExponentLeadingZeros", "1e002",              "real 100.000000",            "",       "eof"},
    {"ExponentZero",      "5e0",                   "long 5",                     "",       "eof"},
    {"ExponentPlusZero",  "5E+0",                  "long 5",                     "",       "eof"},
    {"ExponentMinusZero", "5e-00]",                "long 5",                     "]",      "good"},
    {"FractionZeroExponent", "5.0e0",              "long 5",                     "",       "eof"},
    {"FractionZeroExponentOne", "5.0e1",           "real 50.000000",             "",       "eof"},
    {"FractionAndExponent", "-1.5e1,",             "real -15.000000",            ",",      "good"},
    {"ZeroExponent",      "0e5",                   "real 0.000000",              "",       "eof"},
    {"MinusZeroExponent", "-0e5",                  "real -0.000000",             "",       "eof"},
    {"ExponentCutOff",    "1e",                    "nil",                        "",       "eof"},
    {"ExponentCutOffPlus", "1e+",                  "nil",                        "",       "eof"},
    {"ExponentCutOffMinus", "1e-",                 "nil",                        "",       "eof"},
    {"ExponentLetter",    "1ex",                   "nil",                        "x",      "good"},
    {"ExponentTwoSigns",  "1e+-1",                 "nil",                        "-1",     "good"},
    {"ExponentFraction",  "1e1.5",                 "real 10.000000",             ".5",     "good"},
    {"ExponentTwice",     "1e1e1",                 "real 10.000000",             "e1",     "good"},
    {"ExponentHuge",      "1e999",                 "real inf",                   "",       "eof"},
    {"ExponentHugeNegative", "-1e999",             "real -inf",                  "",       "eof"},
    {"ExponentTiny",      "1e-999",                "real 0.000000",              "",       "eof"},

    // Numbers around those of 18, 19 and 20 digits that are the bounds
    {"Digits18",          "999999999999999999",    "long 999999999999999999",    "",       "eof fail"},
    {"Digits18Negative",  "-999999999999999999",   "long -999999999999999999",   "",       "eof fail"},
    {"Digits19",          "1000000000000000000",   "long 1000000000000000000",   "",       "eof fail"},
    {"Digits19Negative",  "-1000000000000000000 ", "long -1000000000000000000",  " ",      "good"},
    {"BeforeLargest",     "9223372036854775806",   "long 9223372036854775806",   "",       "eof fail"},
    {"Largest",           "9223372036854775807",   "long 9223372036854775807",   "",       "eof fail"},
    {"LargestTenth",      "922337203685477580",    "long 922337203685477580",    "",       "eof fail"},
    {"LargestNegated",    "-9223372036854775807",  "long -9223372036854775807",  "",       "eof fail"},
    {"Least",             "-9223372036854775808",  "long -9223372036854775808",  "",       "eof fail"},
    {"LeastFractionZero", "-9223372036854775808.0", "long -9223372036854775808", "",       "eof fail"},
    // The digit that is one too many is consumed, and nothing behind it looked at.
    {"AboveLargest",      "9223372036854775808",   "nil",                        "",       "good"},
    {"AboveLargestMore",  "9223372036854775809.5", "nil",                        ".5",     "good"},
    {"BelowLeast",        "-9223372036854775809",  "nil",                        "",       "good"},
    {"Digits19Over",      "9223372036854775810",   "nil",                        "",       "good"},
    {"Digits19OverEarly", "9300000000000000000,",  "nil",                        ",",      "good"},
    {"Digits19Nines",     "9999999999999999999",   "nil",                        "",       "good"},
    {"Digits19NinesNegative", "-9999999999999999999", "nil",                     "",       "good"},
    {"Digits20",          "10000000000000000000",  "nil",                        "",       "good"},
    {"Digits20Negative",  "-10000000000000000000", "nil",                        "",       "good"},
    {"LargestAndZero",    "92233720368547758070",  "nil",                        "",       "good"},
    {"LeastAndZero",      "-92233720368547758080]", "nil",                       "]",      "good"},
    {"Digits21",          "100000000000000000000", "nil",                        "0",      "good"},
    {"TwoTo64",           "18446744073709551616",  "nil",                        "",       "good"},
    {"TwoTo64AndOne",     "18446744073709551617 ", "nil",                        " ",      "good"},
    {"InArray",           "[9223372036854775808]", "nil",                        "]",      "good"},
    // The same bounds hold for an exponent.
    {"LargestExponent",   "1e9223372036854775807", "real inf",                   "",       "eof"},
    {"AboveLargestExponent", "1e9223372036854775808", "nil",                     "",       "good"},
    {"AboveLargestExponentPlus", "1e+9223372036854775808", "nil",                "",       "good"},
    {"LeastExponent",     "1e-9223372036854775808", "real 0.000000",             "",       "eof"},
    {"BelowLeastExponent", "1e-9223372036854775809x", "nil",                     "x",      "good"},
    {"NegativeNumberLargestExponent", "-1e9223372036854775808", "nil",           "",       "good"},
    {"ExponentOfZeros",   "7e00000000000000000000000", "long 7",                 "",       "eof"},
    {"ExponentAfterZeros", "1e00000000000000000000002", "real 100.000000",       "",       "eof"},
    // A fraction has no bound.
    {"LongFraction",      "1.23456789012345678901234,", "real 1.234568",         ",",      "good"},
    {"LongFractionOfZeros", "1.000000000000000000000000", "long 1",              "",       "eof fail"},
    {"LongFractionExponent", "0.99999999999999999999e1", "real 10.000000",       "",       "eof"},
    {"LongFractionCutOff", "0.99999999999999999999e", "nil",                     "",       "eof"},
};
// clang-format on

class JSONParserDocumentTest : public testing::TestWithParam<DocumentCase>
{};

TEST_P(JSONParserDocumentTest, Reads)
{
    const ReadOutcome outcome = readJSON(GetParam().input);
    EXPECT_EQ(describe(outcome.value), GetParam().result);
    EXPECT_EQ(outcome.unread, GetParam().unread);
    EXPECT_EQ(stateText(outcome.state), GetParam().state);
    EXPECT_EQ(outcome.mask, std::ios_base::goodbit);
}

TEST_P(JSONParserDocumentTest, IsReadAsByTheReferenceFromEveryBufferCutOffAnywhere)
{
    const std::string& input = GetParam().input;
    for (const BufferKind& kind : bufferKinds) {
        for (const std::string& text : {input, "[" + input + ",{\"k\":" + input}) {
            for (std::size_t length = 0; length <= text.size(); ++length) {
                ASSERT_EQ(readerDifference(text.substr(0, length), kind), "");
            }
        }
        ASSERT_EQ(readerDifference("{\"k\":" + input + ", \"l\"}", kind), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, JSONParserDocumentTest, testing::ValuesIn(documents),
                         [](const auto& row) { return row.param.name; });

TEST(JSONParserDocumentTest, AreOfEveryKind)
{
    std::set<Value::Kind> kinds;
    for (const DocumentCase& row : documents) {
        kinds.insert(readJSON(row.input).value.kind());
    }
    EXPECT_EQ(kinds,
              (std::set<Value::Kind>{Value::Kind::Nil, Value::Kind::Boolean, Value::Kind::Long,
                                     Value::Kind::Real, Value::Kind::String, Value::Kind::Array,
                                     Value::Kind::Hash}));
}

TEST(JSONParserDocumentTest, EveryByteAtTheStart)
{
    std::map<int, std::string> special = {
        {'"', "nil /  / eof fail"},     {'[', "nil /  / eof fail"}, {'{', "nil / 1 / good"},
        {'t', "nil /  / good"},         {'f', "nil /  / good"},     {'n', "nil /  / good"},
        {'-', "long -1 /  / eof fail"}, {'0', "long 0 / 1 / good"},
    };
    for (const int white : {9, 10, 11, 12, 13, 32}) {
        special[white] = "long 1 /  / eof fail";
    }
    for (int digit = '1'; digit <= '9'; ++digit) {
        special[digit] = "long " + byteText(digit) + "1 /  / eof fail";
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::string input = byteText(byte) + "1";
        const auto expected = special.find(byte);
        EXPECT_EQ(outcomeOf(input),
                  expected == special.end() ? "nil / " + input + " / good" : expected->second)
            << byte;
    }
}

constexpr auto allBits = std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit;

/// A read on a stream that is not good throws, and leaves the mask at all bits.
void expectRefused(std::istream& in)
{
    const std::ios_base::iostate state = in.rdstate();
    EXPECT_THROW(Value::parse_json(in), std::ios_base::failure);
    EXPECT_EQ(in.exceptions(), allBits);
    EXPECT_EQ(stateText(in.rdstate()), stateText(state));
}

TEST(JSONParserStreamTest, RefusesAStreamAtItsEnd)
{
    std::istringstream in("12");
    in.setstate(std::ios_base::eofbit);
    expectRefused(in);
    EXPECT_EQ(drain(in), "12");
}

TEST(JSONParserStreamTest, RefusesAFailedStream)
{
    std::istringstream in("12");
    in.setstate(std::ios_base::failbit);
    expectRefused(in);
    EXPECT_EQ(drain(in), "12");
}

TEST(JSONParserStreamTest, RefusesAStreamWithoutABuffer)
{
    std::istream in(nullptr);
    expectRefused(in);
}

TEST(JSONParserStreamTest, ReadsTheEmptyStreamThatDoesNotKnowYet)
{
    std::istringstream in;
    EXPECT_EQ(describe(Value::parse_json(in)), "nil");
    EXPECT_EQ(stateText(in.rdstate()), "eof fail");
    EXPECT_EQ(in.exceptions(), std::ios_base::goodbit);
    expectRefused(in);
}

TEST(JSONParserStreamTest, ReadsOneDocumentAfterTheOther)
{
    std::istringstream in("{\"a\":1}[2] 3 true");
    EXPECT_EQ(describe(Value::parse_json(in)), "hash{a: long 1}");
    EXPECT_EQ(describe(Value::parse_json(in)), "array[long 2]");
    EXPECT_EQ(describe(Value::parse_json(in)), "long 3");
    EXPECT_EQ(describe(Value::parse_json(in)), "boolean true");
    EXPECT_EQ(stateText(in.rdstate()), "good");
    EXPECT_EQ(describe(Value::parse_json(in)), "nil");
}

TEST(JSONParserStreamTest, StartsWhereTheStreamIs)
{
    std::istringstream in("word 12 rest");
    std::string word;
    in >> word;
    EXPECT_EQ(describe(Value::parse_json(in)), "long 12");
    in >> word;
    EXPECT_EQ(word, "rest");
}

TEST(JSONParserStreamTest, PutsAMaskBackWhoseBitsTheReadDoesNotSet)
{
    std::istringstream in("[1] ");
    in.exceptions(allBits);
    EXPECT_EQ(describe(Value::parse_json(in)), "array[long 1]");
    EXPECT_EQ(in.exceptions(), allBits);
    std::istringstream ending("1");
    ending.exceptions(std::ios_base::badbit);
    EXPECT_EQ(describe(Value::parse_json(ending)), "long 1");
    EXPECT_EQ(ending.exceptions(), std::ios_base::badbit);
    EXPECT_EQ(stateText(ending.rdstate()), "eof fail");
}

TEST(JSONParserStreamDeathTest, EndsTheProgramWhenTheMaskHasABitThatTheReadSets)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::istringstream in("12");
    in.exceptions(std::ios_base::eofbit);
    EXPECT_DEATH(Value::parse_json(in), "");
}

/// The look-ahead after a number forgives the stream's own failure, but not a device's.
TEST(JSONParserStreamTest, TheLookAheadAfterANumberForgivesOnlyAStreamFailure)
{
    const auto read = [](BufferKind::End end) {
        MemoryBuffer buffer("12", {"", 1, end});
        std::istream in(&buffer);
        const Value value = Value::parse_json(in);
        return describe(value) + ", " + stateText(in.rdstate());
    };
    EXPECT_EQ(read(BufferKind::End::Quiet), "long 12, eof fail");
    EXPECT_EQ(read(BufferKind::End::Throws), "nil, bad");
    EXPECT_EQ(read(BufferKind::End::ThrowsFailure), "long 12, fail bad");
}

TEST(JSONParserStreamTest, LeavesTheFormatFlagsAlone)
{
    std::istringstream in(" \n[ 1 , 2 ] ");
    in >> std::noskipws >> std::hex;
    in.width(3);
    const std::ios_base::fmtflags flags = in.flags();
    EXPECT_EQ(describe(Value::parse_json(in)), "array[long 1, long 2]");
    EXPECT_EQ(in.flags(), flags);
    EXPECT_EQ(in.width(), 3);
}

TEST(JSONParserStreamTest, ReadsTheSameInAnyLocale)
{
    const ForeignGlobalLocale locale;
    std::istringstream in("[1.5,1234567,\"1.234\"]");
    in.imbue(std::locale());
    const Value value = Value::parse_json(in);
    EXPECT_EQ(describe(value.to_a()[1]), "long 1234567");
    EXPECT_TRUE(identical(value.to_a()[0], 1.5));
    EXPECT_EQ(describe(value.to_a()[2]), "string 1.234");
}

/// What a program has asked on one stream is seen before it waits for the answer on the other.
TEST(JSONParserStreamTest, FlushesTheTiedStream)
{
    class CountingBuffer : public std::stringbuf
    {
    public:
        int flushes = 0;

    private:
        int sync() override
        {
            ++flushes;
            return 0;
        }
    };
    CountingBuffer counter;
    std::ostream tied(&counter);
    std::istringstream in("[1] ");
    in.tie(&tied);
    Value::parse_json(in);
    EXPECT_GT(counter.flushes, 0);
}

/// Reads on different streams need no lock.
TEST(JSONParserStreamTest, ReadsDifferentStreamsOnDifferentThreads)
{
    const auto readMany = [](std::string* result) {
        for (int count = 0; count < 200; ++count) {
            std::istringstream in("[[[1.5,{\"a\":[\"\\u00e9\"]}]],true");
            Value::parse_json(in); // cut off
            in.clear();
            in.str("[[[1.5,{\"a\":[\"\\u00e9\"]}]],true]");
            *result = Value::parse_json(in).to_json();
        }
    };
    std::array<std::string, 4> results;
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (std::string& result : results) {
        threads.emplace_back(readMany, &result);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& result : results) {
        EXPECT_EQ(result, "[[[1.5,{\"a\":[\"\xC3\xA9\"]}]],true]");
    }
}

} // namespace
