#include "bench/Documents.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace {

/// Numbers that look random (xorshift), the same with every standard library.
class Random
{
public:
    /// A number from 0 to `limit` - 1.
    std::uint64_t below(std::uint64_t limit) noexcept
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return m_state % limit;
    }
    template <typename T, std::size_t size>
    const T& pick(const std::array<T, size>& choices) noexcept
    {
        return choices[below(size)];
    }

private:
    std::uint64_t m_state = 0x9E3779B97F4A7C15;
};

/// A piece of text as it is and as it stands in JSON, where some characters are escaped although
/// they need not be.
struct Phrase
{
    std::string_view plain;
    std::string_view json;
};

constexpr std::array<std::string_view, 6> names = {
    "printer",    "Drucker Büro", "imprimante à l'étage",
    "プリンター", "impressora",   "skrivare Göteborg"};

constexpr std::array<Phrase, 7> phrases = {{
    {"Ready to print.", "Ready to print."},
    {"Load \"A4\" in tray 2,\nthen press OK.", R"(Load \"A4\" in tray 2,\nthen press OK.)"},
    {"\\\\server\\queue\\colour", R"(\\\\server\\queue\\colour)"},
    {"Toner: 12 €, today 😀", R"(Toner: 12 \u20ac, today \ud83d\ude00)"},
    {"Kein Papier in der Zuführung – bitte nachlegen",
     R"(Kein Papier in der Zuführung – bitte nachlegen)"},
    {"name\tvalue\tunit", R"(name\tvalue\tunit)"},
    {"The cover of the finisher is open; close it and the job that was interrupted continues.",
     "The cover of the finisher is open; close it and the job that was interrupted continues."},
}};

constexpr std::array<std::string_view, 5> tags = {"colour", "duplex", "a3", "stapler",
                                                  "scan-to-mail"};

/// A number with so many decimal places, as text and as the double nearest to it.
double appendDecimal(std::string& text, long long digits, int places,
                     std::string_view exponent = "")
{
    std::string number = std::to_string(digits < 0 ? -digits : digits);
    const auto width = static_cast<std::size_t>(places) + 1;
    if (number.size() < width) {
        number.insert(0, width - number.size(), '0');
    }
    number.insert(number.size() - static_cast<std::size_t>(places), ".");
    number.insert(0, digits < 0 ? "-" : "");
    number.append(exponent);
    text += number;
    return std::stod(number);
}

void append(std::string& text, std::string_view separator, long long number)
{
    text += separator;
    text += std::to_string(number);
}

void appendQuoted(std::string& text, std::string_view separator, std::string_view json)
{
    text += separator;
    text += '"';
    text += json;
    text += '"';
}

Tray makeTray(Random& random, std::string& text, int number)
{
    Tray tray{"Tray " + std::to_string(number), 500, static_cast<long long>(random.below(501))};
    appendQuoted(text, R"({"name":)", tray.name);
    append(text, R"(,"capacity":)", tray.capacity);
    append(text, R"(,"level":)", tray.level);
    text += '}';
    return tray;
}

Device makeDevice(Random& random, std::string& text, long long id)
{
    Device device{};
    device.id = 1000000000000 + id;
    append(text, R"({"id":)", device.id);
    device.name = std::string(random.pick(names)) + ' ' + std::to_string(id);
    appendQuoted(text, R"(,"name":)", device.name);
    const Phrase& first = random.pick(phrases);
    const Phrase& second = random.pick(phrases);
    device.description = std::string(first.plain) + " / " + std::string(second.plain);
    appendQuoted(text, R"(,"description":)",
                 std::string(first.json) + R"( \/ )" + std::string(second.json));
    device.online = random.below(4) != 0;
    text += device.online ? R"(,"online":true,"contact":null,"load":)"
                          : R"(,"online":false,"contact":null,"load":)";
    device.load = appendDecimal(text, static_cast<long long>(random.below(10000)), 4);
    text += R"(,"temperature":)";
    device.temperature = appendDecimal(text, static_cast<long long>(random.below(900)) - 200, 1);
    text += R"(,"current":)";
    device.current =
        appendDecimal(text, static_cast<long long>(random.below(9000)) + 1000, 3, "e-6");
    device.building = "B" + std::to_string(random.below(40));
    appendQuoted(text, R"(,"position":{"building":)", device.building);
    text += R"(,"coordinates":[)";
    device.latitude = appendDecimal(text, static_cast<long long>(random.below(180000)) - 90000, 3);
    text += ',';
    device.longitude =
        appendDecimal(text, static_cast<long long>(random.below(360000)) - 180000, 3);
    text += R"(]},"pages":[)";
    for (int month = 0; month < 12; ++month) {
        device.pages.push_back(static_cast<long long>(random.below(100000)));
        append(text, month == 0 ? "" : ",", device.pages.back());
    }
    text += R"(],"trays":[)";
    const int trays = 1 + static_cast<int>(random.below(3));
    for (int tray = 1; tray <= trays; ++tray) {
        text += tray == 1 ? "" : ",";
        device.trays.push_back(makeTray(random, text, tray));
    }
    text += R"(],"alerts":[],"tags":[)";
    for (std::uint64_t count = random.below(4); count > 0; --count) {
        const std::string_view tag = random.pick(tags);
        appendQuoted(text, device.tags.empty() ? "" : ",", tag);
        device.tags.emplace_back(tag);
    }
    text += "]}";
    return device;
}

} // namespace

Document<Hosts> makeHosts(std::size_t bytes)
{
    Document<Hosts> document;
    document.text = "[";
    // Addresses of 198.18.0.0/15, which is set aside for benchmarks (RFC 2544).
    for (unsigned host = 0; document.text.size() < bytes; ++host) {
        std::string address = "198." + std::to_string(18 + (host >> 16 & 1)) + '.' +
                              std::to_string(host >> 8 & 255) + '.' + std::to_string(host & 255);
        appendQuoted(document.text, host == 0 ? R"({"hostname":)" : R"(,{"hostname":)", address);
        document.text += '}';
        document.content.push_back(std::move(address));
    }
    document.text += ']';
    return document;
}

Document<Devices> makeMixed(std::size_t bytes)
{
    Document<Devices> document;
    Random random;
    document.text = "[";
    for (long long id = 0; document.text.size() < bytes; ++id) {
        document.text += id == 0 ? "" : ",\n";
        document.content.push_back(makeDevice(random, document.text, id));
    }
    document.text += ']';
    return document;
}
