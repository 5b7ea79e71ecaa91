#pragma once

#include "value/Value.h"

#include <cstddef>

/// Asks the processor for all entries of `hash`, which are about to be used in the order of their
/// keys. That order is not the one in which they lie in memory, and each tells where the next one
/// is, so without this every one is waited for by itself. This goes from both ends to the middle,
/// two at a time, and waits for no value. It changes nothing and follows no pointer to a value.
///
/// Inlined always: GCC takes a function that only prefetches for one without effect, and drops the
/// call.
[[gnu::always_inline]] inline void fetchAhead(const Value::Hash& hash) noexcept
{
    auto first = hash.begin();
    auto last = hash.end();
    for (std::size_t pairs = hash.size() / 2; pairs > 0; --pairs) {
        --last;
        first->second.holder().prefetch();
        last->second.holder().prefetch();
        ++first;
    }
}
