#include "tests/value/MemoryBuffer.h"

#include <algorithm>
#include <ios>
#include <stdexcept>

std::ostream& operator<<(std::ostream& os, const BufferKind& kind)
{
    return os << kind.name;
}

MemoryBuffer::int_type MemoryBuffer::underflow()
{
    if (gptr() < egptr()) {
        return traits_type::to_int_type(*gptr());
    }
    if (m_next == m_bytes.size()) {
        return atEnd();
    }
    char* const next = m_bytes.data() + m_next;
    const std::size_t count = std::min(m_kind.chunk, m_bytes.size() - m_next);
    if (count > 0) {
        setg(next, next, next + count);
        m_next += count;
    }
    return traits_type::to_int_type(*next);
}

MemoryBuffer::int_type MemoryBuffer::uflow()
{
    if (m_kind.chunk > 0) {
        return std::streambuf::uflow();
    }
    return m_next == m_bytes.size() ? atEnd() : traits_type::to_int_type(m_bytes[m_next++]);
}

MemoryBuffer::int_type MemoryBuffer::atEnd() const
{
    switch (m_kind.end) {
    case BufferKind::End::Throws:
        throw std::runtime_error("device");
    case BufferKind::End::ThrowsFailure:
        throw std::ios_base::failure("device");
    default:
        return traits_type::eof();
    }
}
