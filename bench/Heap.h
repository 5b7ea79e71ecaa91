#pragma once

#include <cstddef>

/// The bytes that the process has allocated from the heap and not freed, by operator new or malloc
/// alike, with the allocator's own headers; 0 where the C library does not say.
std::size_t heapInUse() noexcept;
