#include "value/JSONParser.h"

#include <algorithm>

JSONParser::JSONParser(std::istream& in) : m_source(in), m_savedMask(in.exceptions())
{
    in.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
}

JSONParser::~JSONParser()
{
    m_source.stream().exceptions(m_savedMask);
}

Value JSONParser::getToken() noexcept
{
    try {
        // Flushes a tied stream even when all the text is at hand.
        const std::istream::sentry prepared(m_source.stream(), true);
        return getValue();
    } catch (...) {
        try {
            return nullptr;
        } catch (const std::bad_alloc&) {
            return {};
        }
    }
}

Value JSONParser::getValue()
{
    const char c = peekPastBlanks();
    return c == '[' || c == '{' ? getContainer() : getScalar(c);
}

Value JSONParser::getScalar(char first)
{
    switch (first) {
    case '"':
        return getText();
    case 't':
        return getTrue();
    case 'f':
        return getFalse();
    case 'n':
        return getNull();
    default:
        return getNumber();
    }
}

void JSONParser::skipWhitespace()
{
    try {
        for (;;) {
            const std::string_view ready = m_source.buffered();
            const auto end = std::find_if_not(ready.begin(), ready.end(), isWhitespace);
            m_source.skip(static_cast<std::size_t>(end - ready.begin()));
            if (!isWhitespace(m_source.peek())) {
                return;
            }
            m_source.skip();
        }
    } catch (const std::ios_base::failure&) {
        return; // the next one to need a character fails again
    }
}

int JSONParser::peekChar()
{
    return static_cast<signed char>(m_source.peek());
}

int JSONParser::getChar()
{
    return static_cast<signed char>(m_source.get());
}

Value JSONParser::getTrue()
{
    getLiteral("true");
    return true;
}

Value JSONParser::getFalse()
{
    getLiteral("false");
    return false;
}

Value JSONParser::getNull()
{
    getLiteral("null");
    return nullptr;
}

Value JSONParser::getArray()
{
    expect('[');
    return getContainer();
}

Value JSONParser::getObject()
{
    expect('{');
    return getContainer();
}

/// Leaves the character unread in any case.
void JSONParser::expect(char expected)
{
    if (m_source.peek() != expected) {
        throw std::exception();
    }
}

void JSONParser::getLiteral(std::string_view letters)
{
    if (m_source.buffered().substr(0, letters.size()) == letters) {
        m_source.skip(letters.size());
        return;
    }
    for (const char letter : letters) {
        if (m_source.get() != letter) {
            throw std::exception();
        }
    }
}
