#pragma once

#include "tests/support/CountedNew.h"
#include "value/HolderMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>

/// An object of `octets`, filled with one octet of its own.
template <std::size_t octets>
class Filled : public Dynamic::HolderMemory
{
public:
    explicit Filled(unsigned char fill) noexcept { m_octets.fill(fill); }
    bool intact() const noexcept
    {
        return std::all_of(m_octets.begin(), m_octets.end(),
                           [this](unsigned char octet) { return octet == m_octets.front(); });
    }
    unsigned char fill() const noexcept { return m_octets.front(); }

private:
    std::array<unsigned char, octets> m_octets;
};

using Small = Filled<16>;

class HolderMemoryTest : public NeedsCountedNew
{
protected:
    void SetUp() override
    {
        NeedsCountedNew::SetUp();
        if (!Dynamic::HolderMemory::inBlocks()) {
            GTEST_SKIP() << "NOT TESTED: AddressSanitizer watches each holder by itself";
        }
    }
};
