#pragma once

#include <cstddef>
#include <type_traits>

namespace Dynamic {

/// A base for holders, which are small and come in crowds: gives their class its operators new and
/// delete. What a thread makes in a row lies together in a block, so that a holder costs a fraction
/// of an allocation. A block goes back to the heap with the last of its holders: one that outlives
/// all others around it keeps `blockSize` octets.
///
/// Any thread may make holders, and may delete those of another.
class HolderMemory
{
public:
    /// The largest object that is taken, its alignment, and the size of a block, in octets. Blocks
    /// eight times as large make a document faster to copy, but slower to build and to destroy.
    static constexpr std::size_t largest = 64;
    static constexpr std::size_t alignment = 8;
    static constexpr std::size_t blockSize = 496;

    /// Throws std::bad_alloc, and nothing has changed.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory) noexcept;

    /// False where AddressSanitizer is to watch each holder: then each is an allocation.
    static bool inBlocks() noexcept;
};

/// The base of a holder of a type that HolderMemory is not made for.
class HeapMemory
{};

/// The base of a holder of a `T`, which has a virtual table besides.
template <typename T>
using HolderMemoryFor = std::conditional_t<sizeof(void*) + sizeof(T) <= HolderMemory::largest &&
                                               alignof(T) <= HolderMemory::alignment,
                                           HolderMemory, HeapMemory>;

} // namespace Dynamic
