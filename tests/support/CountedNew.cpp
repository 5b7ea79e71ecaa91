#include "tests/support/CountedNew.h"

#include <cstdlib>
#include <new>
#include <utility>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CANNOT_REPLACE_NEW
#endif
#endif

namespace {

thread_local long allocationsLeft = -1; ///< negative for all
thread_local Allocations allocations{0, 0, 0};
thread_local void (*atNextDelete)() = nullptr;

} // namespace

#ifndef CANNOT_REPLACE_NEW

namespace {

void* allocate(std::size_t size)
{
    if (allocationsLeft == 0) {
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
    return memory;
}

void release(void* memory) noexcept
{
    if (memory) {
        --allocations.unfreed;
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

AllocationLimit::AllocationLimit(long count) noexcept
{
    allocationsLeft = count;
}

AllocationLimit::~AllocationLimit()
{
    allocationsLeft = -1;
}

AtNextDelete::AtNextDelete(void (*function)()) noexcept
{
    atNextDelete = function;
}

AtNextDelete::~AtNextDelete()
{
    atNextDelete = nullptr;
}
