#include "bench/JSONLibrary.h"

#include <rapidjson/document.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

using Allocator = rapidjson::Document::AllocatorType;
using Node = rapidjson::Value;

Node string(const std::string& text, Allocator& allocator)
{
    return Node(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

/// Its values do not own their memory: the document does, in large blocks.
struct RapidJSON
{
    using Tree = rapidjson::Document;

    static Tree build(const Hosts& hosts)
    {
        Tree tree(rapidjson::kArrayType);
        Allocator& allocator = tree.GetAllocator();
        tree.Reserve(static_cast<rapidjson::SizeType>(hosts.size()), allocator);
        for (const std::string& host : hosts) {
            Node object(rapidjson::kObjectType);
            object.AddMember("hostname", string(host, allocator), allocator);
            tree.PushBack(object, allocator);
        }
        return tree;
    }

    static Tree build(const Devices& devices)
    {
        Tree tree(rapidjson::kArrayType);
        Allocator& allocator = tree.GetAllocator();
        tree.Reserve(static_cast<rapidjson::SizeType>(devices.size()), allocator);
        for (const Device& device : devices) {
            tree.PushBack(build(device, allocator), allocator);
        }
        return tree;
    }

    static Node build(const Device& device, Allocator& allocator)
    {
        Node coordinates(rapidjson::kArrayType);
        coordinates.PushBack(device.latitude, allocator).PushBack(device.longitude, allocator);
        Node position(rapidjson::kObjectType);
        position.AddMember("building", string(device.building, allocator), allocator);
        position.AddMember("coordinates", coordinates, allocator);
        Node trays(rapidjson::kArrayType);
        for (const Tray& tray : device.trays) {
            Node object(rapidjson::kObjectType);
            object.AddMember("name", string(tray.name, allocator), allocator);
            object.AddMember("capacity", Node(static_cast<std::int64_t>(tray.capacity)), allocator);
            object.AddMember("level", Node(static_cast<std::int64_t>(tray.level)), allocator);
            trays.PushBack(object, allocator);
        }
        Node pages(rapidjson::kArrayType);
        for (const long long page : device.pages) {
            pages.PushBack(Node(static_cast<std::int64_t>(page)), allocator);
        }
        Node tags(rapidjson::kArrayType);
        for (const std::string& tag : device.tags) {
            tags.PushBack(string(tag, allocator), allocator);
        }
        Node object(rapidjson::kObjectType);
        object.AddMember("id", Node(static_cast<std::int64_t>(device.id)), allocator);
        object.AddMember("name", string(device.name, allocator), allocator);
        object.AddMember("description", string(device.description, allocator), allocator);
        object.AddMember("online", device.online, allocator);
        object.AddMember("contact", Node(), allocator);
        object.AddMember("load", device.load, allocator);
        object.AddMember("temperature", device.temperature, allocator);
        object.AddMember("current", device.current, allocator);
        object.AddMember("position", position, allocator);
        object.AddMember("pages", pages, allocator);
        object.AddMember("trays", trays, allocator);
        object.AddMember("alerts", Node(rapidjson::kArrayType), allocator);
        object.AddMember("tags", tags, allocator);
        return object;
    }

    static Tree copy(const Tree& source)
    {
        Tree tree;
        tree.CopyFrom(source, tree.GetAllocator());
        return tree;
    }

    static Tree read(std::istream& in)
    {
        rapidjson::IStreamWrapper wrapper(in);
        Tree tree;
        tree.ParseStream(wrapper);
        return tree;
    }

    static rapidjson::StringBuffer write(const Tree& tree)
    {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        tree.Accept(writer);
        return buffer;
    }
};

void registerReadingText(const std::string& document, const std::string& text)
{
    registerOne(document + "/read/RapidJSON (string)", [&text](benchmark::State& state) {
        timeMaking(
            state,
            [&] {
                rapidjson::Document tree;
                tree.Parse(text.data(), text.size());
                return tree;
            },
            "heap");
    });
}

} // namespace

void registerRapidJSON(const Inputs& inputs)
{
    const std::string name = "RapidJSON";
    check<RapidJSON>(name);
    registerReading<RapidJSON>("hosts", name, inputs.hosts.text);
    registerReading<RapidJSON>("mixed", name, inputs.mixed.text);
    registerReadingText("hosts", inputs.hosts.text);
    registerReadingText("mixed", inputs.mixed.text);
    registerTree<RapidJSON>("hosts", name, inputs.hosts.content);
    registerTree<RapidJSON>("mixed", name, inputs.mixed.content);
    registerCopying<RapidJSON>("hosts", name, inputs.hosts.content);
    registerCopying<RapidJSON>("mixed", name, inputs.mixed.content);
}
