#include "value/JSONParser.h"
#include "value/ByteScan.h"

namespace {

void appendUTF8(std::string& text, char32_t codePoint)
{
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    const auto continuation = [&](int shift) { append(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint <= 0x7F) {
        append(codePoint);
    } else if (codePoint <= 0x7FF) {
        append(0xC0 | codePoint >> 6);
        continuation(0);
    } else if (codePoint <= 0xFFFF) {
        append(0xE0 | codePoint >> 12);
        continuation(6);
        continuation(0);
    } else {
        append(0xF0 | codePoint >> 18);
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

} // namespace

Value JSONParser::getString()
{
    const CharacterSource::Lease lease(m_source);
    expect('"');
    return getText();
}

/// A string whose quotation mark has been peeked.
std::string JSONParser::getText()
{
    m_source.skip();
    m_text.clear();
    for (;;) {
        const std::string_view ready = m_source.atHand();
        const std::size_t plain = ByteScan::beforeQuoteOrBackslash(ready);
        m_text.append(ready.data(), plain);
        m_source.skip(plain);
        switch (const char c = m_source.get()) {
        case '"':
            return m_text;
        case '\\':
            getEscape(m_text);
            break;
        default: // the first after the characters that were at hand
            m_text += c;
        }
    }
}

/// The escape whose backslash has been read.
void JSONParser::getEscape(std::string& text)
{
    switch (const char c = m_source.get()) {
    case '"':
    case '/':
    case '\\':
        text += c;
        break;
    case 'b':
        text += '\b';
        break;
    case 'f':
        text += '\f';
        break;
    case 'n':
        text += '\n';
        break;
    case 'r':
        text += '\r';
        break;
    case 't':
        text += '\t';
        break;
    case 'u':
        appendUTF8(text, getCodePoint());
        break;
    default:
        throw std::exception();
    }
}

/// The code point of the `\u` escape or escapes, from the first digit.
char32_t JSONParser::getCodePoint()
{
    const char32_t unit = getUnicode();
    if ((unit & 0xFC00) != 0xD800) {
        return unit;
    }
    getLiteral("\\u");
    const char32_t low = getUnicode();
    if ((low & 0xFC00) != 0xDC00) {
        throw std::exception();
    }
    return 0x10000 + ((unit & 0x3FF) << 10 | (low & 0x3FF));
}

std::uint16_t JSONParser::getUnicode()
{
    const CharacterSource::Lease lease(m_source);
    unsigned unit = 0;
    for (int digit = 0; digit < 4; ++digit) {
        unit = unit << 4 | getHexDigit();
    }
    return static_cast<std::uint16_t>(unit);
}

std::uint16_t JSONParser::getHexDigit()
{
    const CharacterSource::Lease lease(m_source);
    const char c = m_source.peek();
    int digit = 0;
    if (c >= '0' && c <= '9') {
        digit = c - '0';
    } else if (c >= 'A' && c <= 'F') {
        digit = c - 'A' + 10;
    } else if (c >= 'a' && c <= 'f') {
        digit = c - 'a' + 10;
    } else {
        throw std::exception();
    }
    m_source.skip();
    return static_cast<std::uint16_t>(digit);
}
