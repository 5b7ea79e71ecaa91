#pragma once

#include <cstddef>
#include <type_traits>

namespace Dynamic {

/// A class that derives from this has operators new and delete that put its objects into blocks.
/// Made for holders, which are small and many: what a thread makes in a row lies together, so that
/// each costs a fraction of an allocation. A block goes back to the heap with the last of its
/// holders: one that outlives all others around it keeps `blockSize` octets.
///
/// Any thread may make holders, and may delete those of another, also while threads or the program
/// end. `new` takes no other form for such a class: neither placement nor std::nothrow.
class HolderMemory
{
public:
    /// The largest object that is taken, its alignment, and the size of a block, in octets. Blocks
    /// eight times as large make a document faster to copy, but slower to build and to destroy.
    static constexpr std::size_t largest = 64;
    static constexpr std::size_t alignment = 8;
    static constexpr std::size_t blockSize = 496;

    /// `size` is at most `largest`. Throws std::bad_alloc, and nothing has changed.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory) noexcept;

    /// False where AddressSanitizer is to watch each holder: then each is an allocation.
    static bool inBlocks() noexcept;

protected:
    HolderMemory() = default;
    ~HolderMemory() = default; // nobody deletes through this base, whose destructor is not virtual
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
