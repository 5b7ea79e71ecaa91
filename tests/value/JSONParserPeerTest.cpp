#include "tests/value/helpers/RandomDocument.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string>

// The reader and the writer next to a JSON library of others: the same trees where a document
// breaks no rule and meets none of this reader's own, and a table of the documents where the two
// differ.

namespace {

using Peer = nlohmann::json;

/// Whether two doubles differ by rounding only: this reader's formula rounds up to four times.
bool close(double left, double right)
{
    return left == right || std::abs(left - right) <= std::abs(right) * 1e-15;
}

bool sameTree(const Value& value, const Peer& peer)
{
    switch (value.kind()) {
    case Value::Kind::Nil:
        return peer.is_null();
    case Value::Kind::Boolean:
        return peer.is_boolean() && value.to_b() == peer.get<bool>();
    case Value::Kind::Long:
        return peer.is_number_integer() && value.to_l() == peer.get<long long>();
    case Value::Kind::Real:
        return peer.is_number_float() && close(value.to_f(), peer.get<double>());
    case Value::Kind::String:
        return peer.is_string() && value.to_s() == peer.get<std::string>();
    case Value::Kind::Array: {
        const auto& array = value.holder().get<Value::Array>();
        return peer.is_array() &&
               std::equal(array.begin(), array.end(), peer.begin(), peer.end(), sameTree);
    }
    case Value::Kind::Hash: {
        const auto& hash = value.holder().get<Value::Hash>();
        return peer.is_object() && hash.size() == peer.size() &&
               std::all_of(hash.begin(), hash.end(), [&](const auto& entry) {
                   const auto found = peer.find(entry.first);
                   return found != peer.end() && sameTree(entry.second, *found);
               });
    }
    default:
        return false;
    }
}

/// Whether the document has more digits in a row than a long has.
bool hasManyDigits(const std::string& document)
{
    std::size_t run = 0;
    return std::any_of(document.begin(), document.end(), [&](char c) {
        run = c >= '0' && c <= '9' ? run + 1 : 0;
        return run > 18;
    });
}

/// Whether a real is written as a whole number with a fraction of zero, which reads as a long here.
bool hasWholeReal(const std::string& document)
{
    for (std::size_t at = document.find(".0"); at != std::string::npos;
         at = document.find(".0", at + 1)) {
        if (at + 2 == document.size() || document[at + 2] < '0' || document[at + 2] > '9') {
            return true;
        }
    }
    return false;
}

TEST(JSONParserPeerTest, ReadsTheSameTrees)
{
    RandomDocument random(97);
    for (int count = 0; count < 20000; ++count) {
        const std::string document = random.strict();
        const Value value = readJSON(document).value;
        ASSERT_TRUE(sameTree(value, Peer::parse(document))) << document;
    }
}

TEST(JSONParserPeerTest, WritesWhatThePeerReadsAsTheSameTree)
{
    RandomDocument random(98);
    for (int count = 0; count < 20000; ++count) {
        const std::string written = readJSON(random.strict()).value.to_json();
        // Six digits are kept of a real, and that is what both read now.
        ASSERT_TRUE(sameTree(readJSON(written).value, Peer::parse(written))) << written;
    }
}

TEST(JSONParserPeerTest, ReadsWhatThePeerWrote)
{
    RandomDocument random(99);
    int compared = 0;
    for (int count = 0; count < 20000; ++count) {
        const Peer peer = Peer::parse(random.strict());
        if (hasWholeReal(peer.dump())) {
            continue;
        }
        ++compared;
        for (const int indentation : {-1, 2}) {
            for (const bool asciiOnly : {false, true}) {
                const std::string written = peer.dump(indentation, ' ', asciiOnly);
                ASSERT_TRUE(sameTree(readJSON(written).value, peer)) << written;
            }
        }
    }
    EXPECT_GT(compared, 15000);
}

/// This reader accepts more than the peer, but for numbers that are too large, never less.
TEST(JSONParserPeerTest, ReadsWhateverThePeerReads)
{
    RandomDocument random(100);
    int bothRead = 0;
    for (int count = 0; count < 20000; ++count) {
        const std::string document = random.damaged("[" + random.strict() + "]");
        const Peer peer = Peer::parse(document, nullptr, false);
        if (peer.is_discarded() || !peer.is_array() || hasManyDigits(document)) {
            continue;
        }
        ++bothRead;
        const Value value = readJSON(document).value;
        ASSERT_EQ(value.kind(), Value::Kind::Array) << document;
    }
    EXPECT_GT(bothRead, 1000);
}

struct DifferenceCase
{
    const char* name;
    std::string document;
    const char* value; ///< as describe() tells it
    const char* peer;  ///< what the peer makes of it, as JSON; "error" if nothing
};

std::ostream& operator<<(std::ostream& os, const DifferenceCase& row)
{
    return os << row.document;
}

class JSONParserDifferenceTest : public testing::TestWithParam<DifferenceCase>
{};

TEST_P(JSONParserDifferenceTest, IsAsStated)
{
    const Peer peer = Peer::parse(GetParam().document, nullptr, false);
    EXPECT_EQ(describe(readJSON(GetParam().document).value), GetParam().value);
    EXPECT_EQ(peer.is_discarded() ? "error" : peer.dump(), GetParam().peer);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(OddRules, JSONParserDifferenceTest, testing::Values(
    //             name                  document                     this reader            the peer
    DifferenceCase{"BareName",           R"({"a"})",                  "hash{}",              "error"},
    DifferenceCase{"BareNameFirst",      R"({"a","b":1})",            "hash{b: long 1}",     "error"},
    DifferenceCase{"WholeFraction",      "[1.0]",                     "array[long 1]",       "[1.0]"},
    DifferenceCase{"ZeroExponent",       "[5e0]",                     "array[long 5]",       "[5.0]"},
    DifferenceCase{"MinusZero",          "[-0.0]",                    "array[long 0]",       "[-0.0]"},
    DifferenceCase{"LeadingZero",        "01",                        "long 0",              "error"},
    DifferenceCase{"TextBehind",         "true false",                "boolean true",        "error"},
    DifferenceCase{"CommaBehind",        "[],",                       "array[]",             "error"},
    DifferenceCase{"VerticalTab",        "\v1",                       "long 1",              "error"},
    DifferenceCase{"FormFeed",           "[1\f]",                     "array[long 1]",       "error"},
    DifferenceCase{"RawControl",         "\"\n\"",                    "string \n",           "error"},
    DifferenceCase{"MalformedUTF8",      "\"\xFF\"",                  "string \xFF",         "error"},
    DifferenceCase{"LowSurrogate",       R"("\ude00")",               "string \xED\xB8\x80", "error"},
    DifferenceCase{"AboveLargest",       "9223372036854775808",       "nil",                 "9223372036854775808"},
    DifferenceCase{"LargeReal",          "18446744073709551616.5",    "nil",                 "1.8446744073709552e+19"},
    DifferenceCase{"ByteOrderMark",      "\xEF\xBB\xBF" "1",          "nil",                 "1"},
    DifferenceCase{"Overflow",           "[1e999]",                   "array[real inf]",     "error"},
    DifferenceCase{"LeastAndHalf",       "-9223372036854775808.5",    "real 9223372036854775808.000000", "-9.223372036854776e+18"},
    DifferenceCase{"Empty",              "",                          "nil",                 "error"},
    DifferenceCase{"Bad",                "[1,]",                      "nil",                 "error"}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

} // namespace
