#pragma once

#include <cstddef>

// A program that links this has an operator new of its own, which counts, and can be told to fail.
// All of it concerns the calling thread only.

/// What operator new was asked for so far.
struct Allocations
{
    long count;        ///< how many
    std::size_t bytes; ///< how much in all, with what was freed since
    long unfreed;      ///< how many are not yet freed

    static Allocations current() noexcept;
};

/// For its own lifetime lets that many further allocations succeed, and those after them fail.
class AllocationLimit
{
public:
    explicit AllocationLimit(long count) noexcept;
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit();
};
