#include "fuzz/Fuzzing.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

// The conversions: a first byte of zero is followed by the text of a string, any other by choices
// from which trees of every kind are built.

namespace {

using fuzzing::check;
using fuzzing::Choices;

Value makeTree(Choices& choices, int depth);

Value::Hash makeHash(Choices& choices, int depth)
{
    Value::Hash hash;
    for (int count = choices.byte() % 6; count > 0; --count) {
        std::string key = choices.string();
        hash.insert_or_assign(std::move(key), makeTree(choices, depth));
    }
    return hash;
}

Value::Array makeArray(Choices& choices, int depth)
{
    Value::Array array;
    for (int count = choices.byte() % 6; count > 0; --count) {
        array.push_back(makeTree(choices, depth));
    }
    return array;
}

Value makeTree(Choices& choices, int depth)
{
    switch (choices.byte() % (depth > 0 ? 10 : 8)) {
    case 1:
        return nullptr;
    case 2:
        return choices.byte() % 2 == 1;
    case 3:
        return static_cast<int>(choices.number());
    case 4:
        return static_cast<long long>(choices.number());
    case 5: {
        const std::uint64_t bits = choices.number();
        double real = 0.0;
        std::memcpy(&real, &bits, sizeof real);
        return real;
    }
    case 6:
        return choices.string();
    case 7:
        return Value(Dynamic::Any('x')); // of no kind
    case 8:
        return makeArray(choices, depth - 1);
    case 9:
        return makeHash(choices, depth - 1);
    default:
        return {};
    }
}

template <typename Int>
Int truncated(double real)
{
    const auto least = static_cast<double>(std::numeric_limits<Int>::min());
    return real >= least && real < -least ? static_cast<Int>(real)
                                          : std::numeric_limits<Int>::min();
}

void checkString(const std::string& text)
{
    const Value value = text;
    check(value.to_b() == !text.empty(), "only the empty string is false", text);
    check(value.to_s() == text, "a string's text is itself", text);
    if (streamsReadPlainNumbers) {
        check(value.to_i() == intByStream(text), "to_i() reads as a stream", text);
        check(value.to_l() == longByStream(text), "to_l() reads as a stream", text);
        check(identical(value.to_f(), realByStream(text)), "to_f() reads as a stream", text);
    }
}

void checkNumbers(const Value& value, const std::string& json)
{
    switch (value.kind()) {
    case Value::Kind::Boolean:
        check(value.to_i() == (value.to_b() ? 1 : 0) && value.to_l() == value.to_i() &&
                  value.to_f() == value.to_i(),
              "a boolean is one or zero", json);
        break;
    case Value::Kind::Integer:
    case Value::Kind::Long:
        check(value.to_b() == (value.to_l() == 0), "only zero is true", json);
        check(value.to_i() == static_cast<int>(static_cast<std::uint32_t>(value.to_l())),
              "to_i() gives the low bits", json);
        check(value.to_f() == static_cast<double>(value.to_l()), "to_f() rounds", json);
        check(std::to_string(value.to_l()) == json, "whole numbers are written out", json);
        break;
    case Value::Kind::Real:
        check(value.to_b() == (value.to_f() == 0.0), "only zero is true", json);
        check(value.to_i() == truncated<int>(value.to_f()), "to_i() truncates", json);
        check(value.to_l() == truncated<long long>(value.to_f()), "to_l() truncates", json);
        break;
    case Value::Kind::String:
        checkString(value.to_s());
        break;
    default:
        check(value.to_i() == 0 && value.to_l() == 0 && value.to_f() == 0.0,
              "what is no number is zero", json);
    }
}

void checkContainers(const Value& value, const std::string& json)
{
    const Value array = value.to_a();
    const Value hash = value.to_h();
    const std::size_t size = array.holder().get<Value::Array>().size();
    switch (value.kind()) {
    case Value::Kind::Array:
        check(array.to_json() == json, "an array's array is itself", json);
        break;
    case Value::Kind::Hash:
        check(hash.to_json() == json, "a hash's hash is itself", json);
        check(size == hash.holder().get<Value::Hash>().size(), "a hash gives pairs", json);
        return;
    case Value::Kind::Nil:
    case Value::Kind::Other:
        check(size == 0, "nil gives an empty array", json);
        break;
    default:
        check(array.to_json() == "[" + json + "]", "a scalar gives an array of itself", json);
    }
    check(hash.to_json() == "{}", "only a hash gives a hash", json);
}

void checkMerge(Choices& choices, const Value& value)
{
    Value::Hash target = makeHash(choices, 3);
    const std::string key =
        choices.byte() % 2 == 1 && !target.empty() ? target.begin()->first : "k";
    Value::merge_hash_entry(target, {key, value});
    const std::string once = Value(target).to_json();
    const auto merged = target.find(key);
    if (value.kind() == Value::Kind::Nil) {
        check(merged == target.end(), "a nil deletes", once);
    } else {
        check(merged != target.end(), "what is not nil stays", once);
        check(value.kind() == Value::Kind::Hash || merged->second.to_json() == value.to_json(),
              "what is no hash replaces", once);
        check(Value::lookup(target, key, nullptr).to_json() == merged->second.to_json(),
              "and is found", once);
    }
    Value::merge_hash_entry(target, {key, value});
    // A first merge stores a hash as it is, nils and all; the second deletes what these name.
    check(value.kind() == Value::Kind::Hash || Value(target).to_json() == once,
          "to merge again changes nothing", once);
    check(Value::extract(target, Value()).to_json() == Value(target).to_json(), "nil selects all",
          once);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(data, size);
    if (choices.byte() == 0) {
        checkString(choices.rest());
        return 0;
    }
    const Value value = makeTree(choices, 6);
    const std::string json = value.to_json();
    const std::string difference = roundTripDifference(value);
    check(difference.empty(), "the value can be written and read again", difference);
    std::ostringstream inserted;
    inserted << value;
    check(inserted.str() == value.to_s(), "a value is inserted as its text", json);
    checkNumbers(value, json);
    checkContainers(value, json);
    checkMerge(choices, value);
    return 0;
}
