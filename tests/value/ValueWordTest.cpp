#include "tests/value/MemoryBuffer.h"
#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>

#include <sstream>

// A word of a stream as a string value.

namespace {

using namespace std::string_literals;

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
