#include "tests/value/helpers/Values.h"

#include "tests/value/helpers/Streams.h"

#include <pthread.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace {

class ForeignPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "ja"; }
    std::string do_falsename() const override { return "nein"; }
};

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

std::string describe(const Value& value)
{
    std::string text;
    const char* separator = "";
    switch (value.kind()) {
    case Value::Kind::Nil:
        return value.holder().empty() ? "empty nil" : "nil";
    case Value::Kind::Boolean:
        return "boolean " + value.to_s();
    case Value::Kind::Integer:
        return "integer " + value.to_s();
    case Value::Kind::Long:
        return "long " + value.to_s();
    case Value::Kind::Real:
        return "real " + std::to_string(value.to_f());
    case Value::Kind::String:
        return "string " + value.to_s();
    case Value::Kind::Array:
        for (const Value& element : value.holder().get<Value::Array>()) {
            text += separator + describe(element);
            separator = ", ";
        }
        return "array[" + text + "]";
    case Value::Kind::Hash:
        for (const auto& [key, entry] : value.holder().get<Value::Hash>()) {
            text += separator + key + ": " + describe(entry);
            separator = ", ";
        }
        return "hash{" + text + "}";
    case Value::Kind::Other:
        return "other";
    }
    return "no kind";
}

bool identical(const Value& left, const Value& right)
{
    if (left.kind() != right.kind() || left.holder().empty() != right.holder().empty()) {
        return false;
    }
    switch (left.kind()) {
    case Value::Kind::Real: {
        const double leftReal = left.to_f();
        const double rightReal = right.to_f();
        // Bit by bit: that tells zeros apart, and one not-a-number from another.
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
        return std::memcmp(&leftReal, &rightReal, sizeof leftReal) == 0;
    }
    case Value::Kind::Array: {
        const auto& leftArray = left.holder().get<Value::Array>();
        const auto& rightArray = right.holder().get<Value::Array>();
        return std::equal(leftArray.begin(), leftArray.end(), rightArray.begin(), rightArray.end(),
                          identical);
    }
    case Value::Kind::Hash: {
        const auto& leftHash = left.holder().get<Value::Hash>();
        const auto& rightHash = right.holder().get<Value::Hash>();
        return std::equal(leftHash.begin(), leftHash.end(), rightHash.begin(), rightHash.end(),
                          [](const auto& leftEntry, const auto& rightEntry) {
                              return leftEntry.first == rightEntry.first &&
                                     identical(leftEntry.second, rightEntry.second);
                          });
    }
    default:
        return left.to_s() == right.to_s();
    }
}

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

Value nestedArrays(std::size_t depth, Value content)
{
    for (; depth > 0; --depth) {
        Value::Array around;
        around.push_back(std::move(content));
        content = std::move(around);
    }
    return content;
}

Value nestedHashes(std::size_t depth, Value content)
{
    for (; depth > 0; --depth) {
        Value::Hash around;
        around.emplace("k", std::move(content));
        content = std::move(around);
    }
    return content;
}

std::string repeat(std::string_view text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (; count > 0; --count) {
        all += text;
    }
    return all;
}

void runOnSmallStack(const std::function<void()>& body)
{
    const auto succeed = [](int error) {
        if (error != 0) {
            throw std::runtime_error(std::strerror(error)); // NOLINT(concurrency-mt-unsafe)
        }
    };
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_attr_t attributes;
    succeed(pthread_attr_init(&attributes));
    succeed(pthread_attr_setstacksize(&attributes, std::size_t{512} * 1024));
    std::function<void()> copy = body;
    pthread_t thread{};
    succeed(pthread_create(&thread, &attributes, run, &copy));
    succeed(pthread_join(thread, nullptr));
    succeed(pthread_attr_destroy(&attributes));
}

// The locale owns the facet.
ForeignGlobalLocale::ForeignGlobalLocale()
    : m_before(std::locale::global(std::locale(std::locale::classic(), new ForeignPunctuation)))
{}

int Foreign::alive = 0;
int Foreign::copiesLeft = 1000000;

Foreign::Foreign(const Foreign&)
{
    if (copiesLeft == 0) {
        throw std::runtime_error("no copies left");
    }
    --copiesLeft;
    ++alive;
}
