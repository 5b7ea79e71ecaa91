#include "tests/value/ReaderComparison.h"
#include "tests/value/RandomDocument.h"
#include "tests/value/ReaderTestHelpers.h"

#include <gtest/gtest.h>

// The reader next to the reference reader, which takes each character with peek() and get(), over
// buffers of every kind.

namespace {

class ReaderComparisonTest : public testing::TestWithParam<BufferKind>
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

TEST_P(ReaderComparisonTest, AgreesOnEveryCaseCutOffAnywhere)
{
    for (const auto* const cases : {&readerCases(), &numberBoundCases()}) {
        for (const ReaderCase& row : *cases) {
            EXPECT_TRUE(agreeCutOff(row.input)) << row.name;
            EXPECT_TRUE(agreeCutOff("[" + row.input + ",{\"k\":" + row.input)) << row.name;
            EXPECT_TRUE(agree("{\"k\":" + row.input + ", \"l\"}")) << row.name;
        }
    }
}

TEST_P(ReaderComparisonTest, AgreesOnEveryByteAfterEveryBeginning)
{
    for (const std::string beginning :
         {"",  "[",  "[1",  "{",  "{\"a\"", "{\"a\":", "\"", "\"\\", "\"\\u", "-", "0",
          "1", "1.", "1.5", "1e", "1e+",    "1e5",     "t",  "n",    " ",     "[]"}) {
        for (int byte = 0; byte < 256; ++byte) {
            ASSERT_TRUE(agree(beginning + static_cast<char>(byte)));
        }
    }
}

TEST_P(ReaderComparisonTest, AgreesOnRandomDocuments)
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

TEST_P(ReaderComparisonTest, AgreesOnRandomDocumentsCutOffAnywhere)
{
    RandomDocument random(7);
    for (int count = 0; count < 40; ++count) {
        ASSERT_TRUE(agreeCutOff(random.odd()));
    }
}

INSTANTIATE_TEST_SUITE_P(Buffers, ReaderComparisonTest, testing::ValuesIn(bufferKinds),
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
TEST(ReaderComparisonTest, TellsWhatDiffers)
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
