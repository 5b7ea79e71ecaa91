#include "value/PlainBytes.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

// Looking at eight bytes together finds what looking at each of them finds.

namespace {

/// Bytes whose arithmetic could borrow from their neighbours'.
constexpr std::array<char, 8> fillers = {'\0', '\x01', ' ', '!', '#', '\x7F', '\x80', '\xFF'};

bool isEscaped(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 32 || c == '"' || c == '\\';
}

TEST(PlainBytesTest, FindTheFirstQuoteOrBackslashWhereverItIs)
{
    for (const char filler : fillers) {
        for (std::size_t length = 0; length <= 25; ++length) {
            EXPECT_EQ(PlainBytes::beforeQuoteOrBackslash(std::string(length, filler)), length);
            for (std::size_t position = 0; position < length; ++position) {
                for (const char found : {'"', '\\'}) {
                    std::string text(length, filler);
                    text[position] = found;
                    text.back() = '"';
                    EXPECT_EQ(PlainBytes::beforeQuoteOrBackslash(text), position)
                        << "length " << length << ", byte " << +filler;
                }
            }
        }
    }
}

TEST(PlainBytesTest, CopyUpToTheFirstByteThatIsEscaped)
{
    for (const char filler : fillers) {
        for (std::size_t position = 0; position < PlainBytes::width; ++position) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string bytes(PlainBytes::width, filler);
                bytes[position] = static_cast<char>(byte);
                std::size_t expected = 0;
                while (expected < bytes.size() && !isEscaped(bytes[expected])) {
                    ++expected;
                }
                std::string copy(PlainBytes::width, '?');
                EXPECT_EQ(PlainBytes::copyUpToEscape(copy.data(), bytes.data()), expected)
                    << "byte " << byte << " at " << position << " among " << +filler;
                EXPECT_EQ(copy, bytes);
            }
        }
    }
}

} // namespace
