#include "value/JSONParser.h"

#include <algorithm>

// A string is copied in runs, each up to the next quotation mark, backslash or end of what the
// stream has buffered. Escapes between the runs are turned into UTF-8.

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

/// A string whose opening quotation mark has been peeked.
std::string JSONParser::getText()
{
    m_source.skip();
    std::string text;
    for (;;) {
        const std::string_view ready = m_source.atHand();
        const auto end =
            std::find_if(ready.begin(), ready.end(), [](char c) { return c == '"' || c == '\\'; });
        text.append(ready.begin(), end);
        m_source.skip(static_cast<std::size_t>(end - ready.begin()));
        // Now one of the two comes next, or what was at hand is used up and the stream is asked.
        const char c = m_source.get();
        if (c == '"') {
            return text;
        }
        if (c == '\\') {
            getEscape(text);
        } else {
            text += c;
        }
    }
}

/// The escape whose backslash has been read.
void JSONParser::getEscape(std::string& text)
{
    static constexpr std::string_view letters = "\"/\\bfnrt";
    static constexpr std::string_view meanings = "\"/\\\b\f\n\r\t";
    const char c = m_source.get();
    const std::size_t found = letters.find(c);
    if (c == 'u') {
        appendUTF8(text, getCodePoint());
    } else if (found != std::string_view::npos) {
        text += meanings[found];
    } else {
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
