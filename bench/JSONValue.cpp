#include "bench/JSONLibrary.h"
#include "value/Value.h"

#include <cstdlib>
#include <iostream>
#include <vector>

namespace {

struct OurValue
{
    using Tree = Value;

    static Value build(const Hosts& hosts)
    {
        Value::Array array;
        array.reserve(hosts.size());
        for (const std::string& host : hosts) {
            Value::Hash object;
            object.emplace("hostname", host);
            array.emplace_back(std::move(object));
        }
        return array;
    }

    static Value build(const Devices& devices)
    {
        Value::Array array;
        array.reserve(devices.size());
        for (const Device& device : devices) {
            array.push_back(build(device));
        }
        return array;
    }

    static Value build(const Device& device)
    {
        Value::Hash position;
        position.emplace("building", device.building);
        position.emplace("coordinates", arrayOf(std::array{device.latitude, device.longitude}));
        Value::Array trays;
        for (const Tray& tray : device.trays) {
            Value::Hash object;
            object.emplace("name", tray.name);
            object.emplace("capacity", tray.capacity);
            object.emplace("level", tray.level);
            trays.emplace_back(std::move(object));
        }
        Value::Hash object;
        object.emplace("id", device.id);
        object.emplace("name", device.name);
        object.emplace("description", device.description);
        object.emplace("online", device.online);
        object.emplace("contact", nullptr);
        object.emplace("load", device.load);
        object.emplace("temperature", device.temperature);
        object.emplace("current", device.current);
        object.emplace("position", std::move(position));
        object.emplace("pages", arrayOf(device.pages));
        object.emplace("trays", std::move(trays));
        object.emplace("alerts", Value::Array());
        object.emplace("tags", arrayOf(device.tags));
        return object;
    }

    template <typename Range>
    static Value::Array arrayOf(const Range& range)
    {
        return Value::Array(range.begin(), range.end());
    }

    static Value copy(const Value& value) { return value; }
    static Value read(std::istream& in) { return Value::parse_json(in); }
    static std::string write(const Value& value) { return value.to_json(); }
};

/// How many values the text holds, keys not counted.
std::size_t countValues(const std::string& text)
{
    std::istringstream in(text);
    const Value root = Value::parse_json(in);
    std::vector<const Value*> toDo = {&root};
    std::size_t count = 0;
    while (!toDo.empty()) {
        const Value& value = *toDo.back();
        toDo.pop_back();
        ++count;
        if (value.kind() == Value::Kind::Array) {
            for (const Value& element : value.holder().get<Value::Array>()) {
                toDo.push_back(&element);
            }
        } else if (value.kind() == Value::Kind::Hash) {
            for (const auto& entry : value.holder().get<Value::Hash>()) {
                toDo.push_back(&entry.second);
            }
        }
    }
    return count;
}

std::string normalised(std::string_view text)
{
    std::istringstream in((std::string(text)));
    return Value::parse_json(in).to_json();
}

} // namespace

void requireSame(const std::string& library, const std::string& text, std::string_view written)
{
    if (normalised(text) != normalised(written)) {
        std::cerr << library << " gives another document\n";
        std::exit(1); // NOLINT(concurrency-mt-unsafe): one thread
    }
}

void registerValue(const Inputs& inputs)
{
    const std::string name = "Value";
    check<OurValue>(name);
    benchmark::AddCustomContext("hosts values", std::to_string(countValues(inputs.hosts.text)));
    benchmark::AddCustomContext("mixed values", std::to_string(countValues(inputs.mixed.text)));
    registerReading<OurValue>("hosts", name, inputs.hosts.text);
    registerReading<OurValue>("mixed", name, inputs.mixed.text);
    registerTree<OurValue>("hosts", name, inputs.hosts.content);
    registerTree<OurValue>("mixed", name, inputs.mixed.content);
    registerCopying<OurValue>("hosts", name, inputs.hosts.content);
    registerCopying<OurValue>("mixed", name, inputs.mixed.content);
}
