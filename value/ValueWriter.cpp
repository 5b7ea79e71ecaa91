#include "value/NumberText.h"
#include "value/Value.h"

#include <algorithm>
#include <array>
#include <ostream>

// Both texts come from one walk over the value, which differs only in its style: how strings and
// keys are written, and what stands between them.

namespace {

/// Walks over the elements of an array or the entries of a hash, which must outlive it unchanged.
/// Stacks of these take the place of recursion.
class ChildCursor
{
public:
    explicit ChildCursor(const Value::Array& array) noexcept
        : m_element(array.data()), m_elementsEnd(array.data() + array.size()), m_inHash(false)
    {}
    explicit ChildCursor(const Value::Hash& hash) noexcept
        : m_entry(hash.begin()), m_entriesEnd(hash.end()), m_inHash(true)
    {}

    bool inHash() const noexcept { return m_inHash; }
    bool atEnd() const noexcept
    {
        return m_inHash ? m_entry == m_entriesEnd : m_element == m_elementsEnd;
    }
    /// The key of the current entry; only in a hash, and not at the end.
    const std::string& key() const noexcept { return m_entry->first; }
    /// The current child; not at the end.
    const Value& value() const noexcept { return m_inHash ? m_entry->second : *m_element; }
    /// To the next child; not at the end.
    void advance() noexcept
    {
        if (m_inHash) {
            ++m_entry;
        } else {
            ++m_element;
        }
    }

private:
    const Value* m_element = nullptr;
    const Value* m_elementsEnd = nullptr;
    Value::Hash::const_iterator m_entry;
    Value::Hash::const_iterator m_entriesEnd;
    bool m_inHash;
};

struct InspectionStyle
{
    static constexpr std::string_view nil = "nil";
    static constexpr std::string_view separator = ", ";
    static constexpr std::string_view arrow = " => ";
    static void appendString(std::string& text, std::string_view bytes) { text += bytes; }
};

struct JSONStyle
{
    static constexpr std::string_view nil = "null";
    static constexpr char separator = ',';
    static constexpr char arrow = ':';
    static void appendString(std::string& text, std::string_view bytes);
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

void JSONStyle::appendString(std::string& text, std::string_view bytes)
{
    text += '"';
    for (;;) {
        const auto plainEnd = std::find_if(bytes.begin(), bytes.end(), [](char c) {
            return escapes[static_cast<unsigned char>(c)] != 0;
        });
        text.append(bytes.begin(), plainEnd);
        if (plainEnd == bytes.end()) {
            break;
        }
        const auto byte = static_cast<unsigned char>(*plainEnd);
        text += '\\';
        text += escapes[byte];
        if (escapes[byte] == 'u') { // below 32: the first two of the four digits are zero
            text += byte < 16 ? "000" : "001";
            text += "0123456789abcdef"[byte % 16];
        }
        bytes.remove_prefix(static_cast<std::size_t>(plainEnd - bytes.begin()) + 1);
    }
    text += '"';
}

template <typename Number>
void appendNumber(std::string& text, Number number)
{
    // NOLINTNEXTLINE(*-member-init): written before it is read
    std::array<char, NumberText::longest> digits;
    text.append(digits.data(), NumberText::write(digits.data(), number));
}

/// Appends a value without children.
template <typename Style>
void appendLeaf(std::string& text, const Value& value, Value::Kind kind)
{
    switch (kind) {
    case Value::Kind::String:
        Style::appendString(text, value.holder().get<std::string>());
        break;
    case Value::Kind::Nil:
        text += Style::nil;
        break;
    case Value::Kind::Boolean:
        text += value.to_b() ? "true" : "false";
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
    std::string text;
    std::vector<ChildCursor> open; // the containers around `value`, each at its next child
    for (const Value* value = &root;;) {
        const Value::Kind kind = value->kind();
        bool first = true;
        if (kind == Value::Kind::Array) {
            text += '[';
            open.emplace_back(value->holder().get<Value::Array>());
        } else if (kind == Value::Kind::Hash) {
            text += '{';
            open.emplace_back(value->holder().get<Value::Hash>());
        } else {
            appendLeaf<Style>(text, *value, kind);
            first = false;
        }
        while (!open.empty() && open.back().atEnd()) {
            text += open.back().inHash() ? '}' : ']';
            open.pop_back();
            first = false;
        }
        if (open.empty()) {
            return text;
        }
        ChildCursor& next = open.back();
        if (!first) {
            text += Style::separator;
        }
        if (next.inHash()) {
            Style::appendString(text, next.key());
            text += Style::arrow;
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
