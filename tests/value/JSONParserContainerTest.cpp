#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

// Documents nested a million levels deep, read on a small stack.

namespace {

constexpr std::size_t deep = 1000000;

struct DeepDocument
{
    const char* name;
    std::string_view opening; ///< of one level
    std::string_view closing;
    std::size_t levels;

    std::string text() const { return repeat(opening, levels) + "7" + repeat(closing, levels); }
    /// The same with a tenth of the levels, where one test reads it often.
    DeepDocument tenth() const { return {name, opening, closing, levels / 10}; }
};

std::ostream& operator<<(std::ostream& os, const DeepDocument& row)
{
    return os << row.name;
}

Value read(const std::string& text, std::string* unread = nullptr)
{
    std::istringstream in(text);
    Value value = Value::parse_json(in);
    if (unread) {
        *unread = drain(in);
    }
    return value;
}

class JSONParserDepthTest : public testing::TestWithParam<DeepDocument>
{};

TEST_P(JSONParserDepthTest, IsReadAndWritten)
{
    runOnSmallStack([] {
        const std::string text = GetParam().text();
        std::string unread;
        EXPECT_TRUE(read(text + " rest", &unread).to_json() == text);
        EXPECT_EQ(unread, " rest");
    });
}

TEST_P(JSONParserDepthTest, GivesNilWhenCutOff)
{
    runOnSmallStack([] {
        std::string text = GetParam().text();
        text.pop_back();
        EXPECT_EQ(read(text).kind(), Value::Kind::Nil);
        const DeepDocument document = GetParam().tenth();
        const std::size_t innermost = document.opening.size() * document.levels;
        for (const std::size_t length : {innermost - 1, innermost, innermost + 1}) {
            EXPECT_EQ(read(document.text().substr(0, length)).kind(), Value::Kind::Nil) << length;
        }
    });
}

TEST_P(JSONParserDepthTest, GivesNilWhenBadDeepInside)
{
    runOnSmallStack([] {
        const DeepDocument document = GetParam().tenth();
        std::string text = document.text();
        text.replace(document.opening.size() * document.levels, 1, "x");
        std::string unread;
        EXPECT_EQ(read(text, &unread).kind(), Value::Kind::Nil);
        EXPECT_EQ(unread.substr(0, 1), "x");
        // The outermost bracket is closed by the wrong one.
        text = document.text();
        text.back() = text.back() == ']' ? '}' : ']';
        EXPECT_EQ(read(text, &unread).kind(), Value::Kind::Nil);
        EXPECT_EQ(unread.size(), 1U);
    });
}

TEST_P(JSONParserDepthTest, IsReplacedByAMemberOfTheSameName)
{
    runOnSmallStack([] {
        const std::string text = GetParam().tenth().text();
        EXPECT_EQ(describe(read("{\"a\":" + text + ",\"a\":1}")), "hash{a: long 1}");
        EXPECT_TRUE(read("{\"a\":1,\"a\":" + text + "}").to_json() == "{\"a\":" + text + "}");
    });
}

INSTANTIATE_TEST_SUITE_P(Deep, JSONParserDepthTest,
                         testing::Values(DeepDocument{"Arrays", "[", "]", deep},
                                         DeepDocument{"Hashes", "{\"k\":", "}", deep},
                                         DeepDocument{"Mixed", "[{\"k\":", "}]", deep / 2},
                                         DeepDocument{"WithSiblings", "[1,{\"a\":[],\"k\":",
                                                      ",\"z\":{}},\"s\"]", deep / 10}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(JSONParserDepthTest, OnlyOpeningBracketsGiveNil)
{
    runOnSmallStack([] {
        EXPECT_EQ(read(repeat("[", deep)).kind(), Value::Kind::Nil);
        for (const std::string_view opening : {"{\"a\":", "[\n", "{\"b\",\"a\":", "{\"a\":["}) {
            EXPECT_EQ(read(repeat(opening, deep / 10)).kind(), Value::Kind::Nil) << opening;
        }
    });
}

TEST(JSONParserDepthTest, WhiteSpaceAndBareNamesAtEveryLevel)
{
    runOnSmallStack([] {
        const std::string text = repeat("[ { \"x\" , \"k\"\v:\f", deep / 20) + "[]" +
                                 repeat(" , \"y\" }\n]\r", deep / 20);
        EXPECT_TRUE(read(text).to_json() ==
                    repeat("[{\"k\":", deep / 20) + "[]" + repeat("}]", deep / 20));
    });
}

/// Much that is wide inside much that is deep: nothing is walked through more than once.
TEST(JSONParserDepthTest, ManyDeepOnesSideBySide)
{
    runOnSmallStack([] {
        std::string branch = repeat("[{\"k\":", 500) + "1" + repeat("}]", 500);
        const std::string wide = "[" + repeat(branch + ",", 200) + branch + "]";
        const std::string text = repeat("[", 1000) + wide + repeat("]", 1000);
        EXPECT_TRUE(read(text).to_json() == text);
    });
}

TEST(JSONParserNameTest, EveryByteAfterAName)
{
    std::map<int, std::string> special = {{':', "hash{a: array[]} /  / good"},
                                          {'}', "hash{} / []} / good"}};
    for (const int consumed : {9, 10, 11, 12, 13, 32, static_cast<int>(',')}) {
        special[consumed] = "nil / []} / good";
    }
    for (int byte = 0; byte < 256; ++byte) {
        const auto expected = special.find(byte);
        EXPECT_EQ(outcomeOf("{\"a\"" + byteText(byte) + "[]}"),
                  expected == special.end() ? "nil / " + byteText(byte) + "[]} / good"
                                            : expected->second)
            << byte;
    }
}

} // namespace
