#include "fuzz/Fuzzing.h"
#include "tests/value/helpers/ReferenceReader.h"
#include "tests/value/helpers/Values.h"
#include "value/JSONParser.h"

#include <algorithm>
#include <functional>
#include <istream>
#include <iterator>

// The JSON reader: the input is a document.

namespace {

using fuzzing::check;

/// The reference reader recurses, and the stack with a sanitizer is soon used up.
bool isShallow(std::string_view document)
{
    return std::count_if(document.begin(), document.end(),
                         [](char c) { return c == '[' || c == '{'; }) < 1000;
}

/// What is left unread begins right behind the value.
void checkEnd(std::string_view document)
{
    MemoryBuffer buffer(document, {"", 1});
    std::istream in(&buffer);
    const Value value = Value::parse_json(in);
    check(in.exceptions() == std::ios_base::goodbit, "the mask is empty again");
    if (value.kind() == Value::Kind::Nil) {
        return;
    }
    const bool number = value.kind() == Value::Kind::Long || value.kind() == Value::Kind::Real;
    check(buffer.taken() <= buffer.consumed() + (number ? 1 : 0),
          "nothing is read beyond the value, but a number's look-ahead");
    check(in.good() || (number && buffer.consumed() == document.size()),
          "only a number's end is looked for");
    const std::string_view consumed = document.substr(0, buffer.consumed());
    check(identical(readJSON(consumed).value, value), "the value is in what was consumed");
    if (!number) {
        check(readJSON(consumed.substr(0, consumed.size() - 1)).value.kind() == Value::Kind::Nil,
              "the last byte consumed belongs to the value");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view document = fuzzing::text(data, size);
    if (!isShallow(document)) {
        readJSON(document); // must come back
        return 0;
    }
    // All kinds for every input would make few inputs.
    const std::size_t hash = std::hash<std::string_view>()(document);
    for (const BufferKind& kind : {bufferKinds[0], bufferKinds[hash % std::size(bufferKinds)]}) {
        const std::string difference = readerDifference(document, kind);
        check(difference.empty(), "the readers agree", difference);
    }
    checkEnd(document);
    const std::string broken = roundTripDifference(readJSON(document).value);
    check(broken.empty(), "the value can be written and read again", broken);
    return 0;
}
