#pragma once

#include "value/Value.h"

#include <string>

// What a text means to a stream in the classic locale, which is what the conversions of strings and
// `Value::parse` promise.

/// Whether the standard library's streams can be compared with: others than GNU's read hexadecimal
/// numbers and names of infinities, or refuse subnormal numbers.
#ifdef __GLIBCXX__
inline constexpr bool streamsReadPlainNumbers = true;
#else
inline constexpr bool streamsReadPlainNumbers = false;
#endif

int intByStream(const std::string& text);
long long longByStream(const std::string& text);
/// Infinity instead of the largest number on overflow.
double realByStream(const std::string& text);
/// For a text that is no literal.
Value scalarByStream(const std::string& text);
