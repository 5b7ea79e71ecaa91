#include "value/ChildCursor.h"
#include "value/NumberText.h"
#include "value/TextBuffer.h"
#include "value/Value.h"

#include <array>
#include <ostream>

// Both texts come from one walk over the value, which differs only in its style: how strings and
// keys are written, and what stands between them.

namespace {

struct InspectionStyle
{
    static constexpr std::string_view nil = "nil";
    static constexpr std::string_view separator = ", ";
    static constexpr std::string_view arrow = " => ";
    static void appendString(TextBuffer& text, std::string_view bytes) { text.append(bytes); }
};

struct JSONStyle
{
    static constexpr std::string_view nil = "null";
    static constexpr std::string_view separator = ",";
    static constexpr std::string_view arrow = ":";
    static void appendString(TextBuffer& text, std::string_view bytes);
};

/// For each byte what follows the backslash in its escape: 'u' stands for the four digits too, 0
/// for a byte that is written as it is.
constexpr auto escapes = [] {
    std::array<char, 256> table{};
    for (std::size_t byte = 0; byte < 32; ++byte) {
        table[byte] = 'u';
    }
    table['"'] = '"';
    table['\\'] = '\\';
    table['\b'] = 'b';
    table['\t'] = 't';
    table['\n'] = 'n';
    table['\f'] = 'f';
    table['\r'] = 'r';
    return table;
}();

void JSONStyle::appendString(TextBuffer& text, std::string_view bytes)
{
    constexpr std::size_t longestEscape = 6;
    char* out = text.room(bytes.size() + 2);
    *out++ = '"';
    std::size_t left = bytes.size();
    for (const char c : bytes) {
        const char escape = escapes[static_cast<unsigned char>(c)];
        if (escape == 0) {
            *out++ = c;
        } else {
            text.advance(out);
            out = text.room(left + longestEscape + 1);
            *out++ = '\\';
            *out++ = escape;
            if (escape == 'u') { // below 32: the first two of the four digits are zero
                *out++ = '0';
                *out++ = '0';
                *out++ = c < 16 ? '0' : '1';
                *out++ = "0123456789abcdef"[c % 16];
            }
        }
        --left;
    }
    *out++ = '"';
    text.advance(out);
}

/// Appends a value without children.
template <typename Style>
void appendLeaf(TextBuffer& text, const Value& value, Value::Kind kind)
{
    switch (kind) {
    case Value::Kind::String:
        Style::appendString(text, value.holder().get<std::string>());
        break;
    case Value::Kind::Nil:
        text.append(Style::nil);
        break;
    case Value::Kind::Boolean:
        text.append(std::string_view(value.to_b() ? "true" : "false"));
        break;
    case Value::Kind::Integer:
    case Value::Kind::Long:
        text.advance(NumberText::write(text.room(NumberText::longest), value.to_l()));
        break;
    case Value::Kind::Real:
        text.advance(NumberText::write(text.room(NumberText::longest), value.to_f()));
        break;
    default: // a type of no kind has no text
        break;
    }
}

template <typename Style>
std::string write(const Value& root)
{
    TextBuffer text;
    std::vector<ChildCursor> open; // the containers around `value`, each at its next child
    for (const Value* value = &root;;) {
        const Value::Kind kind = value->kind();
        bool first = true;
        if (kind == Value::Kind::Array) {
            text.append('[');
            open.emplace_back(value->holder().get<Value::Array>());
        } else if (kind == Value::Kind::Hash) {
            text.append('{');
            open.emplace_back(value->holder().get<Value::Hash>());
        } else {
            appendLeaf<Style>(text, *value, kind);
            first = false;
        }
        while (!open.empty() && open.back().atEnd()) {
            text.append(open.back().inHash() ? '}' : ']');
            open.pop_back();
            first = false;
        }
        if (open.empty()) {
            return text.take();
        }
        ChildCursor& next = open.back();
        if (!first) {
            text.append(Style::separator);
        }
        if (next.inHash()) {
            Style::appendString(text, next.key());
            text.append(Style::arrow);
        }
        value = &next.value();
        next.advance();
    }
}

} // namespace

std::string Value::to_s() const
{
    return kind() == Kind::String ? m_holder.get<std::string>() : write<InspectionStyle>(*this);
}

std::string Value::to_json() const
{
    return write<JSONStyle>(*this);
}

std::ostream& operator<<(std::ostream& os, const Value& v)
{
    return os << v.to_s();
}
