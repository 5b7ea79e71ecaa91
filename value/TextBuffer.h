#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A text that grows at its end. Its bytes are written straight into place, which std::string
/// allows only one bounds check at a time, and nothing is copied or filled with zeros to make room:
/// a long text lies in blocks until it is complete.
class TextBuffer
{
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    /// Where the next `count` bytes go. To be followed by advance() before anything else is
    /// written.
    char* room(std::size_t count)
    {
        if (static_cast<std::size_t>(m_end - m_next) < count) {
            addBlock(count);
        }
        return m_next;
    }
    /// The text goes up to `end`, which lies in the room asked for last.
    void advance(char* end) noexcept { m_next = end; }

    void append(char c)
    {
        *room(1) = c;
        ++m_next;
    }
    void append(std::string_view bytes) { m_next += bytes.copy(room(bytes.size()), bytes.size()); }

    std::string text() const
    {
        std::string text;
        text.reserve(m_complete + written());
        const char* begin = m_first.data();
        for (const Block& block : m_blocks) {
            text.append(begin, block.before);
            begin = block.bytes.get();
        }
        return text.append(begin, written());
    }

private:
    struct Block
    {
        std::unique_ptr<char[]> bytes; // NOLINT(modernize-avoid-c-arrays): not filled with zeros
        std::size_t before;            ///< bytes written to the block before this one
    };

    std::size_t written() const noexcept { return static_cast<std::size_t>(m_next - m_begin); }

    void addBlock(std::size_t count)
    {
        constexpr std::size_t usual = 65536;
        const std::size_t size = std::max(count, std::min(usual, 4 * (m_complete + written())));
        m_blocks.push_back({std::unique_ptr<char[]>(new char[size]), written()});
        m_complete += written();
        m_begin = m_next = m_blocks.back().bytes.get();
        m_end = m_begin + size;
    }

    std::array<char, 1024> m_first; ///< the only block of a short text
    std::vector<Block> m_blocks;
    std::size_t m_complete = 0; ///< bytes in all blocks but the last
    char* m_begin = m_first.data();
    char* m_next = m_begin;
    char* m_end = m_begin + m_first.size();
};
