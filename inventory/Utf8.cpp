#include "inventory/Utf8.h"

#include <algorithm>

namespace inventory {

namespace {

constexpr std::size_t longestText = 1024; // octets

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80;
}

/// The number of bytes of a character that begins with `first`; 0 when none does.
std::size_t lengthFrom(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        return 2;
    }
    if (first >= 0xe0 && first <= 0xef) {
        return 3;
    }
    return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

/// Whether `bytes`, at least one, are the beginning of a character, or a whole one.
bool isBeginning(std::string_view bytes)
{
    const auto first = static_cast<unsigned char>(bytes[0]);
    if (lengthFrom(first) < bytes.size() ||
        !std::all_of(bytes.begin() + 1, bytes.end(), isContinuation)) {
        return false;
    }
    if (bytes.size() < 2) {
        return true;
    }
    // Overlong forms, surrogates and what lies above U+10FFFF show in the second byte.
    const auto second = static_cast<unsigned char>(bytes[1]);
    return !(first == 0xe0 && second < 0xa0) && !(first == 0xed && second > 0x9f) &&
           !(first == 0xf0 && second < 0x90) && !(first == 0xf4 && second > 0x8f);
}

/// How many bytes at the end of `text` are a character without its last bytes.
std::size_t incompleteAtEnd(std::string_view text)
{
    for (std::size_t count = 1; count <= std::min<std::size_t>(3, text.size()); ++count) {
        const std::string_view end = text.substr(text.size() - count);
        if (!isContinuation(end[0])) {
            return lengthFrom(static_cast<unsigned char>(end[0])) > count && isBeginning(end)
                       ? count
                       : 0;
        }
    }
    return 0;
}

} // namespace

Character firstCharacter(std::string_view text)
{
    const std::size_t length = lengthFrom(static_cast<unsigned char>(text[0]));
    const std::string_view bytes = text.substr(0, length);
    if (length == 0 || bytes.size() < length || !isBeginning(bytes)) {
        return {0xfffd, text.substr(0, 1)};
    }
    const auto first = static_cast<unsigned char>(bytes[0]);
    char32_t code = length == 1 ? first : first & (0x7fU >> length);
    for (const char byte : bytes.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3fU);
    }
    return {code, bytes};
}

bool isBidirectionalControl(char32_t code)
{
    return code == 0x61c || code == 0x200e || code == 0x200f ||
           (code >= 0x2028 && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

std::string validUtf8(std::string_view text)
{
    std::string valid;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        valid += character.code == 0xfffd ? replacement : character.bytes;
        text.remove_prefix(character.bytes.size());
    }
    return valid;
}

std::optional<std::string> textFromAgent(std::string_view sent)
{
    if (sent.size() > longestText) {
        sent = sent.substr(0, longestText);
        sent.remove_suffix(incompleteAtEnd(sent));
    }
    while (!sent.empty() && sent.back() == '\0') {
        sent.remove_suffix(1);
    }
    if (sent.empty()) {
        return {};
    }
    return validUtf8(sent);
}

} // namespace inventory
