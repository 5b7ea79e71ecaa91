#include "inventory/Address.h"

namespace inventory {

std::optional<Address> Address::parse(std::string_view text)
{
    std::uint32_t number = 0;
    for (int octet = 0; octet < 4; ++octet) {
        if (octet != 0) {
            if (text.empty() || text.front() != '.') {
                return {};
            }
            text.remove_prefix(1);
        }
        std::uint32_t value = 0;
        std::size_t digits = 0;
        while (digits < text.size() && digits < 3 && text[digits] >= '0' && text[digits] <= '9') {
            value = value * 10 + static_cast<std::uint32_t>(text[digits] - '0');
            ++digits;
        }
        if (digits == 0 || value > 255 || (digits > 1 && text.front() == '0')) {
            return {};
        }
        text.remove_prefix(digits);
        number = number << 8 | value;
    }
    if (!text.empty()) {
        return {};
    }
    return Address(number);
}

std::string Address::text() const
{
    std::string text;
    for (unsigned shift = 32; shift != 0;) {
        shift -= 8;
        text += std::to_string(m_number >> shift & 0xff);
        if (shift != 0) {
            text += '.';
        }
    }
    return text;
}

} // namespace inventory
