#include "value/HolderMemory.h"

#include <new>

// A program that links this instead of HolderMemory.cpp makes an allocation for each holder, so
// that each can be counted and can fail.

void* Dynamic::HolderMemory::operator new(std::size_t size)
{
    return ::operator new(size);
}

void Dynamic::HolderMemory::operator delete(void* memory) noexcept
{
    ::operator delete(memory);
}

bool Dynamic::HolderMemory::inBlocks() noexcept
{
    return false;
}
