#pragma once

#include "tests/value/MemoryBuffer.h"

#include <string>
#include <string_view>

/// Reads `text` through a buffer of `kind` with `Value::parse_json` and with the reference reader.
/// Empty if the two agree in the value, the bytes consumed, the stream's state and its exception
/// mask; else what each of them did.
std::string readerDifference(std::string_view text, const BufferKind& kind);
