#include "tests/value/helpers/Streams.h"

#include "tests/value/helpers/Values.h"

#include <algorithm>
#include <cmath>
#include <ios>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace {

template <typename Number>
struct Extraction
{
    Number number{};
    std::ios_base::iostate state;

    explicit Extraction(const std::string& text)
    {
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        stream >> number;
        state = stream.rdstate();
    }
};

} // namespace

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
    case BufferKind::End::ThrowsNumber:
        throw 1; // NOLINT(hicpp-exception-baseclass): the case is what is no exception class
    default:
        return traits_type::eof();
    }
}

std::string stateText(std::ios_base::iostate state)
{
    std::string text;
    const auto add = [&](std::ios_base::iostate bit, const char* name) {
        if ((state & bit) != 0) {
            text += text.empty() ? "" : " ";
            text += name;
        }
    };
    add(std::ios_base::eofbit, "eof");
    add(std::ios_base::failbit, "fail");
    add(std::ios_base::badbit, "bad");
    return text.empty() ? "good" : text;
}

std::string drain(std::istream& in)
{
    using Traits = std::istream::traits_type;
    std::string unread;
    for (auto c = in.rdbuf()->sbumpc(); c != Traits::eof(); c = in.rdbuf()->sbumpc()) {
        unread += Traits::to_char_type(c);
    }
    return unread;
}

ReadOutcome readJSON(std::string_view text)
{
    std::istringstream in{std::string(text)};
    Value value = Value::parse_json(in);
    const std::ios_base::iostate state = in.rdstate();
    const std::ios_base::iostate mask = in.exceptions();
    return {std::move(value), drain(in), state, mask};
}

std::string outcomeOf(std::string_view text)
{
    const ReadOutcome outcome = readJSON(text);
    return describe(outcome.value) + " / " + outcome.unread + " / " + stateText(outcome.state);
}

std::string byteText(int byte)
{
    return {static_cast<char>(byte)};
}

int intByStream(const std::string& text)
{
    return Extraction<int>(text).number;
}

long long longByStream(const std::string& text)
{
    return Extraction<long long>(text).number;
}

double realByStream(const std::string& text)
{
    const Extraction<double> extracted(text);
    const bool failed = (extracted.state & std::ios_base::failbit) != 0;
    const bool largest = std::abs(extracted.number) == std::numeric_limits<double>::max();
    return failed && largest ? std::copysign(HUGE_VAL, extracted.number) : extracted.number;
}

Value scalarByStream(const std::string& text)
{
    const Extraction<double> extracted(text);
    if (extracted.state != std::ios_base::eofbit) {
        return text;
    }
    const double real = extracted.number;
    const bool fits = real >= -2147483648.0 && real <= 2147483647.0;
    return fits && static_cast<int>(real) == real ? Value(static_cast<int>(real)) : Value(real);
}
