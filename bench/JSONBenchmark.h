#pragma once

#include "bench/Documents.h"
#include "bench/Heap.h"

#include <benchmark/benchmark.h>

#include <array>
#include <istream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// The two documents and how the benchmarks call them.
struct Inputs
{
    Document<Hosts> hosts;
    Document<Devices> mixed;
};

// Each of these registers the benchmarks of one library, in a source of its own. The inputs must
// outlive the run. A library is a structure like this, of which it may leave out all but read():
//
//     using Tree = …;                          what the library reads into; can be moved
//     static Tree build(const Hosts&);         and the same from Devices
//     static Tree copy(const Tree&);           that shares nothing with its source
//     static Tree read(std::istream&);
//     static … write(const Tree&);             the text in whatever the library writes to
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

/// What a library writes, which is a std::string or a RapidJSON buffer.
template <typename Written>
std::string asString(const Written& written)
{
    if constexpr (std::is_convertible_v<Written, std::string>) {
        return written;
    } else {
        return {written.GetString(), written.GetSize()};
    }
}

/// Tries all but the copying on short documents.
template <typename Library>
void check(const std::string& library)
{
    const auto checkDocument = [&](const auto& document) {
        std::istringstream in(document.text);
        requireSame(library + " reading", document.text,
                    asString(Library::write(Library::read(in))));
        requireSame(library + " building", document.text,
                    asString(Library::write(Library::build(document.content))));
    };
    checkDocument(makeHosts(10'000));
    checkDocument(makeMixed(100'000));
}

template <typename Library>
void registerReading(const std::string& document, const std::string& library,
                     const std::string& text)
{
    registerOne(document + "/read/" + library, [&text](benchmark::State& state) {
        std::istringstream in(text);
        timeMaking(
            state, [&] { return Library::read(in); }, "heap");
    });
}

template <typename Library, typename Content>
void registerTree(const std::string& document, const std::string& library, const Content& content)
{
    registerOne(document + "/build/" + library, [&content](benchmark::State& state) {
        timeMaking(state, [&] { return Library::build(content); });
    });
    registerOne(document + "/destroy/" + library, [&content](benchmark::State& state) {
        for ([[maybe_unused]] auto iteration : state) {
            state.PauseTiming();
            settleHeap();
            std::optional<typename Library::Tree> tree(Library::build(content));
            state.ResumeTiming();
            tree.reset();
        }
    });
    registerOne(document + "/write/" + library, [&content](benchmark::State& state) {
        settleHeap();
        const typename Library::Tree tree = Library::build(content);
        timeMaking(state, [&] { return Library::write(tree); });
    });
}

template <typename Library, typename Content>
void registerCopying(const std::string& document, const std::string& library,
                     const Content& content)
{
    registerOne(document + "/copy/" + library, [&content](benchmark::State& state) {
        settleHeap();
        const typename Library::Tree tree = Library::build(content);
        timeMaking(state, [&] { return Library::copy(tree); });
    });
}
