#pragma once

#include <cstddef>

/// The bytes that the process has allocated from the heap and not freed, by operator new or malloc
/// alike, with the allocator's own headers; 0 where the C library does not say.
std::size_t heapInUse() noexcept;

/// Lets the allocator join the pieces that earlier measurements have freed. Otherwise a tree would
/// be strewn over the holes that another library's has left, and each measurement would depend on
/// the one before. Does nothing where the C library is another than GNU's.
void settleHeap();
