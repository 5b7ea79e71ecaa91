// Values and JSON beside the libraries that people would pick instead, all in this one process on
// the same two documents. scripts/bench runs it and makes tables of the result.
//
// usage: json_benchmark [--bytes=N] [--arrays=N] [Google Benchmark's options]
//   --bytes=N    length of each of the two documents, 10000000 unless given
//   --arrays=N   arrays in the longest chain and list, 1000000 unless given

#include "bench/JSONBenchmark.h"

#include <charconv>
#include <cstdio>
#include <string_view>
#include <vector>

namespace {

/// Reads "--name=N" into `number`. False if `argument` is another one.
bool readOption(std::string_view argument, std::string_view name, std::size_t& number)
{
    if (argument.substr(0, name.size()) != name) {
        return false;
    }
    const char* const end = argument.data() + argument.size();
    const auto result = std::from_chars(argument.data() + name.size(), end, number);
    return result.ec == std::errc() && result.ptr == end && number > 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t bytes = 10'000'000;
    std::size_t arrays = 1'000'000;
    std::vector<char*> others;
    for (int i = 0; i < argc; ++i) {
        if (!readOption(argv[i], "--bytes=", bytes) && !readOption(argv[i], "--arrays=", arrays)) {
            others.push_back(argv[i]);
        }
    }
    int count = static_cast<int>(others.size());
    benchmark::Initialize(&count, others.data());
    if (benchmark::ReportUnrecognizedArguments(count, others.data())) {
        return 2;
    }

    const Inputs inputs{makeHosts(bytes), makeMixed(bytes)};
    registerValue(inputs);
    registerNlohmann(inputs);
    registerRapidJSON(inputs);
    registerPoco(inputs);
    registerJsonCpp(inputs);
    registerFloors(inputs);
    registerDepth(arrays);
    benchmark::RunSpecifiedBenchmarks();
}
