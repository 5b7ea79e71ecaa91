#pragma once

#include "tests/value/helpers/Streams.h"
#include "value/Value.h"

#include <istream>
#include <string>
#include <string_view>

/// What the JSON reader promises, done in the plainest way: by recursion, and with every character
/// through the stream's own peek() and get(). The tests and fuzzers hold the real reader to it, in
/// its result and in what it leaves of the stream. Its stack grows with the depth of nesting.
class ReferenceReader
{
public:
    /// To be compared with `Value::parse_json`.
    static Value parseJSON(std::istream& in) { return ReferenceReader(in).token(); }

    ReferenceReader(const ReferenceReader&) = delete;
    ReferenceReader& operator=(const ReferenceReader&) = delete;

private:
    static constexpr int none = 1000; ///< no character

    /// A number read without its sign, and how many digits were used.
    struct Digits
    {
        unsigned long long number;
        int count;
    };

    explicit ReferenceReader(std::istream& in);
    ~ReferenceReader() { m_in.exceptions(m_savedMask); }

    // Bytes from 128 are negative here.
    int peek() { return static_cast<signed char>(m_in.peek()); }
    int get() { return static_cast<signed char>(m_in.get()); }
    /// peek() where the end of the stream is no error.
    int peekAfterDigits();
    void peekIs(int expected);
    void getIs(int expected);
    void skipWhitespace();

    Value token();
    Value value();
    Value literal(const char* letters, Value meaning);
    Value array();
    Value object();
    Value string();
    void escape(std::string& text);
    int codeUnit();
    int codePoint();
    Value number();
    Digits digits(bool negative, bool ignoreExcess);

    std::istream& m_in;
    std::ios_base::iostate m_savedMask;
};

/// Reads `text` through a buffer of `kind` with `Value::parse_json` and with the reference reader.
/// Empty if the two agree in the value, the bytes consumed, the stream's state and its exception
/// mask; else what each of them did.
std::string readerDifference(std::string_view text, const BufferKind& kind);
