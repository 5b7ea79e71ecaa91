#include "fuzz/Fuzzing.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

std::string_view fuzzing::text(const std::uint8_t* data, std::size_t size) noexcept
{
    return size == 0 ? std::string_view()
                     : std::string_view(reinterpret_cast<const char*>(data), size);
}

void fuzzing::check(bool holds, std::string_view what, const std::string& values)
{
    if (!holds) {
        std::cerr << "check failed: " << what << "\n" << values << std::endl;
        std::abort();
    }
}

std::uint8_t fuzzing::Choices::byte() noexcept
{
    if (m_left == 0) {
        return 0;
    }
    --m_left;
    return *m_data++;
}

std::uint64_t fuzzing::Choices::number() noexcept
{
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64; shift += 8) {
        number |= std::uint64_t{byte()} << shift;
    }
    return number;
}

std::string fuzzing::Choices::string()
{
    const std::size_t count = std::min<std::size_t>(byte(), m_left);
    std::string string(text(m_data, count));
    m_data += count;
    m_left -= count;
    return string;
}

std::string fuzzing::Choices::rest()
{
    std::string rest(text(m_data, m_left));
    m_left = 0;
    return rest;
}
