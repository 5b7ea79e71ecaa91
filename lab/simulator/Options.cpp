#include "lab/simulator/Options.h"

#include "lab/simulator/Guard.h"

#include <arpa/inet.h>

#include <charconv>

namespace Simulator {

namespace {

struct Number
{
    const char* name;
    unsigned Options::*member;
    unsigned least;
    unsigned most;
    const char* meaning;
};

const Number numbers[] = {
    {"--agents", &Options::agents, 1, 100000, "how many agents, at consecutive addresses"},
    {"--copies", &Options::copies, 1, 1000, "of each answer"},
    {"--ignore", &Options::ignore, 0, 1000, "datagrams of a request left unanswered"},
    {"--delay", &Options::delay, 0, 60000, "milliseconds to the first answer"},
    {"--spread", &Options::spread, 0, 60000, "milliseconds from first to last answer"},
    {"--frame", &Options::frame, 0, 1514, "least octets of a frame"},
    {"--flood", &Options::flood, 0, 1000000, "datagrams a second, asked for or not"},
    {"--seed", &Options::seed, 0, 1000000, "of whatever is random"},
    {"--seconds", &Options::seconds, 1, 300, "until the program ends"},
};

bool set(Options& options, const std::string& name, const std::string& value, std::string& error)
{
    for (const Number& each : numbers) {
        if (name == each.name) {
            unsigned number = 0;
            const char* const end = value.data() + value.size();
            const auto [stop, code] = std::from_chars(value.data(), end, number);
            if (code != std::errc() || stop != end || number < each.least || number > each.most) {
                error =
                    name + " is " + std::to_string(each.least) + " to " + std::to_string(each.most);
                return false;
            }
            options.*each.member = number;
            return true;
        }
    }
    if (name == "--interface") {
        options.interface = value;
    } else if (name == "--community") {
        options.community = value;
    } else if (name == "--behaviour") {
        options.behaviour = findBehaviour(value);
        error = options.behaviour == nullptr ? "no behaviour " + value : "";
    } else if (name == "--first") {
        in_addr address = {};
        if (inet_pton(AF_INET, value.c_str(), &address) == 1) {
            options.first = ntohl(address.s_addr);
        } else {
            error = value + " is no IPv4 address";
        }
    } else {
        error = "no option " + name;
    }
    return error.empty();
}

} // namespace

std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error)
{
    Options options;
    options.behaviour = &behaviours().front();
    error.clear();
    for (std::size_t at = 0; at < arguments.size(); at += 2) {
        if (at + 1 == arguments.size()) {
            error = arguments[at] + " lacks its value";
            return std::nullopt;
        }
        if (!set(options, arguments[at], arguments[at + 1], error)) {
            return std::nullopt;
        }
    }
    const std::uint32_t last = options.first + options.agents - 1;
    if (!isDocumentationAddress(options.first) || !isDocumentationAddress(last) ||
        last - options.first != options.agents - 1) {
        error = "--first is needed, and all addresses must be documentation addresses";
        return std::nullopt;
    }
    return options;
}

std::string help()
{
    std::string text = "usage: lab_simulator --first ADDRESS [OPTION VALUE]...\n\n";
    for (const Number& each : numbers) {
        text += std::string("  ") + each.name + "  " + each.meaning + "\n";
    }
    text += "  --interface  where the agents are (eth0)\n";
    text += "  --community  of the requests that are answered (public)\n";
    text += "  --behaviour  one of:\n";
    for (const Behaviour& each : behaviours()) {
        text += std::string("      ") + each.name + ": " + each.meaning + "\n";
    }
    return text;
}

} // namespace Simulator
