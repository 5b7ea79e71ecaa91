#include "bench/Heap.h"

#include <cstdlib>

#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
#include <malloc.h>

std::size_t heapInUse() noexcept
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void settleHeap()
{
    // A request too large for the lists of small free pieces joins these first.
    constexpr std::size_t large = 65536;
    std::free(std::malloc(large));
}
#else
std::size_t heapInUse() noexcept
{
    return 0;
}

void settleHeap() {}
#endif
