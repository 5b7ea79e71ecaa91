#include "tests/support/CountedNew.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

// Long texts take memory in proportion to their length, whatever characters they have.

namespace {

/// Where the text stands in the value.
enum class Place
{
    String,
    Key,
    ManyStrings ///< the text cut into lines of 80 characters, each a string of an array
};

struct Characters
{
    const char* name;
    std::string unit; ///< The text is made of repetitions of this.
};

struct Texts
{
    Characters characters;
    std::size_t length;
    Place place;
};

std::ostream& operator<<(std::ostream& os, const Texts& row)
{
    return os << row.characters.name << ' ' << row.length;
}

std::string repeated(const std::string& unit, std::size_t length)
{
    std::string text;
    while (text.size() < length) {
        text += unit;
    }
    text.resize(length);
    return text;
}

Value valueOf(const std::string& text, Place place)
{
    switch (place) {
    case Place::String:
        return text;
    case Place::Key:
        return Value::Hash{{text, 1LL}};
    default:
        Value::Array lines;
        for (std::size_t at = 0; at < text.size(); at += 80) {
            lines.emplace_back(text.substr(at, 80));
        }
        return lines;
    }
}

class TextMemoryTest : public NeedsCountedNew, public testing::WithParamInterface<Texts>
{
protected:
    /// Runs `work`, which returns the length of its output.
    template <typename Work>
    static void expectLinear(const char* name, std::size_t input, Work work)
    {
        const std::size_t before = Allocations::current().bytes;
        const long heldBefore = Allocations::unfreedBytes();
        Allocations::takePeak();
        const std::size_t output = work();
        const std::size_t larger = std::max(input, output);
        const auto peak = static_cast<std::size_t>(Allocations::takePeak() - heldBefore);
        EXPECT_LE(peak, 10 * larger) << name;
        EXPECT_LE(Allocations::current().bytes - before, 20 * larger) << name;
        EXPECT_GE(peak, output / 2) << name << ": nothing was counted";
    }
};

TEST_P(TextMemoryTest, IsLinear)
{
    const std::string text = repeated(GetParam().characters.unit, GetParam().length);
    const Value value = valueOf(text, GetParam().place);
    const std::string json = value.to_json();

    expectLinear("to_json", text.size(), [&] {
        const std::string made = value.to_json();
        return made.size();
    });
    expectLinear("to_s", text.size(), [&] {
        const std::string made = value.to_s();
        return made.size();
    });
    std::istringstream in(json);
    Value read;
    expectLinear("parse_json", json.size(), [&] {
        read = Value::parse_json(in);
        return text.size();
    });
    EXPECT_EQ(read.to_s(), value.to_s());
    expectLinear("parse", text.size(), [&] {
        const Value made = Value::parse(text);
        return made.to_s().size();
    });
}

std::vector<Texts> allTexts()
{
    const std::vector<Characters> all = {
        {"LineEnds", "\n"},
        {"ControlCharacters", "\x1f"},
        {"Quotes", "\""},
        {"Plain", "a"},
        {"Digits", "7"},
        {"EverySecond", "a\n"},
        {"EverySecondControl", "\x01z"},
        {"OneInEach80", std::string(79, 'x') + '\n'},
        {"HighBytes", "\xC3\xA9"},
    };
    std::vector<Texts> rows;
    for (const Characters& characters : all) {
        for (const std::size_t length : {10'000U, 100'000U, 2'000'000U}) {
            for (const Place place : {Place::String, Place::Key, Place::ManyStrings}) {
                rows.push_back({characters, length, place});
            }
        }
    }
    return rows;
}

std::string nameOf(const testing::TestParamInfo<Texts>& row)
{
    const char* const places[] = {"String", "Key", "ManyStrings"};
    return std::string(row.param.characters.name) + std::to_string(row.param.length) +
           places[static_cast<int>(row.param.place)];
}

INSTANTIATE_TEST_SUITE_P(Texts, TextMemoryTest, testing::ValuesIn(allTexts()), nameOf);

} // namespace
