#include "bench/Heap.h"

#include <cstdlib>

#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
#include <malloc.h>

std::size_t heapInUse() noexcept
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
#else
std::size_t heapInUse() noexcept
{
    return 0;
}
#endif
