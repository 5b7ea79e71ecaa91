#include "tests/value/MemoryBuffer.h"
#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ValueTestHelpers.h"
#include "value/JSONParser.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <thread>
#include <vector>

// What a read does to the stream that it is given, beyond consuming characters.

namespace {

constexpr auto allBits = std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit;

/// A read on a stream that is not good throws, and leaves the mask at all bits.
void expectRefused(std::istream& in)
{
    const std::ios_base::iostate state = in.rdstate();
    EXPECT_THROW(Value::parse_json(in), std::ios_base::failure);
    EXPECT_EQ(in.exceptions(), allBits);
    EXPECT_EQ(stateText(in.rdstate()), stateText(state));
}

TEST(JSONReaderStreamTest, RefusesAStreamAtItsEnd)
{
    std::istringstream in("12");
    in.setstate(std::ios_base::eofbit);
    expectRefused(in);
    EXPECT_EQ(drain(in), "12");
}

TEST(JSONReaderStreamTest, RefusesAFailedStream)
{
    std::istringstream in("12");
    in.setstate(std::ios_base::failbit);
    expectRefused(in);
    EXPECT_EQ(drain(in), "12");
}

TEST(JSONReaderStreamTest, ReadsNoFurtherOnceTheStreamHasFailed)
{
    const auto expectFailure = [](auto function) {
        std::istringstream in("[1]");
        {
            JSONParser parser(in);
            EXPECT_THROW(in.setstate(std::ios_base::failbit), std::ios_base::failure);
            EXPECT_THROW(function(parser), std::ios_base::failure);
        }
        EXPECT_EQ(drain(in), "[1]") << "though its buffer has characters";
    };
    expectFailure([](JSONParser& parser) { parser.getValue(); });
    expectFailure([](JSONParser& parser) { parser.getArray(); });
    expectFailure([](JSONParser& parser) { parser.getString(); });
    expectFailure([](JSONParser& parser) { parser.getNumber(); });
    expectFailure([](JSONParser& parser) { parser.peekChar(); });
    expectFailure([](JSONParser& parser) { parser.getChar(); });
}

TEST(JSONReaderStreamTest, RefusesAStreamWithoutABuffer)
{
    std::istream in(nullptr);
    expectRefused(in);
}

TEST(JSONReaderStreamTest, ReadsTheEmptyStreamThatDoesNotKnowYet)
{
    std::istringstream in;
    EXPECT_EQ(describe(Value::parse_json(in)), "nil");
    EXPECT_EQ(stateText(in.rdstate()), "eof fail");
    EXPECT_EQ(in.exceptions(), std::ios_base::goodbit);
    expectRefused(in);
}

TEST(JSONReaderStreamTest, ReadsOneDocumentAfterTheOther)
{
    std::istringstream in("{\"a\":1}[2] 3 true");
    EXPECT_EQ(describe(Value::parse_json(in)), "hash{a: long 1}");
    EXPECT_EQ(describe(Value::parse_json(in)), "array[long 2]");
    EXPECT_EQ(describe(Value::parse_json(in)), "long 3");
    EXPECT_EQ(describe(Value::parse_json(in)), "boolean true");
    EXPECT_EQ(stateText(in.rdstate()), "good");
    EXPECT_EQ(describe(Value::parse_json(in)), "nil");
}

TEST(JSONReaderStreamTest, StartsWhereTheStreamIs)
{
    std::istringstream in("word 12 rest");
    std::string word;
    in >> word;
    EXPECT_EQ(describe(Value::parse_json(in)), "long 12");
    in >> word;
    EXPECT_EQ(word, "rest");
}

TEST(JSONReaderStreamTest, PutsAMaskBackWhoseBitsTheReadDoesNotSet)
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

TEST(JSONReaderStreamDeathTest, EndsTheProgramWhenTheMaskHasABitThatTheReadSets)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::istringstream in("12");
    in.exceptions(std::ios_base::eofbit);
    EXPECT_DEATH(Value::parse_json(in), "");
}

/// A device that fails in the middle: the stream is bad, and what was read of the value is lost.
TEST(JSONReaderStreamTest, GivesNilWhenTheBufferThrows)
{
    for (const BufferKind& kind : bufferKinds) {
        if (kind.end == BufferKind::End::Quiet) {
            continue;
        }
        for (const char* const text : {"", " ", "[", "[1", "[1,", "\"ab", "{\"a\":", "tr", "-"}) {
            MemoryBuffer buffer(text, kind);
            std::istream in(&buffer);
            EXPECT_EQ(describe(Value::parse_json(in)), "nil") << kind << " " << text;
            EXPECT_TRUE(in.bad()) << kind << " " << text;
            EXPECT_EQ(in.exceptions(), std::ios_base::goodbit) << kind << " " << text;
        }
    }
}

/// The look-ahead after a number forgives the stream's own failure, but not a device's.
TEST(JSONReaderStreamTest, TheLookAheadAfterANumberForgivesOnlyAStreamFailure)
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

TEST(JSONReaderStreamTest, LeavesTheFormatFlagsAlone)
{
    std::istringstream in(" \n[ 1 , 2 ] ");
    in >> std::noskipws >> std::hex;
    in.width(3);
    const std::ios_base::fmtflags flags = in.flags();
    EXPECT_EQ(describe(Value::parse_json(in)), "array[long 1, long 2]");
    EXPECT_EQ(in.flags(), flags);
    EXPECT_EQ(in.width(), 3);
}

TEST(JSONReaderStreamTest, ReadsTheSameInAnyLocale)
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
TEST(JSONReaderStreamTest, FlushesTheTiedStream)
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

/// A line of input is a document: nothing behind its end is asked for, which might not come.
TEST(JSONReaderStreamTest, AsksForNoCharacterBehindTheValue)
{
    for (const char* const text :
         {"[1]", "{}", "{\"a\"}", "\"s\"", "true", "false", "null", " [ ]"}) {
        for (const BufferKind& kind : bufferKinds) {
            MemoryBuffer buffer(text, kind);
            std::istream in(&buffer);
            Value::parse_json(in);
            EXPECT_EQ(stateText(in.rdstate()), "good") << kind << " " << text;
        }
    }
}

/// Reads on different streams need no lock.
TEST(JSONReaderStreamTest, ReadsDifferentStreamsOnDifferentThreads)
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
