#pragma once

#include <cstddef>
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
