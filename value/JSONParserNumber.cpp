#include "value/JSONParser.h"

#include <cmath>
#include <limits>

// A number is read into its parts, whole numbers all of them. Only then does numberOf() decide
// between a long and a real, and computes the real by the formula that the header promises.

namespace {

/// What a number's text says.
struct Parts
{
    bool negative = false;
    long long magnitude = 0;
    long long fractionDigits = 0;
    int fractionCount = 0;
    long long exponent = 0;
};

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

/// `number` with its sign turned; the least long stays as it is.
long long negated(long long number) noexcept
{
    return static_cast<long long>(0 - static_cast<unsigned long long>(number));
}

double powerOfTen(long long exponent)
{
    return std::pow(10.0, static_cast<double>(exponent));
}

Value numberOf(const Parts& parts)
{
    // A compiler may fuse a product and a sum that stand in one statement, which rounds once less.
    double fraction = 0.0;
    if (parts.fractionDigits != 0) {
        fraction = static_cast<double>(parts.fractionDigits) * powerOfTen(-parts.fractionCount);
    }
    if (fraction == 0.0 && parts.exponent == 0) {
        return parts.negative ? negated(parts.magnitude) : parts.magnitude;
    }
    double sum = static_cast<double>(parts.magnitude);
    sum += fraction;
    const double real = parts.negative ? -sum : sum;
    return parts.exponent == 0 ? real : real * powerOfTen(parts.exponent);
}

} // namespace

Value JSONParser::getNumber()
{
    const CharacterSource::Lease lease(m_source);
    Parts parts;
    parts.negative = m_source.peek() == '-';
    if (parts.negative) {
        m_source.skip();
    }
    if (m_source.peek() == '0') {
        m_source.skip();
    } else {
        parts.magnitude = getDigits(parts.negative, nullptr);
    }
    char next = peekInNumber();
    if (next == '.') {
        m_source.skip();
        parts.fractionDigits = getDigits(false, &parts.fractionCount);
        next = peekInNumber();
    }
    if (next == 'e' || next == 'E') {
        m_source.skip();
        const char sign = m_source.peek();
        if (sign == '+' || sign == '-') {
            m_source.skip();
        }
        parts.exponent = getDigits(sign == '-', nullptr);
        if (sign == '-') {
            parts.exponent = negated(parts.exponent);
        }
    }
    return numberOf(parts);
}

long long JSONParser::getDigits(bool negative, int* count)
{
    const CharacterSource::Lease lease(m_source);
    constexpr auto largest = static_cast<unsigned long long>(std::numeric_limits<long long>::max());
    const auto limit = negative ? largest + 1 : largest;
    char next = m_source.peek();
    if (!isDigit(next)) {
        throw std::exception();
    }
    unsigned long long number = 0;
    int used = 0;
    bool overflow = false;
    while (isDigit(next)) {
        m_source.skip();
        const auto digit = static_cast<unsigned>(next - '0');
        overflow = overflow || number > limit / 10 || (number == limit / 10 && digit > limit % 10);
        if (!overflow) {
            number = 10 * number + digit;
            // Only zeros can be that many, and pow() gives zero long before.
            used += used < std::numeric_limits<int>::max() ? 1 : 0;
        } else if (!count) {
            throw std::exception();
        }
        next = peekInNumber();
    }
    if (count) {
        *count = used;
    }
    return static_cast<long long>(number);
}

/// The next character; the null character, which no number contains, when the stream ends or fails.
char JSONParser::peekInNumber()
{
    try {
        return m_source.peek();
    } catch (const std::ios_base::failure&) {
        return '\0';
    }
}
