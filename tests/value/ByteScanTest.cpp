#include "value/ByteScan.h"

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

/// `isFound` tells of one byte what `scan` looks for in a text: every byte is tried at every place.
template <typename Scan, typename IsFound>
void expectFirst(Scan scan, IsFound isFound)
{
    for (const char filler : fillers) {
        for (std::size_t length = 0; length <= 25; ++length) {
            const std::string plain(length, isFound(filler) ? 'a' : filler);
            EXPECT_EQ(scan(plain), length);
            for (std::size_t position = 0; position < length; ++position) {
                for (int byte = 0; byte < 256; ++byte) {
                    std::string text = plain;
                    text[position] = static_cast<char>(byte);
                    const bool found = isFound(text[position]);
                    text.back() = '"';
                    const std::size_t expected =
                        found || position == length - 1 ? position : length - 1;
                    ASSERT_EQ(scan(text), expected)
                        << "length " << length << ", byte " << byte << " among " << +filler;
                }
            }
        }
    }
}

TEST(ByteScanTest, FindTheFirstQuoteOrBackslashWhereverItIs)
{
    expectFirst(ByteScan::beforeQuoteOrBackslash, [](char c) { return c == '"' || c == '\\'; });
}

TEST(ByteScanTest, FindTheFirstByteThatIsEscapedWhereverItIs)
{
    expectFirst(ByteScan::beforeEscape, isEscaped);
}

} // namespace
