#include "value/CharacterSource.h"
#include "tests/value/helpers/RandomDocument.h"
#include "tests/value/helpers/ReferenceReader.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"
#include "value/JSONParser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

// The position, the state and the exceptions that a read leaves the stream with, whatever buffer
// the stream has: those of a reader that takes each character with peek() and get().

namespace {

/// A source over a text, through one kind of buffer.
class CharacterSourceBufferTest : public testing::TestWithParam<BufferKind>
{
protected:
    CharacterSourceBufferTest() : m_in(&m_buffer)
    {
        m_in.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
    }

    static constexpr std::string_view text = "0123456789\xFF";

    MemoryBuffer m_buffer{text, GetParam()};
    std::istream m_in;
    CharacterSource m_source{m_in};
};

TEST_P(CharacterSourceBufferTest, GivesEachCharacterInItsTurn)
{
    const CharacterSource::Lease lease(m_source);
    for (const char c : text) {
        EXPECT_EQ(m_source.peek(), c);
        EXPECT_EQ(m_source.get(), c);
    }
    EXPECT_TRUE(m_source.atHand().empty());
    EXPECT_ANY_THROW(m_source.peek());
    EXPECT_EQ(m_buffer.consumed(), text.size());
}

TEST_P(CharacterSourceBufferTest, CharactersAtHandAreThoseThatComeNext)
{
    const CharacterSource::Lease lease(m_source);
    std::string taken;
    while (taken.size() < text.size()) {
        const std::string_view ready = m_source.atHand();
        taken += ready;
        m_source.skip(ready.size());
        if (ready.empty()) {
            taken += m_source.get();
        }
    }
    EXPECT_EQ(taken, text);
}

TEST_P(CharacterSourceBufferTest, TheOutermostLeaseHandsThePositionBack)
{
    {
        const CharacterSource::Lease lease(m_source);
        m_source.skip();
        {
            const CharacterSource::Lease inner(m_source);
            EXPECT_EQ(m_source.get(), '1');
        }
        EXPECT_EQ(m_source.get(), '2');
    }
    EXPECT_EQ(m_buffer.consumed(), 3U);
    EXPECT_EQ(m_in.get(), '3');
    const CharacterSource::Lease later(m_source);
    EXPECT_EQ(m_source.peek(), '4');
}

TEST_P(CharacterSourceBufferTest, AnExceptionHandsThePositionBackToo)
{
    const auto fail = [&] {
        const CharacterSource::Lease lease(m_source);
        m_source.skip();
        m_source.skip();
        throw std::runtime_error("in the middle");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(m_buffer.consumed(), 2U);
    EXPECT_EQ(m_in.get(), '2');
}

TEST_P(CharacterSourceBufferTest, TakesNothingFromAStreamThatHasFailed)
{
    EXPECT_THROW(m_in.setstate(std::ios_base::failbit), std::ios_base::failure);
    const CharacterSource::Lease lease(m_source);
    EXPECT_TRUE(m_source.atHand().empty());
    EXPECT_THROW(m_source.peek(), std::ios_base::failure);
    EXPECT_EQ(m_buffer.consumed(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Buffers, CharacterSourceBufferTest, testing::ValuesIn(bufferKinds),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CharacterSourceTest, ReadsNoFurtherOnceTheStreamHasFailed)
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

/// A device that fails in the middle: the stream is bad, and what was read of the value is lost.
TEST(CharacterSourceTest, GivesNilWhenTheBufferThrows)
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

/// A line of input is a document: nothing behind its end is asked for, which might not come.
TEST(CharacterSourceTest, AsksForNoCharacterBehindTheValue)
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

class CharacterSourceComparisonTest : public testing::TestWithParam<BufferKind>
{
protected:
    /// Whether the readers agree on `text` whole, or cut off anywhere too.
    static bool agree(const std::string& text)
    {
        const std::string difference = readerDifference(text, GetParam());
        EXPECT_EQ(difference, "");
        return difference.empty();
    }
    static bool agreeCutOff(const std::string& text)
    {
        for (std::size_t length = 0; length <= text.size(); ++length) {
            if (!agree(text.substr(0, length))) {
                return false;
            }
        }
        return true;
    }
};

TEST_P(CharacterSourceComparisonTest, AgreesOnEveryByteAfterEveryBeginning)
{
    for (const std::string beginning :
         {"",  "[",  "[1",  "{",  "{\"a\"", "{\"a\":", "\"", "\"\\", "\"\\u", "-", "0",
          "1", "1.", "1.5", "1e", "1e+",    "1e5",     "t",  "n",    " ",     "[]"}) {
        for (int byte = 0; byte < 256; ++byte) {
            ASSERT_TRUE(agree(beginning + static_cast<char>(byte)));
        }
    }
}

TEST_P(CharacterSourceComparisonTest, AgreesOnRandomDocuments)
{
    RandomDocument random(20061);
    for (int count = 0; count < 1000; ++count) {
        const std::string strict = random.strict();
        const std::string odd = random.odd();
        ASSERT_TRUE(agree(strict));
        ASSERT_TRUE(agree(odd));
        ASSERT_TRUE(agree(random.damaged(strict)));
        ASSERT_TRUE(agree(random.damaged(odd)));
        ASSERT_TRUE(agree(random.pieces()));
    }
}

TEST_P(CharacterSourceComparisonTest, AgreesOnRandomDocumentsCutOffAnywhere)
{
    RandomDocument random(7);
    for (int count = 0; count < 40; ++count) {
        ASSERT_TRUE(agreeCutOff(random.odd()));
    }
}

INSTANTIATE_TEST_SUITE_P(Buffers, CharacterSourceComparisonTest, testing::ValuesIn(bufferKinds),
                         [](const auto& row) { return std::string(row.param.name); });

/// The random documents are worth something: whole ones mostly read, damaged ones mostly not.
TEST(RandomDocumentTest, MakesGoodAndBadDocuments)
{
    RandomDocument random(20061);
    int oddRead = 0;
    int damagedRead = 0;
    for (int count = 0; count < 1000; ++count) {
        const ReadOutcome strict = readJSON(random.strict() + " ");
        EXPECT_EQ(stateText(strict.state), "good");
        const std::string odd = "[" + random.odd() + "]";
        oddRead += readJSON(odd).value.kind() == Value::Kind::Array ? 1 : 0;
        damagedRead += readJSON(random.damaged(odd)).value.kind() == Value::Kind::Array ? 1 : 0;
    }
    EXPECT_GT(oddRead, 600);
    EXPECT_GT(damagedRead, 100);
    EXPECT_LT(damagedRead, 800);
}

/// The comparison itself can tell readers apart.
TEST(CharacterSourceComparisonTest, TellsWhatDiffers)
{
    EXPECT_FALSE(identical(1LL, 1));
    EXPECT_FALSE(identical(nullptr, Value()));
    EXPECT_FALSE(identical(0.0, -0.0));
    EXPECT_FALSE(identical(Value::Array{1, 2}, Value::Array{1}));
    EXPECT_FALSE(identical(Value::Array{1, 2}, Value::Array{1, 3}));
    EXPECT_FALSE(identical(Value::Hash{{"a", 1}}, Value::Hash{{"b", 1}}));
    EXPECT_FALSE(identical(Value::Hash{{"a", 1}}, Value::Hash{{"a", 2}}));
    EXPECT_FALSE(identical("a", "b"));
    EXPECT_TRUE(
        identical(Value::Array{Value::Hash{{"a", 0.5}}}, Value::Array{Value::Hash{{"a", 0.5}}}));
}

} // namespace
