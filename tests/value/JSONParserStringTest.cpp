#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>

#include <map>

// Every byte in every place of a string, and every code unit.

namespace {

TEST(JSONParserStringTest, EveryByteInAString)
{
    for (int byte = 0; byte < 256; ++byte) {
        if (byte == '"' || byte == '\\') {
            continue;
        }
        const std::string text = "a" + byteText(byte) + "b";
        EXPECT_EQ(outcomeOf("\"" + text + "\"x"), "string " + text + " / x / good") << byte;
    }
    EXPECT_EQ(outcomeOf(R"("a"b"x)"), "string a / b\"x / good");
}

TEST(JSONParserStringTest, EveryByteAfterABackslash)
{
    const std::map<int, std::string> escapes = {{'"', "\""}, {'/', "/"},  {'\\', "\\"},
                                                {'b', "\b"}, {'f', "\f"}, {'n', "\n"},
                                                {'r', "\r"}, {'t', "\t"}};
    for (int byte = 0; byte < 256; ++byte) {
        const auto escape = escapes.find(byte);
        std::string expected = "nil / x\"1 / good";
        if (escape != escapes.end()) {
            expected = "string " + escape->second + "x / 1 / good";
        } else if (byte == 'u') {
            expected = "nil / x\"1 / good"; // no digits
        }
        EXPECT_EQ(outcomeOf("\"\\" + byteText(byte) + "x\"1"), expected) << byte;
    }
}

TEST(JSONParserStringTest, EveryByteAsAHexadecimalDigit)
{
    const std::string digits = "0123456789abcdef0123456789ABCDEF";
    for (int byte = 0; byte < 256; ++byte) {
        const std::size_t found = digits.find(static_cast<char>(byte));
        const std::string character = byteText(static_cast<int>(0x40 + found % 16));
        EXPECT_EQ(outcomeOf("\"\\u004" + byteText(byte) + "\""),
                  found == std::string::npos ? "nil / " + byteText(byte) + "\" / good"
                                             : "string " + character + " /  / good")
            << byte;
    }
}

std::string utf8(unsigned codePoint)
{
    std::string text;
    const auto append = [&](unsigned byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 + (codePoint >> 6));
        append(0x80 + (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        append(0xE0 + (codePoint >> 12));
        append(0x80 + (codePoint >> 6 & 0x3F));
        append(0x80 + (codePoint & 0x3F));
    } else {
        append(0xF0 + (codePoint >> 18));
        append(0x80 + (codePoint >> 12 & 0x3F));
        append(0x80 + (codePoint >> 6 & 0x3F));
        append(0x80 + (codePoint & 0x3F));
    }
    return text;
}

std::string escaped(unsigned unit)
{
    constexpr const char* digits = "0123456789aBcDeF";
    std::string text = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += digits[unit >> shift & 0xF];
    }
    return text;
}

TEST(JSONParserStringTest, EveryCodeUnit)
{
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const bool highSurrogate = unit >= 0xD800 && unit < 0xDC00;
        const ReadOutcome outcome = readJSON("\"" + escaped(unit) + "\"");
        ASSERT_EQ(describe(outcome.value), highSurrogate ? "nil" : "string " + utf8(unit)) << unit;
    }
}

TEST(JSONParserStringTest, EveryCodeUnitAfterAHighSurrogate)
{
    for (unsigned low = 0; low < 0x10000; ++low) {
        const bool lowSurrogate = low >= 0xDC00 && low < 0xE000;
        const ReadOutcome outcome = readJSON("\"" + escaped(0xD83D) + escaped(low) + "\"");
        ASSERT_EQ(describe(outcome.value),
                  lowSurrogate ? "string " + utf8(0x1F400 + (low & 0x3FF)) : "nil")
            << low;
        ASSERT_EQ(outcome.unread, lowSurrogate ? "" : "\"") << low;
    }
}

TEST(JSONParserStringTest, EveryHighSurrogate)
{
    for (unsigned high = 0xD800; high < 0xDC00; ++high) {
        const ReadOutcome outcome = readJSON("\"" + escaped(high) + "\\uDFFF\"");
        ASSERT_EQ(describe(outcome.value),
                  "string " + utf8(0x10000 + ((high & 0x3FF) << 10) + 0x3FF))
            << high;
    }
}

TEST(JSONParserStringTest, EveryByteAfterAHighSurrogate)
{
    // Both bytes of the second escape's beginning are consumed with the one that is wrong.
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '\\') {
            EXPECT_EQ(outcomeOf("\"\\ud83d" + byteText(byte) + "xy"), "nil / xy / good") << byte;
        }
        if (byte != 'u') {
            EXPECT_EQ(outcomeOf("\"\\ud83d\\" + byteText(byte) + "xy"), "nil / xy / good") << byte;
        }
    }
}

} // namespace
