#include "value/ChildCursor.h"
#include "value/FetchAhead.h"
#include "value/NumberText.h"
#include "value/PlainBytes.h"
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
    static constexpr char separator = ',';
    static constexpr char arrow = ':';
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

/// Writes the escape of `c`.
char* writeEscape(char* out, char c, char escape) noexcept
{
    *out++ = '\\';
    *out++ = escape;
    if (escape == 'u') { // below 32: the first two of the four digits are zero
        *out++ = '0';
        *out++ = '0';
        *out++ = c < 16 ? '0' : '1';
        *out++ = "0123456789abcdef"[c % 16];
    }
    return out;
}

void JSONStyle::appendString(TextBuffer& text, std::string_view bytes)
{
    constexpr std::size_t longestEscape = 6;
    char* out = text.room(bytes.size() + 2);
    *out++ = '"';
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    const auto left = [&] { return static_cast<std::size_t>(end - next); };
    while (next != end) {
        if (left() >= PlainBytes::width) {
            // All are copied; those from an escape on are written over.
            const std::size_t plain = PlainBytes::copyUpToEscape(out, next);
            out += plain;
            next += plain;
            if (plain == PlainBytes::width) {
                continue;
            }
        }
        const char c = *next++;
        if (const char escape = escapes[static_cast<unsigned char>(c)]) {
            text.advance(out);
            out = writeEscape(text.room(longestEscape + left() + 1), c, escape);
        } else {
            *out++ = c;
        }
    }
    *out++ = '"';
    text.advance(out);
}

template <typename Number>
void appendNumber(TextBuffer& text, Number number)
{
    text.advance(NumberText::write(text.room(NumberText::longest), number));
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
        appendNumber(text, static_cast<long long>(value.holder().get<int>()));
        break;
    case Value::Kind::Long:
        appendNumber(text, value.holder().get<long long>());
        break;
    case Value::Kind::Real:
        appendNumber(text, value.holder().get<double>());
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
            const auto& hash = value->holder().get<Value::Hash>();
            fetchAhead(hash);
            open.emplace_back(hash);
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
            return text.text();
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
