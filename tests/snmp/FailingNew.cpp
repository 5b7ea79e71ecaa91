#include "tests/snmp/FailingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CANNOT_REPLACE_NEW
#endif
#endif

namespace {

thread_local bool fails = false;

} // namespace

FailingNew::FailingNew() noexcept
{
    fails = true;
}

FailingNew::~FailingNew()
{
    fails = false;
}

#ifdef CANNOT_REPLACE_NEW

bool FailingNew::supported() noexcept
{
    return false;
}

#else

bool FailingNew::supported() noexcept
{
    return true;
}

void* operator new(std::size_t size)
{
    void* const memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

// Sanitizers bring arrays an operator of their own, which does not come by the one above.
void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

#endif
