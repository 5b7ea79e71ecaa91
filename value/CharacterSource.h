#pragma once

#include <algorithm>
#include <cstddef>
#include <istream>
#include <limits>
#include <streambuf>
#include <string_view>

/// Reads the characters of an input stream, most of them straight from its buffer. It copies the
/// pointers of the buffer's get area and advances the copy. When the copy is used up, it calls the
/// stream's own peek() and get(). While leased, the buffer's own position is stale (m_begin); ours
/// is m_next. Before any call of the stream, and when the lease ends, the difference is written
/// back by gbump(). The stream's state, its exceptions and its position are then those that peek()
/// and get() alone would have left; only gcount() differs.
///
/// The stream is not owned. The stream, its buffer and its exception mask of all three bits must
/// stay while this exists. One thread at a time may use it.
class CharacterSource
{
public:
    /// Reads from `in`, which must outlive it.
    explicit CharacterSource(std::istream& in) noexcept : m_in(in) {}

    /// The stream. Its own functions may be called while there is no Lease.
    std::istream& stream() noexcept { return m_in; }

    /// Characters can be read while one of these exists. The outermost takes the position over from
    /// the stream, and its destructor hands it back, also when an exception is thrown.
    class Lease
    {
    public:
        /// Takes the position over, unless another Lease has it.
        explicit Lease(CharacterSource& source) noexcept
            : m_source(source.m_leased ? nullptr : &source)
        {
            if (m_source) {
                m_source->m_leased = true;
                m_source->takePosition();
            }
        }
        /// Not copied: the position is handed back once.
        Lease(const Lease&) = delete;
        /// Not assigned, for the same reason.
        Lease& operator=(const Lease&) = delete;
        /// Hands the position back.
        ~Lease()
        {
            if (m_source) {
                m_source->handPositionBack();
                m_source->m_leased = false;
            }
        }

    private:
        CharacterSource* m_source; ///< null in an inner one
    };

    /// The next character, left unread. Throws std::ios_base::failure when there is none, and
    /// passes on what the buffer throws; so do the next two.
    char peek() { return m_next != m_end ? *m_next : fromStream(&std::istream::peek); }

    /// The next character, consumed.
    char get() { return m_next != m_end ? *m_next++ : fromStream(&std::istream::get); }

    /// Consumes the character that was peeked.
    void skip() { static_cast<void>(get()); }

    /// The characters that can be read without the stream; may be none before the stream's end.
    /// Valid until the next call of another function.
    std::string_view atHand() const noexcept
    {
        return {m_next, static_cast<std::size_t>(m_end - m_next)};
    }

    /// Consumes the first `count` of the characters at hand.
    void skip(std::size_t count) noexcept { m_next += count; }

private:
    /// The get area of any buffer. Its functions are protected; a class derived from the buffer's
    /// may name them as members of itself, and apply them to any buffer.
    struct GetArea : std::streambuf
    {
        static constexpr auto next = &GetArea::gptr;
        static constexpr auto end = &GetArea::egptr;
        static constexpr auto advance = &GetArea::gbump;
    };

    /// Takes no characters if the stream is not good: its own functions then report the error.
    void takePosition() noexcept
    {
        if (m_in.good()) {
            constexpr std::ptrdiff_t longest = std::numeric_limits<int>::max(); // for gbump()
            const std::streambuf& buffer = *m_in.rdbuf();
            m_begin = m_next = (buffer.*GetArea::next)();
            m_end = m_next + std::min((buffer.*GetArea::end)() - m_next, longest);
        }
    }

    void handPositionBack() noexcept
    {
        if (m_next != m_begin) {
            (m_in.rdbuf()->*GetArea::advance)(static_cast<int>(m_next - m_begin));
        }
        m_begin = m_next = m_end = nullptr;
    }

    char fromStream(std::istream::int_type (std::istream::*read)())
    {
        handPositionBack();
        const auto c = static_cast<char>((m_in.*read)());
        takePosition();
        return c;
    }

    std::istream& m_in;
    bool m_leased = false;
    const char* m_begin = nullptr; ///< the buffer's own position, stale while leased
    const char* m_next = nullptr;  ///< our position
    const char* m_end = nullptr;
};
