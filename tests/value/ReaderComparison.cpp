#include "tests/value/ReaderComparison.h"

#include "tests/value/ReaderTestHelpers.h"
#include "tests/value/ReferenceReader.h"

#include <istream>
#include <string>

namespace {

struct Reading
{
    Value value;
    std::size_t consumed;
    std::ios_base::iostate state;
    std::ios_base::iostate mask;
};

Reading read(Value (*parse)(std::istream&), std::string_view text, const BufferKind& kind)
{
    MemoryBuffer buffer(text, kind);
    std::istream in(&buffer);
    Value value = parse(in);
    return {std::move(value), buffer.consumed(), in.rdstate(), in.exceptions()};
}

std::string describe(const Reading& reading)
{
    return reading.value.to_json() + ", " + std::to_string(reading.consumed) + " bytes, " +
           stateText(reading.state) + ", mask " + stateText(reading.mask);
}

} // namespace

std::string readerDifference(std::string_view text, const BufferKind& kind)
{
    const Reading reading = read(Value::parse_json, text, kind);
    const Reading reference = read(ReferenceReader::parseJSON, text, kind);
    if (identical(reading.value, reference.value) && reading.consumed == reference.consumed &&
        reading.state == reference.state && reading.mask == reference.mask) {
        return {};
    }
    return std::string(kind.name) + " buffer over '" + std::string(text) +
           "': " + describe(reading) + "; expected " + describe(reference);
}
