#include "tests/value/helpers/RandomDocument.h"

#include <array>
#include <cstdio>
#include <iterator>
#include <string_view>

std::string RandomDocument::strict()
{
    m_odd = false;
    value(5);
    return finished();
}

std::string RandomDocument::odd()
{
    m_odd = true;
    value(5);
    return finished();
}

std::string RandomDocument::pieces()
{
    using namespace std::string_view_literals;
    static constexpr std::string_view all[] = {"["sv,
                                               "]"sv,
                                               "{"sv,
                                               "}"sv,
                                               ","sv,
                                               ":"sv,
                                               "\""sv,
                                               "\\"sv,
                                               "\\u"sv,
                                               " "sv,
                                               "\v"sv,
                                               "\n"sv,
                                               "true"sv,
                                               "false"sv,
                                               "null"sv,
                                               "-"sv,
                                               "+"sv,
                                               "."sv,
                                               "e"sv,
                                               "E"sv,
                                               "0"sv,
                                               "1"sv,
                                               "9"sv,
                                               "7"sv,
                                               "\"a\""sv,
                                               "\"b\""sv,
                                               "\"a\":"sv,
                                               "d83d"sv,
                                               "\\ude00"sv,
                                               "\\ud83d"sv,
                                               "\xFF"sv,
                                               "\0"sv,
                                               "9223372036854775807"sv,
                                               "922337203685477580"sv,
                                               "tru"sv,
                                               "[]"sv,
                                               "{}"sv,
                                               "00"sv,
                                               "1.5"sv,
                                               "1e5"sv};
    for (std::size_t count = below(20); count > 0; --count) {
        m_text += all[below(std::size(all))];
    }
    return finished();
}

std::string RandomDocument::damaged(std::string document)
{
    static constexpr std::string_view likely = "[]{},:\"\\ue0-+.19 \v\xFF";
    for (std::size_t count = 1 + below(3); count > 0 && !document.empty(); --count) {
        const std::size_t place = below(document.size());
        switch (below(4)) {
        case 0:
            document.erase(place, 1 + below(3));
            break;
        case 1:
            document.insert(place, document.substr(place, 1 + below(5)));
            break;
        case 2:
            document[place] = likely[below(likely.size())];
            break;
        default:
            document[place] = static_cast<char>(below(256));
        }
    }
    return document;
}

std::string RandomDocument::finished()
{
    std::string text;
    text.swap(m_text);
    return text;
}

void RandomDocument::value(int depth)
{
    static constexpr std::array<const char*, 3> literals = {"true", "false", "null"};
    space();
    switch (below(depth > 0 ? 8 : 4)) {
    case 0:
    case 1:
        string();
        break;
    case 2:
        number();
        break;
    case 3:
        m_text += literals[below(literals.size())];
        break;
    case 4:
    case 5:
        array(depth - 1);
        break;
    default:
        hash(depth - 1);
    }
    space();
}

void RandomDocument::array(int depth)
{
    m_text += '[';
    space();
    for (std::size_t count = below(5); count > 0; --count) {
        value(depth);
        m_text += count > 1 ? "," : "";
    }
    m_text += ']';
}

void RandomDocument::hash(int depth)
{
    m_text += '{';
    space();
    for (std::size_t count = below(5); count > 0; --count) {
        space();
        string();
        space();
        if (!m_odd || below(5) > 0) {
            m_text += ':';
            value(depth);
        }
        m_text += count > 1 ? "," : "";
    }
    m_text += '}';
}

void RandomDocument::string()
{
    m_text += '"';
    for (std::size_t count = below(below(10) == 0 ? 40 : 6); count > 0; --count) {
        if (m_odd && below(4) == 0) {
            oddCharacter();
        } else {
            strictCharacter();
        }
    }
    m_text += '"';
}

void RandomDocument::strictCharacter()
{
    static constexpr std::string_view escapes = "\"\\/bfnrt";
    switch (below(8)) {
    case 0:
        m_text += '\\';
        m_text += escapes[below(escapes.size())];
        break;
    case 1:
        escape(static_cast<unsigned>(below(0xD800)));
        break;
    case 2:
        escape(0xD800 + static_cast<unsigned>(below(0x400)));
        escape(0xDC00 + static_cast<unsigned>(below(0x400)));
        break;
    case 3:
        m_text += "\xC3\xA9\xF0\x9F\x98\x80";
        break;
    default:
        m_text += static_cast<char>('a' + below(4));
    }
}

void RandomDocument::oddCharacter()
{
    if (below(2) == 0) {
        escape(0xDC00 + static_cast<unsigned>(below(0x400)));
        return;
    }
    const char c = static_cast<char>(below(256));
    m_text += c == '"' || c == '\\' ? '?' : c;
}

void RandomDocument::escape(unsigned unit)
{
    std::array<char, 8> text{};
    const int length =
        std::snprintf(text.data(), text.size(), below(2) == 0 ? "\\u%04x" : "\\u%04X", unit);
    m_text.append(text.data(), static_cast<std::size_t>(length));
}

void RandomDocument::number()
{
    m_text += below(2) == 0 ? "-" : "";
    if (below(4) == 0) {
        m_text += '0';
    } else {
        m_text += static_cast<char>('1' + below(9));
        digits(below(m_odd ? 20 : 15));
    }
    if (below(2) == 0) {
        m_text += '.';
        digits(m_odd ? 1 + below(25) : below(12));
        m_text += m_odd ? "" : "5"; // not zero
    }
    if (below(3) == 0) {
        m_text += below(2) == 0 ? "e" : "E";
        if (m_odd) {
            m_text += below(3) == 0 ? "" : below(2) == 0 ? "+" : "-";
            digits(1 + below(below(5) == 0 ? 21 : 3));
        } else {
            m_text += below(2) == 0 ? "-" : "+";
            m_text += static_cast<char>('1' + below(9));
            digits(below(2));
        }
    }
}

void RandomDocument::digits(std::size_t count)
{
    for (; count > 0; --count) {
        m_text += static_cast<char>('0' + below(10));
    }
}

void RandomDocument::space()
{
    static constexpr std::string_view spaces = " \t\n\r\v\f";
    while (below(4) == 0) {
        m_text += spaces[below(m_odd ? 6 : 4)];
    }
}
