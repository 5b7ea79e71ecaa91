#pragma once

#include "value/CharacterSource.h"
#include "value/Value.h"

#include <cstdint>
#include <string>
#include <vector>

/// Reads one JSON value from a stream and leaves the stream right after it: blanks and text after
/// the value stay unread. It deliberately accepts more than JSON does; each such rule stands at its
/// function. No function recurses.
///
/// All but getToken() throw on bad input: std::exception for a wrong character,
/// std::ios_base::failure when the stream ends or fails, and what its buffer throws. What was read
/// until then stays consumed.
/// Of the wrong characters themselves, these are consumed:
/// - one in the place of a letter of true, false or null;
/// - one after a backslash with which it makes no escape;
/// - one in the place of the backslash or the u of a surrogate pair's second half;
/// - the four digits of a surrogate pair's second half that is none;
/// - the digit that makes a number too large.
/// All others are left unread.
///
/// One thread at a time may use a parser; it has the stream to itself. The stream's gcount() means
/// nothing afterwards.
class JSONParser
{
public:
    /// Keeps `in`, which must outlive the parser, and sets its exception mask to all three bits.
    /// Throws std::ios_base::failure if `in` is not good, and then the mask stays so.
    explicit JSONParser(std::istream& in);
    /// Not copied: it changes one stream.
    JSONParser(const JSONParser&) = delete;
    /// Not assigned, for the same reason.
    JSONParser& operator=(const JSONParser&) = delete;
    /// Puts the mask back. If the read has set a bit that this mask contains, the stream throws in
    /// here, which ends the program: the stream's own mask should be empty, as it is by default.
    ~JSONParser();

    /// One value. Any exception gives the nil with a null `void*`; only when there is not even
    /// memory for that is it the empty nil.
    Value getToken() noexcept;
    /// One value after white space.
    Value getValue();

    /// Consumes tabs, line feeds, vertical tabs, form feeds, carriage returns and spaces. The end
    /// of the stream ends it quietly; whoever needs a character finds out.
    void skipWhitespace();
    /// The next character as a signed char, so that bytes from 128 are negative.
    int peekChar();
    /// The same, consumed.
    int getChar();

    /// A hash. The last of members with the same name counts. A name without colon and value is
    /// dropped: `{"a"}` is empty, `{"a", "b": 1}` has only b.
    Value getObject();
    /// An array.
    Value getArray();
    /// A string of bytes: raw control characters and malformed UTF-8 are kept. `\u` escapes become
    /// UTF-8, a pair of surrogates one character; a low surrogate alone its own three bytes.
    Value getString();
    /// True. Looks no further than the last letter: `truex` leaves `x` unread.
    Value getTrue();
    /// False, likewise.
    Value getFalse();
    /// The nil of `null`, likewise.
    Value getNull();
    /// A long if fraction and exponent are zero, as in 1.0 and 5e0; else a real. Nothing is read
    /// after a leading zero of the integer part: `012` leaves `12` unread. An integer part or an
    /// exponent beyond 64 signed bits is an error.
    ///
    /// A real is deliberately (magnitude + digits * pow(10, -count)) * pow(10, exponent) in
    /// doubles, as pow gives it; it need not be the double nearest to the text. Magnitude 2^63,
    /// which only a negative number has, turns negative in it: -9223372036854775808.5 is positive.
    Value getNumber();
    /// At least one decimal digit, up to the first other character. The result is at most 2^63 - 1,
    /// or 2^63 if `negative`, which comes out as the least long. A digit that would exceed this is
    /// an error; but when `count` is given, it and those after it are ignored, and `count` receives
    /// the number of digits used.
    long long getDigits(bool negative, int* count);
    /// One hexadecimal digit in either case.
    std::uint16_t getHexDigit();
    /// Four hexadecimal digits: one UTF-16 code unit.
    std::uint16_t getUnicode();

private:
    struct Nesting;

    void skipBlanks();
    char peekPastBlanks();
    void expect(char expected);
    void getLiteral(std::string_view letters);
    char peekInNumber();
    std::string getText();
    void getEscape(std::string& text);
    char32_t getCodePoint();
    Value getContainer();
    Value getScalar(char first);
    Value* closeAndFindNextPlace(Nesting& nesting, bool opened);
    Value* nextEntry(Value::Hash& hash);

    CharacterSource m_source;
    std::ios_base::iostate m_savedMask;
};
