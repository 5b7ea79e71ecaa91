#include "value/TextBuffer.h"

#include "value/Value.h"

#include <gtest/gtest.h>

#include <array>

// A text is the same however it falls upon the buffer's blocks.

namespace {

/// Different at every place, so that a piece lost or in the wrong place shows.
std::string pattern(std::size_t length)
{
    std::string text;
    for (std::size_t i = 0; text.size() < length; ++i) {
        text += std::to_string(i) + ' ';
    }
    text.resize(length);
    return text;
}

constexpr std::array<std::size_t, 8> lengths = {1023, 1024, 1025, 5119, 5120, 5121, 65536, 300000};
constexpr std::array<std::size_t, 4> pieces = {1, 7, 1000, 70000};

TEST(TextBufferTest, IsEmptyAtFirst)
{
    EXPECT_EQ(TextBuffer().text(), "");
}

TEST(TextBufferTest, KeepsTextsAroundTheSizesOfItsBlocks)
{
    for (const std::size_t length : lengths) {
        const std::string expected = pattern(length);
        for (const std::size_t piece : pieces) {
            TextBuffer buffer;
            for (std::size_t at = 0; at < length; at += piece) {
                buffer.append(std::string_view(expected).substr(at, piece));
            }
            EXPECT_EQ(buffer.text(), expected) << length << " bytes in pieces of " << piece;
        }
    }
}

TEST(TextBufferTest, LeavesOutRoomThatWasNotUsed)
{
    TextBuffer buffer;
    buffer.append("before");
    *buffer.room(100000) = '-';
    buffer.advance(buffer.room(0) + 1);
    buffer.append("after");
    EXPECT_EQ(buffer.text(), "before-after");
}

TEST(TextBufferTest, HoldsStringsWhoseEscapesDoNotFitTheRoomLeft)
{
    for (std::size_t before = 1000; before < 1030; ++before) {
        const std::string plain = pattern(before);
        const std::string controls(200, '\x1F');
        std::string text = plain;
        text.append(controls).append(plain);
        std::string expected = '"' + plain;
        for (std::size_t i = 0; i < controls.size(); ++i) {
            expected += "\\u001f";
        }
        expected.append(plain).append("\"");
        EXPECT_EQ(Value(text).to_json(), expected) << before;
    }
}

} // namespace
