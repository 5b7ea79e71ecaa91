#include "bench/JSONLibrary.h"

#include <map>
#include <streambuf>
#include <vector>

namespace {

/// Every character by peek() and get(), and nothing done with it.
unsigned long long sumOfStream(std::istream& in)
{
    unsigned long long sum = 0;
    while (in.peek() != std::istream::traits_type::eof()) {
        sum += static_cast<unsigned char>(in.get());
    }
    return sum;
}

/// The same straight from the stream's buffer.
unsigned long long sumOfBuffer(std::istream& in)
{
    unsigned long long sum = 0;
    std::streambuf& buffer = *in.rdbuf();
    while (buffer.sgetc() != std::streambuf::traits_type::eof()) {
        sum += static_cast<unsigned char>(buffer.sbumpc());
    }
    return sum;
}

void registerCharacters(const std::string& document, const std::string& text)
{
    registerOne(document + "/read/peek and get", [&text](benchmark::State& state) {
        std::istringstream in(text);
        timeMaking(state, [&] { return sumOfStream(in); });
    });
    registerOne(document + "/read/sgetc and sbumpc", [&text](benchmark::State& state) {
        std::istringstream in(text);
        timeMaking(state, [&] { return sumOfBuffer(in); });
    });
    registerOne(document + "/write/text copied", [&text](benchmark::State& state) {
        timeMaking(state, [&] { return std::string(text); });
    });
}

/// A hosts document in the standard containers alone.
struct Containers
{
    using Tree = std::vector<std::map<std::string, std::string>>;

    static Tree build(const Hosts& hosts)
    {
        Tree tree;
        tree.reserve(hosts.size());
        for (const std::string& host : hosts) {
            tree.emplace_back().emplace("hostname", host);
        }
        return tree;
    }
    static Tree copy(const Tree& tree) { return tree; }
    /// The least that a writer does: strings appended to a string, nothing escaped.
    static std::string write(const Tree& tree)
    {
        std::string text = "[";
        for (const auto& object : tree) {
            text += text.size() == 1 ? "{\"" : ",{\"";
            for (const auto& [key, value] : object) {
                text += key;
                text += "\":\"";
                text += value;
                text += "\"}";
            }
        }
        text += ']';
        return text;
    }
};

} // namespace

void registerFloors(const Inputs& inputs)
{
    registerCharacters("hosts", inputs.hosts.text);
    registerCharacters("mixed", inputs.mixed.text);
    registerTree<Containers>("hosts", "containers", inputs.hosts.content);
    registerCopying<Containers>("hosts", "containers", inputs.hosts.content);
}
