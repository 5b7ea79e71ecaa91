#include "inventory/Document.h"

#include "inventory/Failure.h"
#include "inventory/Utf8.h"
#include "value/Value.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <sstream>

namespace inventory {

namespace {

/// The entries of the array that `document` is.
Value::Array readEntries(const std::string& document, const std::string& origin)
{
    if (document.size() > largestDocument) {
        throw Failure(origin + ": more than 16 MiB");
    }
    std::istringstream in(document);
    if (document.empty()) {
        throw Failure(origin + ": empty");
    }
    Value value = Value::parse_json(in);
    if (value.kind() != Value::Kind::Array) {
        throw Failure(origin + ": no JSON array");
    }
    in >> std::ws;
    if (in.peek() != std::istringstream::traits_type::eof()) {
        throw Failure(origin + ": text after the JSON array");
    }
    auto& entries = value.holder().get<Value::Array>();
    if (entries.size() > mostEntries) {
        throw Failure(origin + ": more than 65,536 entries");
    }
    return std::move(entries);
}

const Value* member(const Value::Hash& entry, const char* key)
{
    const auto found = entry.find(key);
    return found == entry.end() ? nullptr : &found->second;
}

Address addressOf(const Value& entry, const std::string& origin)
{
    if (entry.kind() == Value::Kind::Hash) {
        const Value* const hostname = member(entry.holder().get<Value::Hash>(), "hostname");
        if (hostname != nullptr && hostname->kind() == Value::Kind::String) {
            const auto address = Address::parse(hostname->holder().get<std::string>());
            if (address) {
                return *address;
            }
        }
    }
    throw Failure(origin + ": an entry without a valid address");
}

void readText(const Value::Hash& entry, const char* key, std::optional<std::string>& text)
{
    const Value* const value = member(entry, key);
    if (value == nullptr || value->kind() != Value::Kind::String) {
        return;
    }
    const std::string& read = value->holder().get<std::string>();
    if (!read.empty()) {
        text = validUtf8(read);
    }
}

void readFlag(const Value::Hash& entry, const char* key, std::optional<bool>& flag)
{
    const Value* const value = member(entry, key);
    if (value != nullptr && value->kind() == Value::Kind::Boolean) {
        flag = value->to_b();
    }
}

} // namespace

std::vector<Address> readAddresses(const std::string& document, const std::string& origin)
{
    std::vector<Address> addresses;
    for (const Value& entry : readEntries(document, origin)) {
        addresses.push_back(addressOf(entry, origin));
    }
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
    return addresses;
}

std::vector<Agent> readReport(const std::string& document, const std::string& origin)
{
    std::vector<Agent> agents;
    for (const Value& entry : readEntries(document, origin)) {
        Agent agent(addressOf(entry, origin));
        const auto& members = entry.holder().get<Value::Hash>();
        readFlag(members, "answers", agent.answers);
        readFlag(members, "printer", agent.printer);
        readText(members, "name", agent.name);
        readText(members, "model", agent.model);
        readText(members, "serial", agent.serial);
        agents.push_back(std::move(agent));
    }
    const auto before = [](const Agent& a, const Agent& b) { return a.address < b.address; };
    const auto same = [](const Agent& a, const Agent& b) { return a.address == b.address; };
    std::stable_sort(agents.begin(), agents.end(), before);
    agents.erase(std::unique(agents.begin(), agents.end(), same), agents.end());
    return agents;
}

std::string readFile(const std::string& file)
{
    const bool standardInput = file == "-";
    const auto close = [standardInput](std::FILE* opened) {
        if (opened != nullptr && !standardInput) {
            static_cast<void>(std::fclose(opened));
        }
    };
    const std::unique_ptr<std::FILE, decltype(close)> opened(
        standardInput ? stdin : std::fopen(file.c_str(), "rbe"), close);
    const std::string origin = standardInput ? "standard input" : file;
    if (!opened) {
        throw Failure(origin, errno);
    }
    std::string content;
    std::array<char, 65536> buffer = {};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), opened.get())) {
        content.append(buffer.data(), count);
        if (content.size() > largestDocument) {
            throw Failure(origin + ": more than 16 MiB");
        }
    }
    if (std::ferror(opened.get()) != 0) {
        throw Failure(origin, errno);
    }
    return content;
}

} // namespace inventory
