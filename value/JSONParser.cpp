#include "value/JSONParser.h"

// Arrays and hashes are built where they will stay, in the value that is returned. A stack of
// pointers to those that are still open takes the place of recursion.

namespace {

constexpr bool isWhitespace(char c) noexcept
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Makes `place` an empty container and returns that.
template <typename Container>
Container* start(Value& place)
{
    place = Container();
    return &place.holder().get<Container>();
}

} // namespace

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
    skipWhitespace();
    const char c = m_source.peek();
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
        while (isWhitespace(m_source.peek())) {
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
    for (const char letter : letters) {
        if (m_source.get() != letter) {
            throw std::exception();
        }
    }
}

Value JSONParser::getContainer()
{
    Value root;
    std::vector<Open> open;
    Value* place = &root;
    while (place) {
        skipWhitespace();
        const char c = m_source.peek();
        if (c == '[' || c == '{') {
            m_source.skip();
            open.push_back(c == '[' ? Open{start<Value::Array>(*place), nullptr}
                                    : Open{nullptr, start<Value::Hash>(*place)});
            place = nextPlace(open.back(), true);
            if (place) {
                continue;
            }
            open.pop_back();
        } else {
            *place = getScalar(c);
        }
        place = placeAfterValue(open);
    }
    return root;
}

/// Where the value after a complete one goes; null when that was the outermost container's last.
Value* JSONParser::placeAfterValue(std::vector<Open>& open)
{
    while (!open.empty()) {
        skipWhitespace();
        if (m_source.peek() == ',') {
            m_source.skip();
            if (Value* const place = nextPlace(open.back(), false)) {
                return place;
            }
        } else {
            expect(open.back().closing());
            m_source.skip();
        }
        open.pop_back();
    }
    return nullptr;
}

/// Where the container's next value goes, with the text right behind the opening bracket or a
/// comma; null when the container ended instead.
Value* JSONParser::nextPlace(const Open& container, bool first)
{
    skipWhitespace();
    if (first && m_source.peek() == container.closing()) {
        m_source.skip();
        return nullptr;
    }
    return container.array ? &container.array->emplace_back() : nextEntry(*container.hash);
}

/// The same in a hash, past the names that have no value.
Value* JSONParser::nextEntry(Value::Hash& hash)
{
    for (;;) {
        expect('"');
        std::string name = getText();
        skipWhitespace();
        switch (m_source.peek()) {
        case ':':
            m_source.skip();
            return &hash.try_emplace(std::move(name)).first->second;
        case ',':
            m_source.skip();
            skipWhitespace();
            break;
        default:
            expect('}');
            m_source.skip();
            return nullptr;
        }
    }
}
