#include "value/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>

namespace {

char* copy(char* out, std::string_view text) noexcept
{
    return std::copy(text.begin(), text.end(), out);
}

/// A positive number rounded to six significant digits: d.ddddd times ten to the exponent.
struct SixDigits
{
    unsigned digits; ///< 100000 to 999999, or 0 if this way of rounding is not exact enough
    int exponent;
};

/// Scales `number` by an exact power of ten. The product is off by at most half a unit in its last
/// place, 2^-34, which leaves no doubt about the rounding unless it lies next to a tie.
SixDigits roundToSixDigits(double number) noexcept
{
    constexpr std::array<double, 23> powers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                               1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                               1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (!(number >= 1e-16 && number < 1e26)) {
        return {0, 0};
    }
    const auto scaledTo = [&](int exponent) {
        return exponent <= 5 ? number * powers[static_cast<std::size_t>(5 - exponent)]
                             : number / powers[static_cast<std::size_t>(exponent - 5)];
    };
    // The binary exponent times log10(2), rounded down, which is the decimal exponent or one less.
    // The sum keeps the division away from negative numbers, which it would round up.
    int exponent = (std::ilogb(number) * 30103 + 100 * 100000) / 100000 - 100;
    double scaled = scaledTo(exponent);
    if (scaled >= 1e6) {
        scaled = scaledTo(++exponent);
    }
    auto digits = static_cast<unsigned>(scaled);
    const double rest = scaled - digits;
    if (std::abs(rest - 0.5) < 1e-6) {
        return {0, 0};
    }
    if (rest > 0.5 && ++digits == 1000000) {
        return {100000, exponent + 1};
    }
    return {digits, exponent};
}

/// General notation: the exponent form below 1e-4 and from 1e6, without trailing zeros.
char* writeGeneral(char* out, SixDigits rounded) noexcept
{
    std::array<char, 6> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size(), rounded.digits);
    std::string_view significant(digits.data(), digits.size());
    significant = significant.substr(0, significant.find_last_not_of('0') + 1);

    if (rounded.exponent < -4 || rounded.exponent >= 6) {
        *out++ = significant.front();
        if (significant.size() > 1) {
            *out++ = '.';
            out = copy(out, significant.substr(1));
        }
        *out++ = 'e';
        *out++ = rounded.exponent < 0 ? '-' : '+';
        const int magnitude = std::abs(rounded.exponent);
        *out++ = static_cast<char>('0' + magnitude / 10);
        *out++ = static_cast<char>('0' + magnitude % 10);
        return out;
    }
    if (rounded.exponent < 0) {
        constexpr std::string_view zeros = "0.000";
        const auto point = static_cast<std::size_t>(-rounded.exponent);
        out = copy(out, zeros.substr(0, point + 1));
        return copy(out, significant);
    }
    const auto whole = static_cast<std::size_t>(rounded.exponent) + 1;
    out = copy(out, std::string_view(digits.data(), whole));
    if (significant.size() > whole) {
        *out++ = '.';
        out = copy(out, significant.substr(whole));
    }
    return out;
}

std::string_view withoutLeadingSpace(std::string_view text) noexcept
{
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

bool isSign(char c) noexcept
{
    return c == '+' || c == '-';
}

template <typename Int>
Int readInteger(std::string_view text) noexcept
{
    text = withoutLeadingSpace(text);
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (text.empty() || !isDigit(text.front())) {
            return 0; // from_chars would take a second sign
        }
    }
    Int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<Int>::min() : std::numeric_limits<Int>::max();
    }
    return number;
}

/// The longest beginning of `text` whose characters can follow each other in a decimal number;
/// empty if that is not a complete number.
std::string_view realField(std::string_view text) noexcept
{
    std::size_t length = 0;
    const auto skip = [&](auto test) {
        const bool found = length < text.size() && test(text[length]);
        length += found ? 1 : 0;
        return found;
    };
    const auto skipDigits = [&] {
        bool any = false;
        while (skip(isDigit)) {
            any = true;
        }
        return any;
    };
    skip(isSign);
    bool complete = skipDigits();
    if (skip([](char c) { return c == '.'; })) {
        complete = skipDigits() || complete;
    }
    if (complete && skip([](char c) { return c == 'e' || c == 'E'; })) {
        skip(isSign);
        complete = skipDigits();
    }
    return complete ? text.substr(0, length) : std::string_view();
}

/// The number that is all of `field`; 0.0 if that is empty.
double toReal(std::string_view field)
{
    // strtod reads the C locale's decimal point. It gives infinity on overflow, where a stream
    // would give the largest finite number.
    std::string text(field);
    const std::size_t point = text.find('.');
    if (point != std::string::npos) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): races only with setlocale, as strtod itself does
        text.replace(point, 1, std::localeconv()->decimal_point);
    }
    return std::strtod(text.c_str(), nullptr);
}

} // namespace

char* NumberText::write(char* out, long long number) noexcept
{
    return std::to_chars(out, out + longest, number).ptr;
}

char* NumberText::write(char* out, double number)
{
    if (std::isnan(number)) {
        return copy(out, "nan");
    }
    if (std::signbit(number)) {
        *out++ = '-';
        number = -number;
    }
    if (std::isinf(number)) {
        return copy(out, "inf");
    }
    if (number == 0.0) {
        return copy(out, "0");
    }
    if (const SixDigits rounded = roundToSixDigits(number); rounded.digits != 0) {
        return writeGeneral(out, rounded);
    }
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << number;
    return copy(out, stream.str());
}

int NumberText::readInt(std::string_view text) noexcept
{
    return readInteger<int>(text);
}

long long NumberText::readLong(std::string_view text) noexcept
{
    return readInteger<long long>(text);
}

double NumberText::readReal(std::string_view text)
{
    return toReal(realField(withoutLeadingSpace(text)));
}

std::optional<double> NumberText::wholeReal(std::string_view text)
{
    text = withoutLeadingSpace(text);
    const std::string_view field = realField(text);
    if (field.empty() || field.size() != text.size()) {
        return std::nullopt;
    }
    const double real = toReal(field);
    return std::isinf(real) ? std::nullopt : std::optional(real);
}
