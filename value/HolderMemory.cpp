#include "value/HolderMemory.h"

#include <atomic>
#include <cassert>
#include <cstdint>
#include <new>
#include <utility>

// A thread hands out its block from front to back, and never again what was deleted. So handing out
// is an addition, and deleting takes one from a count, from whatever thread.

namespace {

// AddressSanitizer tells more about holders that it knows one by one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_HWADDRESS__)
constexpr bool oneByOne = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(hwaddress_sanitizer)
constexpr bool oneByOne = true;
#else
constexpr bool oneByOne = false;
#endif
#else
constexpr bool oneByOne = false;
#endif

using Dynamic::HolderMemory;

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= HolderMemory::alignment);

struct alignas(HolderMemory::alignment) Block
{
    /// How many holders are still to be deleted. While more can come: `unfinished` less those that
    /// are deleted already, so that handing out need not touch it.
    std::atomic<std::uint32_t> owed;
};

/// Lies in front of each holder.
struct alignas(HolderMemory::alignment) Tag
{
    Block* block;
};

/// More than the holders of any block.
constexpr std::uint32_t unfinished = std::uint32_t{1} << 30;

/// The block from which a thread hands out.
struct Cursor
{
    Block* block;
    char* next;
    char* end;
    std::uint32_t handedOut;
    bool threadEnds; ///< nobody will finish another block
};

// Without constructor and destructor, so that it can be used as long as the thread lives and is not
// tested at each use.
thread_local Cursor cursor;

/// Takes `count` from what is owed for `block`.
void settle(Block* block, std::uint32_t count) noexcept
{
    // Whoever frees the block must see what other threads have done to its holders.
    if (block->owed.fetch_sub(count, std::memory_order_acq_rel) == count) {
        ::operator delete(block);
    }
}

/// No more holders come from the block of `last`, which is no longer the thread's cursor: to free a
/// block is to call an operator delete that may be the program's own and want holders itself.
void finishBlock(const Cursor& last) noexcept
{
    if (last.block) {
        settle(last.block, unfinished - last.handedOut);
    }
}

struct AtThreadEnd
{
    AtThreadEnd() = default;
    AtThreadEnd(const AtThreadEnd&) = delete;
    AtThreadEnd& operator=(const AtThreadEnd&) = delete;
    ~AtThreadEnd() { finishBlock(std::exchange(cursor, {nullptr, nullptr, nullptr, 0, true})); }
    /// The first use makes the object, and with it the call of its destructor.
    void use() const noexcept {}
};

thread_local const AtThreadEnd atThreadEnd;

void* handOut(std::size_t size) noexcept
{
    char* const place = cursor.next;
    cursor.next += size;
    ++cursor.handedOut;
    Tag* const tag = new (place) Tag{cursor.block};
    return tag + 1;
}

void* handOutOfNewBlock(std::size_t size)
{
    auto* const memory = static_cast<char*>(::operator new(HolderMemory::blockSize));
    const Cursor last = cursor;
    cursor = {new (memory) Block{{unfinished}}, memory + sizeof(Block),
              memory + HolderMemory::blockSize, 0, last.threadEnds};
    void* const holder = handOut(size);
    if (last.threadEnds) {
        finishBlock(std::exchange(cursor, {nullptr, nullptr, nullptr, 0, true}));
    } else {
        atThreadEnd.use();
        finishBlock(last);
    }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the block is owed this holder, and stays
    return holder;
}

} // namespace

void* HolderMemory::operator new(std::size_t size)
{
    if constexpr (oneByOne) {
        return ::operator new(size);
    }
    assert(size <= largest);
    const std::size_t whole = sizeof(Tag) + (size + alignment - 1) / alignment * alignment;
    if (static_cast<std::size_t>(cursor.end - cursor.next) < whole) {
        return handOutOfNewBlock(whole);
    }
    return handOut(whole);
}

void HolderMemory::operator delete(void* memory) noexcept
{
    if constexpr (oneByOne) {
        ::operator delete(memory);
    } else if (memory) {
        settle((static_cast<Tag*>(memory) - 1)->block, 1);
    }
}

bool HolderMemory::inBlocks() noexcept
{
    return !oneByOne;
}
