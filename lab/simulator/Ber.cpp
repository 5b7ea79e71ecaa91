#include "lab/simulator/Ber.h"

namespace Simulator {

namespace {

constexpr unsigned longForm = 0x80;

} // namespace

Octets element(unsigned char tag, std::string_view content)
{
    Octets made(1, static_cast<char>(tag));
    const std::size_t size = content.size();
    if (size < longForm) {
        made += static_cast<char>(size);
    } else {
        Octets length;
        for (std::size_t left = size; left != 0; left >>= 8) {
            length.insert(length.begin(), static_cast<char>(left & 0xff));
        }
        made += static_cast<char>(longForm | length.size());
        made += length;
    }
    made += content;
    return made;
}

Octets integer(std::int64_t value, unsigned char tag)
{
    Octets content;
    // The last octet must carry the sign, so the loop ends when only sign bits remain.
    std::int64_t left = value;
    bool complete = false;
    while (!complete) {
        const auto octet = static_cast<unsigned char>(left & 0xff);
        content.insert(content.begin(), static_cast<char>(octet));
        left >>= 8;
        complete = left == ((octet & 0x80) != 0 ? -1 : 0);
    }
    return element(tag, content);
}

std::string_view Reader::content(unsigned char tag, unsigned char* found)
{
    const auto take = [this](std::size_t count) {
        if (m_failed || count > m_rest.size()) {
            m_failed = true;
            return std::string_view();
        }
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(count);
        return taken;
    };
    const std::string_view head = take(2);
    if (m_failed) {
        return {};
    }
    const auto actual = static_cast<unsigned char>(head[0]);
    if (tag != 0 && tag != actual) {
        m_failed = true;
        return {};
    }
    if (found != nullptr) {
        *found = actual;
    }
    std::size_t size = static_cast<unsigned char>(head[1]);
    if (size >= longForm) {
        const std::size_t count = size - longForm;
        if (count == 0 || count > 4) {
            m_failed = true;
            return {};
        }
        size = 0;
        for (const char each : take(count)) {
            size = size << 8 | static_cast<unsigned char>(each);
        }
    }
    return take(size);
}

std::int64_t Reader::number()
{
    const std::string_view octets = content(tagInteger);
    if (octets.empty() || octets.size() > 8) {
        m_failed = true;
        return 0;
    }
    std::uint64_t value = (octets[0] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (const char each : octets) {
        value = value << 8 | static_cast<unsigned char>(each);
    }
    return static_cast<std::int64_t>(value);
}

} // namespace Simulator
