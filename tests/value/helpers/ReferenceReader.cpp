#include "tests/value/helpers/ReferenceReader.h"

#include "tests/value/helpers/Values.h"

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

struct Reading
{
    Value value;
    std::size_t consumed;
    std::ios_base::iostate state;
    std::ios_base::iostate mask;
};

Reading read(Value (*parse)(std::istream&), std::string_view text, const BufferKind& kind)
{
    MemoryBuffer buffer(text, kind);
    std::istream in(&buffer);
    Value value = parse(in);
    return {std::move(value), buffer.consumed(), in.rdstate(), in.exceptions()};
}

std::string summary(const Reading& reading)
{
    return reading.value.to_json() + ", " + std::to_string(reading.consumed) + " bytes, " +
           stateText(reading.state) + ", mask " + stateText(reading.mask);
}

} // namespace

ReferenceReader::ReferenceReader(std::istream& in) : m_in(in), m_savedMask(in.exceptions())
{
    in.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
}

Value ReferenceReader::token()
{
    try {
        return value();
    } catch (...) {
        return nullptr;
    }
}

int ReferenceReader::peekAfterDigits()
{
    try {
        return peek();
    } catch (const std::ios_base::failure&) {
        return none;
    }
}

void ReferenceReader::peekIs(int expected)
{
    if (peek() != expected) {
        throw std::exception();
    }
}

void ReferenceReader::getIs(int expected)
{
    if (get() != expected) {
        throw std::exception();
    }
}

void ReferenceReader::skipWhitespace()
{
    try {
        for (;;) {
            switch (peek()) {
            case 9:
            case 10:
            case 11:
            case 12:
            case 13:
            case 32:
                get();
                break;
            default:
                return;
            }
        }
    } catch (const std::ios_base::failure&) {
        return;
    }
}

Value ReferenceReader::value()
{
    skipWhitespace();
    switch (peek()) {
    case '"':
        return string();
    case '[':
        return array();
    case '{':
        return object();
    case 't':
        return literal("true", true);
    case 'f':
        return literal("false", false);
    case 'n':
        return literal("null", nullptr);
    default:
        return number();
    }
}

Value ReferenceReader::literal(const char* letters, Value meaning)
{
    for (; *letters; ++letters) {
        getIs(*letters);
    }
    return meaning;
}

Value ReferenceReader::array()
{
    peekIs('[');
    Value::Array list;
    bool first = true;
    do {
        get();
        skipWhitespace();
        if (first && peek() == ']') {
            break;
        }
        list.push_back(value());
        skipWhitespace();
        first = false;
    } while (peek() == ',');
    peekIs(']');
    get();
    return list;
}

Value ReferenceReader::object()
{
    peekIs('{');
    Value::Hash hash;
    bool first = true;
    do {
        get();
        skipWhitespace();
        if (first && peek() == '}') {
            break;
        }
        const std::string name = string().to_s();
        first = false;
        skipWhitespace();
        if (peek() == ':') {
            get();
            skipWhitespace();
            Value member = value();
            hash[name] = member;
            skipWhitespace();
        }
    } while (peek() == ',');
    peekIs('}');
    get();
    return hash;
}

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
    static constexpr std::string_view letters = "\"/\\bfnrt";
    static constexpr std::string_view meanings = "\"/\\\b\f\n\r\t";
    const int c = get();
    const std::size_t found = letters.find(static_cast<char>(c));
    if (c == 'u') {
        appendUTF8(text, codePoint());
    } else if (found != std::string_view::npos) {
        text += meanings[found];
    } else {
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

std::string readerDifference(std::string_view text, const BufferKind& kind)
{
    const Reading reading = read(Value::parse_json, text, kind);
    const Reading reference = read(ReferenceReader::parseJSON, text, kind);
    if (identical(reading.value, reference.value) && reading.consumed == reference.consumed &&
        reading.state == reference.state && reading.mask == reference.mask) {
        return {};
    }
    return std::string(kind.name) + " buffer over '" + std::string(text) +
           "': " + summary(reading) + "; expected " + summary(reference);
}
