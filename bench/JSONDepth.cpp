#include "bench/JSONBenchmark.h"
#include "value/Value.h"

#include <sstream>

namespace {

/// One array inside the other.
Value makeChain(std::size_t arrays)
{
    Value chain;
    for (std::size_t array = 0; array < arrays; ++array) {
        Value::Array outer;
        if (array > 0) {
            outer.push_back(std::move(chain));
        }
        chain = Value(std::move(outer));
    }
    return chain;
}

/// One array with the others, empty ones, beside each other in it.
Value makeList(std::size_t arrays)
{
    Value::Array list;
    for (std::size_t array = 1; array < arrays; ++array) {
        list.emplace_back(Value::Array());
    }
    return list;
}

void registerShape(const std::string& name, Value (*make)(std::size_t), std::size_t arrays)
{
    const std::string document = name + ' ' + std::to_string(arrays);
    registerOne(document + "/read/Value", [=](benchmark::State& state) {
        std::istringstream in(make(arrays).to_json());
        timeMaking(state, [&] { return Value::parse_json(in); });
    });
    registerOne(document + "/build/Value",
                [=](benchmark::State& state) { timeMaking(state, [=] { return make(arrays); }); });
    registerOne(document + "/copy/Value", [=](benchmark::State& state) {
        settleHeap();
        const Value value = make(arrays);
        timeMaking(state, [&] { return Value(value); });
    });
    registerOne(document + "/destroy/Value", [=](benchmark::State& state) {
        for ([[maybe_unused]] auto iteration : state) {
            state.PauseTiming();
            settleHeap();
            std::optional<Value> value(make(arrays));
            state.ResumeTiming();
            value.reset();
        }
    });
    registerOne(document + "/write/Value", [=](benchmark::State& state) {
        settleHeap();
        const Value value = make(arrays);
        timeMaking(state, [&] { return value.to_json(); });
    });
}

} // namespace

void registerDepth(std::size_t arrays)
{
    for (const std::size_t count : {arrays / 10, arrays}) {
        registerShape("chain", makeChain, count);
        registerShape("list", makeList, count);
    }
}
