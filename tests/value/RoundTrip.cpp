#include "tests/value/RoundTrip.h"

#include "tests/value/ReaderTestHelpers.h"

#include <algorithm>
#include <cmath>

namespace {

bool isNumber(const Value& value)
{
    return value.kind() == Value::Kind::Integer || value.kind() == Value::Kind::Long ||
           value.kind() == Value::Kind::Real;
}

bool equalToSixDigits(const Value& written, const Value& read)
{
    if (written.kind() != Value::Kind::Real) {
        return read.kind() == Value::Kind::Long && read.to_l() == written.to_l();
    }
    const double real = std::abs(written.to_f());
    // The reader's formula loses more than that of a number whose power of ten is subnormal.
    return isNumber(read) &&
           (real < 1e-300 || std::abs(read.to_f() - written.to_f()) <= real * 5.1e-6);
}

bool equal(const Value& written, const Value& read)
{
    if (isNumber(written)) {
        return equalToSixDigits(written, read);
    }
    if (written.kind() != read.kind()) {
        return false;
    }
    if (written.kind() == Value::Kind::Array) {
        const auto& writtenArray = written.holder().get<Value::Array>();
        const auto& readArray = read.holder().get<Value::Array>();
        return std::equal(writtenArray.begin(), writtenArray.end(), readArray.begin(),
                          readArray.end(), equal);
    }
    if (written.kind() == Value::Kind::Hash) {
        const auto& writtenHash = written.holder().get<Value::Hash>();
        const auto& readHash = read.holder().get<Value::Hash>();
        return std::equal(writtenHash.begin(), writtenHash.end(), readHash.begin(), readHash.end(),
                          [](const auto& writtenEntry, const auto& readEntry) {
                              return writtenEntry.first == readEntry.first &&
                                     equal(writtenEntry.second, readEntry.second);
                          });
    }
    return written.to_s() == read.to_s();
}

/// Whether the tree has a JSON text.
bool isJSON(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::Real:
        return std::isfinite(value.to_f());
    case Value::Kind::Array: {
        const auto& array = value.holder().get<Value::Array>();
        return std::all_of(array.begin(), array.end(), isJSON);
    }
    case Value::Kind::Hash: {
        const auto& hash = value.holder().get<Value::Hash>();
        return std::all_of(hash.begin(), hash.end(),
                           [](const auto& entry) { return isJSON(entry.second); });
    }
    default:
        return value.kind() != Value::Kind::Other;
    }
}

} // namespace

std::string roundTripDifference(const Value& value)
{
    const std::string json = value.to_json();
    const Value copy = value; // NOLINT(performance-unnecessary-copy-initialization): is tested
    if (copy.to_json() != json || copy.to_s() != value.to_s()) {
        return "the copy of " + json + " is " + copy.to_json();
    }
    if (!isJSON(value)) {
        return {};
    }
    // The blank ends a number without a look at the end of the stream.
    const ReadOutcome outcome = readJSON(json + " ");
    if (!equal(value, outcome.value)) {
        return json + " reads as " + outcome.value.to_json();
    }
    if (outcome.unread != " " || outcome.state != std::ios_base::goodbit) {
        return json + " is not read to its end";
    }
    return {};
}
