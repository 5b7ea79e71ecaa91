#pragma once

#include "lab/simulator/Behaviours.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Simulator {

/// What the command line asks for. Every number has a limit, so that every run ends.
struct Options
{
    std::string interface = "eth0";
    std::uint32_t first = 0; ///< address of the first agent; the others follow
    unsigned agents = 1;
    std::string community = "public";
    const Behaviour* behaviour = nullptr;
    unsigned copies = 1; ///< of each answer
    unsigned ignore = 0; ///< datagrams of each request that stay unanswered
    unsigned delay = 0;  ///< milliseconds from a request to the first answer
    unsigned spread = 0; ///< milliseconds from the first answer to the last
    unsigned frame = 0;  ///< least octets of a frame
    unsigned flood = 0;  ///< datagrams a second, asked for or not, from the first request on
    unsigned seed = 1;
    unsigned seconds = 120; ///< until the program ends by itself
};

/// The options in `arguments` (name and value alternate), or nothing and the reason in `error`.
std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error);

/// What the program prints when asked for help.
std::string help();

} // namespace Simulator
