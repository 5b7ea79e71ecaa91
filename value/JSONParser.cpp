#include "value/JSONParser.h"

// The public functions can be called in any order, also by each other, so each of them leases the
// characters; only the outermost lease has an effect. The private functions rely on it. getToken()
// leaves it to getValue().

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
    const CharacterSource::Lease lease(m_source);
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
    const CharacterSource::Lease lease(m_source);
    skipBlanks();
}

void JSONParser::skipBlanks()
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    try {
        while (isBlank(m_source.peek())) {
            m_source.skip();
        }
    } catch (const std::ios_base::failure&) {
        return; // whoever needs a character next meets the same end of the stream
    }
}

char JSONParser::peekPastBlanks()
{
    skipBlanks();
    return m_source.peek();
}

int JSONParser::peekChar()
{
    const CharacterSource::Lease lease(m_source);
    return static_cast<signed char>(m_source.peek());
}

int JSONParser::getChar()
{
    const CharacterSource::Lease lease(m_source);
    return static_cast<signed char>(m_source.get());
}

Value JSONParser::getTrue()
{
    const CharacterSource::Lease lease(m_source);
    getLiteral("true");
    return true;
}

Value JSONParser::getFalse()
{
    const CharacterSource::Lease lease(m_source);
    getLiteral("false");
    return false;
}

Value JSONParser::getNull()
{
    const CharacterSource::Lease lease(m_source);
    getLiteral("null");
    return nullptr;
}

Value JSONParser::getArray()
{
    const CharacterSource::Lease lease(m_source);
    expect('[');
    return getContainer();
}

Value JSONParser::getObject()
{
    const CharacterSource::Lease lease(m_source);
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
    for (const char letter : letters) {
        if (m_source.get() != letter) {
            throw std::exception();
        }
    }
}
