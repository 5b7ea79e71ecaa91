#include "tests/value/ReferenceReader.h"

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
