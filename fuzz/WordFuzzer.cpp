#include "fuzz/Fuzzing.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <functional>
#include <istream>
#include <iterator>

// The extraction of words: the input is a text, read word by word.

namespace {

using fuzzing::check;

/// Extracts words as values and as strings until there are no more.
void compare(std::string_view text, const BufferKind& kind)
{
    MemoryBuffer buffer(text, kind);
    MemoryBuffer bufferOfStrings(text, kind);
    std::istream in(&buffer);
    std::istream inOfStrings(&bufferOfStrings);
    for (std::size_t count = 0; in.good(); ++count) {
        check(count <= text.size(), "there is an end to the words");
        const auto width = static_cast<std::streamsize>(count % 4 == 3 ? 5 : 0);
        in.width(width);
        inOfStrings.width(width);
        Value value = 1;
        std::string word;
        in >> value;
        inOfStrings >> word;
        const std::string expected = inOfStrings.fail() ? "" : word;
        check(identical(value, Value(expected)), "the value is the word", expected);
        check(in.rdstate() == inOfStrings.rdstate(), "the streams are in the same state", word);
        check(buffer.consumed() == bufferOfStrings.consumed(), "they are at the same place", word);
        check(in.exceptions() == std::ios_base::goodbit, "the mask is not touched");
        check(in.width() == inOfStrings.width(), "the width is used up");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // All kinds for every input would make few inputs.
    const std::string_view text = fuzzing::text(data, size);
    compare(text, bufferKinds[std::hash<std::string_view>()(text) % std::size(bufferKinds)]);
    return 0;
}
