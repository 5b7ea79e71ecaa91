#pragma once

#include "bench/Documents.h"
#include "bench/Heap.h"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// The two documents and how the benchmarks call them.
struct Inputs
{
    Document<Hosts> hosts;
    Document<Devices> mixed;
};

// Each of these registers the benchmarks of one library, in a source of its own. The inputs must
// outlive the run.
void registerValue(const Inputs& inputs);
void registerNlohmann(const Inputs& inputs);
void registerRapidJSON(const Inputs& inputs);
void registerPoco(const Inputs& inputs);
void registerJsonCpp(const Inputs& inputs);

/// Ends the program with a message unless both texts say the same: what is compared must be the
/// same work.
void requireSame(const std::string& library, const std::string& text, std::string_view written);

/// What no library can undercut: the characters through the stream, the text copied, the same
/// standard containers without values in between.
void registerFloors(const Inputs& inputs);
/// Chains and lists of as many arrays, of this project's values only: the others recurse.
void registerDepth(std::size_t arrays);

/// Registers `measure` under "document/operation/library". Each repetition is one iteration, which
/// is long enough to time, and puts what it has made back before the next begins.
template <typename Measure>
void registerOne(const std::string& name, Measure measure)
{
    benchmark::RegisterBenchmark(name.c_str(), measure)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

/// Times `make` alone: what it returns is destroyed while the clock stands. If `counter` is given,
/// it receives the bytes of heap that the result holds.
template <typename Make>
void timeMaking(benchmark::State& state, Make make, const char* counter = nullptr)
{
    for ([[maybe_unused]] auto iteration : state) {
        state.PauseTiming();
        settleHeap();
        std::optional<decltype(make())> made;
        const std::size_t before = heapInUse();
        state.ResumeTiming();
        made.emplace(make());
        benchmark::DoNotOptimize(*made);
        state.PauseTiming();
        if (counter) {
            state.counters[counter] = static_cast<double>(heapInUse() - before);
        }
        made.reset();
        state.ResumeTiming();
    }
}
