#include "value/JSONParser.h"

#include <cmath>
#include <limits>

namespace {

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

/// `number` with its sign turned; the least long stays as it is.
long long negated(long long number) noexcept
{
    return static_cast<long long>(0 - static_cast<unsigned long long>(number));
}

} // namespace

Value JSONParser::getNumber()
{
    const bool negative = m_source.peek() == '-';
    if (negative) {
        m_source.skip();
    }
    long long magnitude = 0;
    if (m_source.peek() == '0') {
        m_source.skip();
    } else {
        magnitude = getDigits(negative, nullptr);
    }

    double fraction = 0.0;
    long long exponent = 0;
    char next = peekInNumber();
    if (next == '.') {
        m_source.skip();
        int count = 0;
        const auto digits = static_cast<double>(getDigits(false, &count));
        fraction = digits * std::pow(10.0, static_cast<double>(-count));
        next = peekInNumber();
    }
    if (next == 'e' || next == 'E') {
        m_source.skip();
        const char sign = m_source.peek();
        if (sign == '+' || sign == '-') {
            m_source.skip();
        }
        exponent = getDigits(sign == '-', nullptr);
        if (sign == '-') {
            exponent = negated(exponent);
        }
    }

    if (fraction == 0.0 && exponent == 0) {
        return negative ? negated(magnitude) : magnitude;
    }
    double sum = static_cast<double>(magnitude);
    sum += fraction;
    const double real = negative ? -sum : sum;
    return real * std::pow(10.0, static_cast<double>(exponent));
}

long long JSONParser::getDigits(bool negative, int* count)
{
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
