#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>

#include <set>

// What a document reads as, how much of it is left, and in what state the stream is then.

namespace {

class JSONReaderTest : public testing::TestWithParam<ReaderCase>
{};

TEST_P(JSONReaderTest, Reads)
{
    const ReadOutcome outcome = readJSON(GetParam().input);
    EXPECT_EQ(describe(outcome.value), GetParam().result);
    EXPECT_EQ(outcome.unread, GetParam().unread);
    EXPECT_EQ(stateText(outcome.state), GetParam().state);
    EXPECT_EQ(outcome.mask, std::ios_base::goodbit);
}

INSTANTIATE_TEST_SUITE_P(Documents, JSONReaderTest, testing::ValuesIn(readerCases()),
                         [](const auto& row) { return row.param.name; });

TEST(JSONReaderCasesTest, AreOfEveryKind)
{
    std::set<Value::Kind> kinds;
    for (const ReaderCase& row : readerCases()) {
        kinds.insert(readJSON(row.input).value.kind());
    }
    EXPECT_EQ(kinds,
              (std::set<Value::Kind>{Value::Kind::Nil, Value::Kind::Boolean, Value::Kind::Long,
                                     Value::Kind::Real, Value::Kind::String, Value::Kind::Array,
                                     Value::Kind::Hash}));
}

} // namespace
