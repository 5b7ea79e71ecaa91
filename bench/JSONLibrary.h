#pragma once

#include "bench/JSONBenchmark.h"

#include <array>
#include <istream>
#include <sstream>
#include <string>
#include <type_traits>

// The benchmarks of one library. A library is a structure like this; one whose copies share their
// content leaves out copy().
//
//     using Tree = …;                          what the library reads into; can be moved
//     static Tree build(const Hosts&);         and the same from Devices
//     static Tree copy(const Tree&);           that shares nothing with its source
//     static Tree read(std::istream&);
//     static … write(const Tree&);             the text in whatever the library writes to

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
