#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

/// A text that grows at its end. Its bytes are written straight into place, which std::string
/// allows only one bounds check at a time.
class TextBuffer
{
public:
    TextBuffer() { grow(0); }
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    /// Where the next `count` bytes go. To be followed by advance() before anything else is
    /// written.
    char* room(std::size_t count)
    {
        if (static_cast<std::size_t>(m_end - m_next) < count) {
            grow(count);
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

    /// Hands the text out and leaves the buffer unusable.
    std::string take()
    {
        m_text.resize(static_cast<std::size_t>(m_next - m_text.data()));
        return std::move(m_text);
    }

private:
    void grow(std::size_t count)
    {
        const auto used = m_next ? static_cast<std::size_t>(m_next - m_text.data()) : 0;
        m_text.resize(std::max(m_text.capacity(), used + std::max(used, count)));
        m_next = m_text.data() + used;
        m_end = m_text.data() + m_text.size();
    }

    std::string m_text; ///< longer than the text: up to m_next it is written
    char* m_next = nullptr;
    char* m_end = nullptr;
};
