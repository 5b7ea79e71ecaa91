#pragma once

#include "value/Value.h"

#include <cstddef>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

/// How a MemoryBuffer hands out its bytes, and what it does when they are used up.
struct BufferKind
{
    enum class End
    {
        Quiet,         ///< end of the stream
        Throws,        ///< std::runtime_error, as of a device
        ThrowsFailure, ///< std::ios_base::failure, which a stream throws itself
        ThrowsNumber,  ///< an int, which no handler of std::exception catches
    };

    const char* name;
    std::size_t chunk; ///< bytes in the get area at once; 0 for an unbuffered one
    End end = End::Quiet;
};
std::ostream& operator<<(std::ostream& os, const BufferKind& kind);

/// All at once, a few bytes, one at a time, unbuffered; and those that throw at the end.
inline constexpr BufferKind bufferKinds[] = {
    {"Whole", 1000000000},
    {"Sevens", 7},
    {"SingleBytes", 1},
    {"Unbuffered", 0},
    {"WholeThrows", 1000000000, BufferKind::End::Throws},
    {"SingleBytesThrow", 1, BufferKind::End::Throws},
    {"UnbufferedThrows", 0, BufferKind::End::Throws},
    {"SevensThrowFailure", 7, BufferKind::End::ThrowsFailure},
    {"UnbufferedThrowsFailure", 0, BufferKind::End::ThrowsFailure},
    {"SevensThrowANumber", 7, BufferKind::End::ThrowsNumber},
};

/// A stream buffer over bytes in memory that tells how many of them were consumed.
class MemoryBuffer : public std::streambuf
{
public:
    /// Keeps a copy of `bytes`.
    MemoryBuffer(std::string_view bytes, BufferKind kind) : m_bytes(bytes), m_kind(kind) {}

    /// How many the stream has seen: those consumed and those in the get area.
    std::size_t taken() const { return m_next; }
    std::size_t consumed() const { return m_next - static_cast<std::size_t>(egptr() - gptr()); }

protected:
    int_type underflow() override;
    int_type uflow() override;

private:
    int_type atEnd() const;

    std::string m_bytes;
    BufferKind m_kind;
    std::size_t m_next = 0; ///< the first byte that is neither consumed nor in the get area
};

/// What a read from a stream leaves behind.
struct ReadOutcome
{
    Value value;
    std::string unread;           ///< what the stream's buffer still has
    std::ios_base::iostate state; ///< before anything else touched the stream
    std::ios_base::iostate mask;
};

/// "good", or the bits that are set, as in "eof fail".
std::string stateText(std::ios_base::iostate state);

/// All that the stream's buffer still gives, whatever the stream's state.
std::string drain(std::istream& in);

/// What `Value::parse_json` makes of a stream over `text`.
ReadOutcome readJSON(std::string_view text);
/// The same as one text, "value / unread / state".
std::string outcomeOf(std::string_view text);

/// The text of one byte.
std::string byteText(int byte);

// What a text means to a stream in the classic locale, which is what the conversions of strings and
// `Value::parse` promise.

/// Whether the standard library's streams can be compared with: others than GNU's read hexadecimal
/// numbers and names of infinities, or refuse subnormal numbers.
#ifdef __GLIBCXX__
inline constexpr bool streamsReadPlainNumbers = true;
#else
inline constexpr bool streamsReadPlainNumbers = false;
#endif

int intByStream(const std::string& text);
long long longByStream(const std::string& text);
/// Infinity instead of the largest number on overflow.
double realByStream(const std::string& text);
/// For a text that is no literal.
Value scalarByStream(const std::string& text);
