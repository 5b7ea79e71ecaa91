#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace inventory {

/// An IPv4 address, ordered by number.
class Address
{
public:
    /// The address that `text` spells as four decimal octets without leading zeros; nothing for any
    /// other text.
    static std::optional<Address> parse(std::string_view text);

    /// Four decimal octets joined by dots.
    std::string text() const;

    friend bool operator==(Address a, Address b) noexcept { return a.m_number == b.m_number; }
    friend bool operator<(Address a, Address b) noexcept { return a.m_number < b.m_number; }

private:
    explicit Address(std::uint32_t number) noexcept : m_number(number) {}

    std::uint32_t m_number; ///< the first octet is the highest
};

} // namespace inventory
