#include "value/JSONParser.h"

#include <iterator>

// A stack of the containers that are still open takes the place of recursion. Hashes are built
// where they will stay, in the value that is returned. The elements of open arrays wait on a second
// stack and move into their array when it closes, because only then is their number known. So
// [1,[2]] is read, where _ is the place of the next value:
//
//     after    open            elements
//     [        outer           _
//     1,       outer           1 _
//     [        outer inner     1 [] _
//     2        outer inner     1 [] 2
//     ]        outer           1 [2]
//     ]                                  (all are in outer)

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
    /// Of all open arrays, those of an inner array after those of the one around it.
    Value::Array elements;
};

Value JSONParser::getContainer()
{
    Value root;
    Nesting nesting;
    for (Value* place = &root; place;) {
        const char c = peekPastBlanks();
        const bool opens = c == '[' || c == '{';
        if (opens) {
            m_source.skip();
            nesting.enter(c, *place);
        } else {
            *place = getScalar(c);
        }
        place = closeAndFindNextPlace(nesting, opens);
    }
    return root;
}

/// Reads on to the next value, past commas, names and closing brackets, and returns where that
/// value goes. Leaves each container whose closing bracket it reads; null after that of the
/// outermost. `opened` says that the innermost container has just been entered, so that its first
/// value comes without a comma.
Value* JSONParser::closeAndFindNextPlace(Nesting& nesting, bool opened)
{
    while (!nesting.open.empty()) {
        const Nesting::Open innermost = nesting.open.back();
        const char c = peekPastBlanks();
        if (opened ? c != innermost.closing() : c == ',') {
            if (!opened) {
                m_source.skip();
            }
            if (innermost.array) {
                return &nesting.elements.emplace_back();
            }
            if (Value* const place = nextEntry(*innermost.hash)) {
                return place;
            }
            // The hash ended after a name without a value.
        } else {
            expect(innermost.closing());
            m_source.skip();
        }
        nesting.leave();
        opened = false;
    }
    return nullptr;
}

/// Reads names and the colon after the first that has one; returns that name's entry. Null if the
/// hash's closing bracket came first, which is then consumed: names without a colon are dropped.
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
