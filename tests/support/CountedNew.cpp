#include "tests/support/CountedNew.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#ifdef __APPLE__
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CANNOT_REPLACE_NEW
#endif
#endif

namespace {

thread_local long allocationsLeft = -1; ///< negative for all
thread_local bool failsOnce = false;    ///< after a failure, all succeed again
thread_local Allocations allocations{0, 0, 0};
thread_local long unfreedOctets = 0;
thread_local long peak = 0;
thread_local void (*atNextDelete)() = nullptr;

} // namespace

#ifndef CANNOT_REPLACE_NEW

namespace {

/// The octets that malloc() gave, which are seldom more than it was asked for.
long sizeOf(void* memory) noexcept
{
#ifdef __APPLE__
    return static_cast<long>(malloc_size(memory));
#else
    return static_cast<long>(malloc_usable_size(memory));
#endif
}

void* allocate(std::size_t size)
{
    if (allocationsLeft == 0) {
        if (failsOnce) {
            allocationsLeft = -1;
        }
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): what operator new is made of
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (!memory) {
        throw std::bad_alloc();
    }
    ++allocations.count;
    ++allocations.unfreed;
    allocations.bytes += size;
    unfreedOctets += sizeOf(memory);
    peak = std::max(peak, unfreedOctets);
    return memory;
}

void release(void* memory) noexcept
{
    if (memory) {
        --allocations.unfreed;
        unfreedOctets -= sizeOf(memory);
    }
    if (memory && atNextDelete) {
        std::exchange(atNextDelete, nullptr)();
    }
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc): what operator delete is made of
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}
// Sanitizers bring arrays an operator of their own, which does not come by the one above.
void* operator new[](std::size_t size)
{
    return allocate(size);
}
void operator delete(void* memory) noexcept
{
    release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}
void operator delete[](void* memory) noexcept
{
    release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}

#endif

bool Allocations::supported() noexcept
{
#ifdef CANNOT_REPLACE_NEW
    return false;
#else
    return true;
#endif
}

Allocations Allocations::current() noexcept
{
    return allocations;
}

long Allocations::unfreedBytes() noexcept
{
    return unfreedOctets;
}

long Allocations::takePeak() noexcept
{
    return std::exchange(peak, unfreedOctets);
}

AllocationLimit::AllocationLimit(long count) noexcept
{
    allocationsLeft = count;
}

AllocationLimit::~AllocationLimit()
{
    allocationsLeft = -1;
}

FailingAllocation::FailingAllocation(long successes) noexcept
{
    allocationsLeft = successes;
    failsOnce = true;
}

FailingAllocation::~FailingAllocation()
{
    allocationsLeft = -1;
    failsOnce = false;
}

bool FailingAllocation::happened() const noexcept
{
    return allocationsLeft < 0;
}

AtNextDelete::AtNextDelete(void (*function)()) noexcept
{
    atNextDelete = function;
}

AtNextDelete::~AtNextDelete()
{
    atNextDelete = nullptr;
}
