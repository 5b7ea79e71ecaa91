#pragma once

#include <gtest/gtest.h>

#include <cstddef>

// A program that links this has an operator new of its own, which counts, and can be told to fail.
// All of it concerns the calling thread only. A program without need does better without it:
// AddressSanitizer does not check there whether new and delete fit each other.

/// What operator new was asked for so far.
struct Allocations
{
    long count;        ///< how many
    std::size_t bytes; ///< how much in all, with what was freed since
    long unfreed;      ///< how many are not yet freed

    static Allocations current() noexcept;

    /// The octets that are not yet freed. What another thread frees is counted there.
    static long unfreedBytes() noexcept;
    /// The most that unfreedBytes() was since the call before; starts over from what it is now.
    static long takePeak() noexcept;

    /// False beside ThreadSanitizer's runtime for Clang, whose operator new cannot be replaced.
    /// Then nothing is counted and nothing fails, and a test that needs it has to skip itself.
    static bool supported() noexcept;
};

/// For its own lifetime lets that many further allocations succeed. Those after them fail: operator
/// new throws std::bad_alloc.
class AllocationLimit
{
public:
    explicit AllocationLimit(long count) noexcept;
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit();
};

/// For its own lifetime lets that many further allocations succeed and the one after them fail.
/// Those after the failure succeed again.
class FailingAllocation
{
public:
    explicit FailingAllocation(long successes) noexcept;
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    /// Whether it has failed by now.
    bool happened() const noexcept;
};

/// For its own lifetime, or until then, lets the next operator delete of anything call `function`.
class AtNextDelete
{
public:
    explicit AtNextDelete(void (*function)()) noexcept;
    AtNextDelete(const AtNextDelete&) = delete;
    AtNextDelete& operator=(const AtNextDelete&) = delete;
    ~AtNextDelete();
};

/// A fixture for tests that depend on it.
class NeedsCountedNew : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!Allocations::supported()) {
            GTEST_SKIP() << "NOT TESTED: operator new cannot be replaced beside this sanitizer";
        }
    }
};
