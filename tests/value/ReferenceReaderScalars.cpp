#include "tests/value/ReferenceReader.h"

#include <cmath>

namespace {

void append(std::string& text, int byte)
{
    text += static_cast<char>(byte);
}

void appendUTF8(std::string& text, int point)
{
    if (point < 0x80) {
        append(text, point);
    } else if (point < 0x800) {
        append(text, 0xC0 + point / 0x40);
        append(text, 0x80 + point % 0x40);
    } else if (point < 0x10000) {
        append(text, 0xE0 + point / 0x1000);
        append(text, 0x80 + point / 0x40 % 0x40);
        append(text, 0x80 + point % 0x40);
    } else {
        append(text, 0xF0 + point / 0x40000);
        append(text, 0x80 + point / 0x1000 % 0x40);
        append(text, 0x80 + point / 0x40 % 0x40);
        append(text, 0x80 + point % 0x40);
    }
}

} // namespace

Value ReferenceReader::string()
{
    peekIs('"');
    get();
    std::string text;
    for (;;) {
        const int c = get();
        if (c == '"') {
            return text;
        }
        if (c == '\\') {
            escape(text);
        } else {
            append(text, c);
        }
    }
}

void ReferenceReader::escape(std::string& text)
{
    const int c = get();
    switch (c) {
    case '"':
    case '/':
    case '\\':
        append(text, c);
        break;
    case 'b':
        append(text, 8);
        break;
    case 'f':
        append(text, 12);
        break;
    case 'n':
        append(text, 10);
        break;
    case 'r':
        append(text, 13);
        break;
    case 't':
        append(text, 9);
        break;
    case 'u':
        appendUTF8(text, codePoint());
        break;
    default:
        throw std::exception();
    }
}

int ReferenceReader::codeUnit()
{
    int unit = 0;
    for (int count = 0; count < 4; ++count) {
        const int c = peek();
        if (c >= '0' && c <= '9') {
            unit = unit * 16 + c - '0';
        } else if (c >= 'A' && c <= 'F') {
            unit = unit * 16 + c - 'A' + 10;
        } else if (c >= 'a' && c <= 'f') {
            unit = unit * 16 + c - 'a' + 10;
        } else {
            throw std::exception();
        }
        get();
    }
    return unit;
}

int ReferenceReader::codePoint()
{
    const int unit = codeUnit();
    if (unit < 0xD800 || unit > 0xDBFF) {
        return unit;
    }
    getIs('\\');
    getIs('u');
    const int low = codeUnit();
    if (low < 0xDC00 || low > 0xDFFF) {
        throw std::exception();
    }
    return 0x10000 + (unit - 0xD800) * 0x400 + (low - 0xDC00);
}

ReferenceReader::Digits ReferenceReader::digits(bool negative, bool ignoreExcess)
{
    Digits result{0, 0};
    bool overflow = false;
    int c = peek();
    do {
        if (c < '0' || c > '9') {
            throw std::exception();
        }
        get();
        const int digit = c - '0';
        if (result.count >= 18 &&
            (result.number > 922337203685477580 ||
             (result.number == 922337203685477580 && digit > (negative ? 8 : 7)))) {
            overflow = true;
        }
        if (overflow && !ignoreExcess) {
            throw std::exception();
        }
        if (!overflow) {
            result.number = result.number * 10 + static_cast<unsigned>(digit);
            ++result.count;
        }
        c = peekAfterDigits();
    } while (c >= '0' && c <= '9');
    return result;
}

Value ReferenceReader::number()
{
    const bool negative = peek() == '-';
    if (negative) {
        get();
    }
    unsigned long long magnitude = 0;
    if (peek() == '0') {
        get();
    } else {
        magnitude = digits(negative, false).number;
    }
    double fraction = 0.0;
    double exponent = 0.0;
    int c = peekAfterDigits();
    if (c == '.') {
        get();
        const Digits read = digits(false, true);
        fraction = static_cast<double>(read.number) * std::pow(10.0, -read.count);
        c = peekAfterDigits();
    }
    if (c == 'e' || c == 'E') {
        get();
        const int sign = peek();
        if (sign == '+' || sign == '-') {
            get();
        }
        const Digits read = digits(sign == '-', false);
        exponent = static_cast<double>(read.number) * (sign == '-' ? -1.0 : 1.0);
    }
    if (fraction == 0.0 && exponent == 0.0) {
        return static_cast<long long>(negative ? 0 - magnitude : magnitude);
    }
    const double sum = static_cast<double>(static_cast<long long>(magnitude)) + fraction;
    return (negative ? -sum : sum) * std::pow(10.0, exponent);
}
