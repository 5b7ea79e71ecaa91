#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// Numbers as text, the same in every locale: the program may have set one that groups digits or
// writes a decimal comma.
namespace NumberText {

/// No number's text is longer.
constexpr std::size_t longest = 20;

/// Writes the decimal digits of `number` to `out`, with "-" before a negative one. Returns their
/// end; there is no null character after it.
char* write(char* out, long long number) noexcept;

/// Writes `number` as an output stream in its default state does: six significant digits in general
/// notation. Infinities are inf and -inf. Every not-a-number is nan, although the C library writes
/// a negative one as -nan. Returns the end of the text.
char* write(char* out, double number);

/// The decimal number that begins `text` after white space, as an input stream extracts it: up to
/// the first character that cannot continue it; 0 if there is none; saturated out of range.
int readInt(std::string_view text) noexcept;
long long readLong(std::string_view text) noexcept;

/// As above in decimal or exponent notation; infinity on overflow, zero or the nearest subnormal
/// number on underflow. A number that breaks off after its "e" or its sign gives 0.0. Unlike some
/// libraries' streams this reads neither hexadecimal numbers nor "inf" and "nan", and "12abc"
/// is 12.
double readReal(std::string_view text);

/// The same when nothing follows the number; none if anything does, if there is no complete number
/// or if it overflows.
std::optional<double> wholeReal(std::string_view text);

} // namespace NumberText
