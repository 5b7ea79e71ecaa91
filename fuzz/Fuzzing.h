#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What every fuzz target uses. A target is a source that defines the function below; libFuzzer
// calls it with inputs of its own making, and Replay.cpp with those that are kept.

/// Ends the process if a property does not hold for the input; the return value is always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

/// The input as text.
std::string_view text(const std::uint8_t* data, std::size_t size) noexcept;

/// Unless `holds`, tells what does not, and for which values, and aborts.
void check(bool holds, std::string_view what, const std::string& values = {});

/// Takes an input apart, so that one input can stand for several choices. Past its end it gives
/// zeros.
class Choices
{
public:
    Choices(const std::uint8_t* data, std::size_t size) noexcept : m_data(data), m_left(size) {}

    bool atEnd() const noexcept { return m_left == 0; }
    std::uint8_t byte() noexcept;
    std::uint64_t number() noexcept; ///< eight bytes, the lowest first
    std::string string();            ///< up to 255 bytes, after a byte with their count
    std::string rest();

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

} // namespace fuzzing
