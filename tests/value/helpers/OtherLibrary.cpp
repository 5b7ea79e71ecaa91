#include "value/Value.h"

// A library that is loaded at run time and has all of the value library in itself. Its holders have
// descriptions of their types of their own.

extern "C" void makeOfEveryKind(Value::Array& values)
{
    values = {true, 1, 2LL, 2.5, "s", Value::Array{3}, Value::Hash{{"a", 4}}, nullptr};
}
