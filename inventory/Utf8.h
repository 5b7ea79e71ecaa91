#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace inventory {

/// A character of a text: its code point, and the bytes that spell it.
struct Character
{
    char32_t code;
    std::string_view bytes;
};

/// The character at the start of `text`, which must not be empty. A byte that begins no character
/// (RFC 3629: overlong forms, surrogates, above U+10FFFF, incomplete) is one U+FFFD by itself.
Character firstCharacter(std::string_view text);

/// The bytes of U+FFFD, which stands for what cannot be shown.
constexpr std::string_view replacement = "\xef\xbf\xbd";

/// Whether `code` is a line or paragraph separator, or a mark, embedding, override or isolate of
/// the bidirectional algorithm (UAX #9): what could make a line read as something else.
bool isBidirectionalControl(char32_t code);

/// `text` with every invalid byte replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// What an agent sent as a text, made fit for a report: cut at 1,024 octets, where a character that
/// the cut divides is dropped; then without the NULs at its end; then every invalid byte replaced
/// by U+FFFD. Nothing if that leaves nothing.
std::optional<std::string> textFromAgent(std::string_view sent);

} // namespace inventory
