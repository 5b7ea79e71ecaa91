#include "fuzz/Fuzzing.h"
#include "snmp/SNMPSession.h"

#include <cctype>
#include <cstdlib>
#include <optional>
#include <vector>

// Engine IDs from hexadecimal text, held to the rule in a few lines of its own.

namespace {

using fuzzing::check;
using Octets = std::vector<unsigned char>;

bool isHex(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/// Optional "0x", then pairs of digits with blanks between them; nothing if there is anything else.
std::optional<Octets> octetsOf(const std::string& text)
{
    Octets octets;
    std::size_t at = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0 ? 2 : 0;
    while (at < text.size()) {
        if (text[at] == ' ') {
            ++at;
        } else if (isHex(text[at]) && at + 1 < text.size() && isHex(text[at + 1])) {
            octets.push_back(
                static_cast<unsigned char>(std::stoi(text.substr(at, 2), nullptr, 16)));
            at += 2;
        } else {
            return std::nullopt;
        }
    }
    return octets;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(fuzzing::text(data, size));
    text = text.substr(0, text.find('\0')); // Net-SNMP reads no further
    unsigned char* engineID = nullptr;
    std::size_t length = 4711;

    const bool made = UVARNETSNMP::SNMPSession::MakeEngineID(text, &engineID, &length);

    const std::optional<Octets> expected = octetsOf(text);
    check(made == (expected && expected->size() >= 5 && expected->size() <= 32),
          "an engine ID is 5 to 32 octets", text);
    if (made) {
        check(Octets(engineID, engineID + length) == *expected, "the octets are the text's", text);
        std::free(engineID);
    } else {
        check(engineID == nullptr && length == 4711, "the outputs are left untouched", text);
    }
    return 0;
}
