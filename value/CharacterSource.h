#pragma once

#include <algorithm>
#include <istream>
#include <limits>
#include <streambuf>
#include <string_view>

/// The characters of an input stream, most of them straight from the stream's buffer. Whenever the
/// buffer has nothing at hand, or the stream is not good, the stream's own peek() and get() do the
/// work. So the stream's state, its exceptions and its position are at all times those that reading
/// through peek() and get() alone would leave; gcount() is not.
///
/// The stream, its buffer and its exception mask of all three bits must stay while this exists.
class CharacterSource
{
public:
    explicit CharacterSource(std::istream& in) noexcept
        : m_in(in), m_state(in), m_buffer(in.rdbuf())
    {}

    std::istream& stream() noexcept { return m_in; }

    /// The next character, left unread. Throws std::ios_base::failure when there is none, and
    /// passes on what the buffer throws; so do the next two.
    char peek()
    {
        const std::string_view ready = buffered();
        return ready.empty() ? static_cast<char>(m_in.peek()) : ready.front();
    }

    /// The next character, consumed.
    char get()
    {
        const std::string_view ready = buffered();
        if (ready.empty()) {
            return static_cast<char>(m_in.get());
        }
        const char c = ready.front();
        skip(1);
        return c;
    }

    /// Consumes the character that was peeked.
    void skip() { static_cast<void>(get()); }

    /// The characters at hand, up to as many as skip(count) can take; none if the stream is not
    /// good. Valid until the next call of another function.
    std::string_view buffered() const noexcept
    {
        return m_state.good() ? GetArea::of(*m_buffer) : std::string_view();
    }

    /// Consumes the first `count` of the characters at hand.
    void skip(std::size_t count) noexcept { GetArea::consume(*m_buffer, static_cast<int>(count)); }

private:
    /// The get area of any buffer. Its functions are protected; a class derived from the buffer's
    /// may name them as members of itself, and apply them to any buffer.
    class GetArea : public std::streambuf
    {
    public:
        static std::string_view of(const std::streambuf& buffer) noexcept
        {
            constexpr std::ptrdiff_t longest = std::numeric_limits<int>::max(); // for gbump()
            const char* const next = (buffer.*&GetArea::gptr)();
            const char* const end = (buffer.*&GetArea::egptr)();
            return {next, static_cast<std::size_t>(std::min(end - next, longest))};
        }
        static void consume(std::streambuf& buffer, int count) noexcept
        {
            (buffer.*&GetArea::gbump)(count);
        }
    };

    std::istream& m_in;
    const std::ios& m_state; ///< m_in, past the look-up of its virtual base
    std::streambuf* m_buffer;
};
