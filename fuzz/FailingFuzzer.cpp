#include "fuzz/Fuzzing.h"

// A property that does not hold: shows that a replay, and a fuzzer, notice.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzzing::check(fuzzing::text(data, size).substr(0, 2) != "no",
                   "the input does not begin with no");
    return 0;
}
