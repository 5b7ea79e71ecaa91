#include "value/JSONParser.h"
#include "value/NumberText.h"
#include "value/Value.h"

#include <istream>
#include <limits>

namespace {

/// The integer that equals `real`, or else a real. The bounds are tested first, because to convert
/// a number beyond them is undefined.
Value integerOrReal(double real)
{
    if (real >= std::numeric_limits<int>::min() && real <= std::numeric_limits<int>::max()) {
        const int integer = static_cast<int>(real);
        if (integer == real) {
            return integer;
        }
    }
    return real;
}

} // namespace

Value Value::parse_json(std::istream& in)
{
    return JSONParser(in).getToken();
}

Value Value::parse(const std::string& text)
{
    if (text == "true") {
        return true;
    }
    if (text == "false") {
        return false;
    }
    if (text == "null" || text == "nil") {
        return {};
    }
    // Numbers as a stream extracts them in the classic locale: what a text means must not depend
    // on the locale that the program has set, nor on which hexadecimal forms a library reads.
    const auto number = NumberText::wholeReal(text);
    return number ? integerOrReal(*number) : Value(text);
}

std::istream& operator>>(std::istream& in, Value& v)
{
    std::string word;
    in >> word;
    if (in.fail()) {
        word.clear(); // a buffer that threw in the middle leaves a part
    }
    v = Value(std::move(word));
    return in;
}
