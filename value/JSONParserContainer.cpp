#include "value/JSONParser.h"

#include <iterator>

// Arrays and hashes are built where they will stay, in the value that is returned. A stack of those
// that are still open takes the place of recursion.

/// The arrays and hashes that are being read, the innermost last.
struct JSONParser::Nesting
{
    struct Open
    {
        Value::Array* array; ///< null for a hash
        Value::Hash* hash;
        std::size_t firstElement; ///< of the array
        char closing() const noexcept { return array ? ']' : '}'; }
    };

    /// Makes `place` an empty container, to be read next.
    void enter(char bracket, Value& place)
    {
        if (bracket == '[') {
            place = Value::Array();
            open.push_back({&place.holder().get<Value::Array>(), nullptr, elements.size()});
        } else {
            place = Value::Hash();
            open.push_back({nullptr, &place.holder().get<Value::Hash>(), 0});
        }
    }

    /// The innermost container is complete.
    void leave()
    {
        if (Value::Array* const array = open.back().array) {
            const auto first =
                elements.begin() + static_cast<std::ptrdiff_t>(open.back().firstElement);
            array->assign(std::move_iterator(first), std::move_iterator(elements.end()));
            elements.erase(first, elements.end());
        }
        open.pop_back();
    }

    std::vector<Open> open;
    /// Those of all arrays that are open, each behind the ones of the array around it. An array
    /// gets them when their number is known, in memory of just that size.
    Value::Array elements;
};

Value JSONParser::getContainer()
{
    Value root;
    Nesting nesting;
    Value* place = &root;
    while (place) {
        const char c = peekPastBlanks();
        if (c == '[' || c == '{') {
            m_source.skip();
            nesting.enter(c, *place);
            place = firstPlace(nesting);
        } else {
            *place = getScalar(c);
            place = placeAfterValue(nesting);
        }
    }
    return root;
}

/// Where the first value of the innermost container goes, with the text right behind the opening
/// bracket; if there is none, where the value after the container goes.
Value* JSONParser::firstPlace(Nesting& nesting)
{
    const Nesting::Open innermost = nesting.open.back();
    if (peekPastBlanks() == innermost.closing()) {
        m_source.skip();
    } else if (innermost.array) {
        return &nesting.elements.emplace_back();
    } else if (Value* const place = nextEntry(*innermost.hash)) {
        return place;
    }
    nesting.leave();
    return placeAfterValue(nesting);
}

/// Where the value after a complete one goes; null when that was the outermost container's last.
Value* JSONParser::placeAfterValue(Nesting& nesting)
{
    while (!nesting.open.empty()) {
        const Nesting::Open innermost = nesting.open.back();
        if (peekPastBlanks() == ',') {
            m_source.skip();
            if (innermost.array) {
                return &nesting.elements.emplace_back();
            }
            if (Value* const place = nextEntry(*innermost.hash)) {
                return place;
            }
        } else {
            expect(innermost.closing());
            m_source.skip();
        }
        nesting.leave();
    }
    return nullptr;
}

/// The entry for the next name that has a value, with the text right before a name or blanks; null
/// when the hash ended instead.
Value* JSONParser::nextEntry(Value::Hash& hash)
{
    for (;;) {
        if (peekPastBlanks() != '"') {
            throw std::exception();
        }
        std::string name = getText();
        switch (peekPastBlanks()) {
        case ':':
            m_source.skip();
            // Names in ascending order, as the writer leaves them, need no search.
            return &hash.try_emplace(hash.end(), std::move(name))->second;
        case ',':
            m_source.skip();
            break;
        default:
            expect('}');
            m_source.skip();
            return nullptr;
        }
    }
}
