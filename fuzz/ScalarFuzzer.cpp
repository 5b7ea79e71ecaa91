#include "fuzz/Fuzzing.h"
#include "tests/value/helpers/Streams.h"
#include "tests/value/helpers/Values.h"

// `Value::parse`: the input is a text that may spell a scalar.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using fuzzing::check;
    const std::string text(fuzzing::text(data, size));
    const Value value = Value::parse(text);
    switch (value.kind()) {
    case Value::Kind::Nil:
        check(text == "nil" || text == "null", "only nil and null are nil", text);
        check(value.holder().empty(), "the nil is the empty one", text);
        break;
    case Value::Kind::Boolean:
        check(text == value.to_s(), "a boolean is spelled as it is written", text);
        break;
    case Value::Kind::Integer:
        check(identical(Value::parse(value.to_s()), value), "an integer reads back", text);
        break;
    case Value::Kind::Real:
        check(value.to_f() != value.to_i(), "a real equals no int", text);
        break;
    default:
        check(identical(value, Value(text)), "the rest is the text as a string", text);
    }
    const bool literal = text == "true" || text == "false" || text == "nil" || text == "null";
    check(literal || !streamsReadPlainNumbers || identical(value, scalarByStream(text)),
          "a stream makes the same of it", text);
    return 0;
}
