#include "tests/value/StreamConversions.h"

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace {

template <typename Number>
struct Extraction
{
    Number number{};
    std::ios_base::iostate state;

    explicit Extraction(const std::string& text)
    {
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        stream >> number;
        state = stream.rdstate();
    }
};

} // namespace

int intByStream(const std::string& text)
{
    return Extraction<int>(text).number;
}

long long longByStream(const std::string& text)
{
    return Extraction<long long>(text).number;
}

double realByStream(const std::string& text)
{
    const Extraction<double> extracted(text);
    const bool failed = (extracted.state & std::ios_base::failbit) != 0;
    const bool largest = std::abs(extracted.number) == std::numeric_limits<double>::max();
    return failed && largest ? std::copysign(HUGE_VAL, extracted.number) : extracted.number;
}

Value scalarByStream(const std::string& text)
{
    const Extraction<double> extracted(text);
    if (extracted.state != std::ios_base::eofbit) {
        return text;
    }
    const double real = extracted.number;
    const bool fits = real >= -2147483648.0 && real <= 2147483647.0;
    return fits && static_cast<int>(real) == real ? Value(static_cast<int>(real)) : Value(real);
}
