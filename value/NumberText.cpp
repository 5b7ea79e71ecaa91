#include "value/NumberText.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>
#ifndef __cpp_lib_to_chars
#include <locale>
#include <sstream>
#endif

namespace {

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
    // strtod reads the C locale's decimal point. On overflow it gives infinity, as promised; a
    // stream would give the largest finite number.
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
        return std::copy_n("nan", 3, out);
    }
#ifdef __cpp_lib_to_chars
    return std::to_chars(out, out + longest, number, std::chars_format::general, 6).ptr;
#else
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << number;
    const std::string text = stream.str();
    return std::copy(text.begin(), text.end(), out);
#endif
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
