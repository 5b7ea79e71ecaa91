#include "bench/JSONLibrary.h"

#include <json/json.h>

namespace {

struct JsonCpp
{
    using Tree = Json::Value;

    static Tree build(const Hosts& hosts)
    {
        Tree array(Json::arrayValue);
        for (const std::string& host : hosts) {
            Tree object(Json::objectValue);
            object["hostname"] = host;
            array.append(std::move(object));
        }
        return array;
    }

    static Tree build(const Devices& devices)
    {
        Tree array(Json::arrayValue);
        for (const Device& device : devices) {
            array.append(build(device));
        }
        return array;
    }

    static Tree build(const Device& device)
    {
        Tree position(Json::objectValue);
        position["building"] = device.building;
        position["coordinates"] = arrayOf(std::array{device.latitude, device.longitude});
        Tree trays(Json::arrayValue);
        for (const Tray& tray : device.trays) {
            Tree object(Json::objectValue);
            object["name"] = tray.name;
            object["capacity"] = static_cast<Json::Int64>(tray.capacity);
            object["level"] = static_cast<Json::Int64>(tray.level);
            trays.append(std::move(object));
        }
        Tree pages(Json::arrayValue);
        for (const long long page : device.pages) {
            pages.append(static_cast<Json::Int64>(page));
        }
        Tree object(Json::objectValue);
        object["id"] = static_cast<Json::Int64>(device.id);
        object["name"] = device.name;
        object["description"] = device.description;
        object["online"] = device.online;
        object["contact"] = Json::nullValue;
        object["load"] = device.load;
        object["temperature"] = device.temperature;
        object["current"] = device.current;
        object["position"] = std::move(position);
        object["pages"] = std::move(pages);
        object["trays"] = std::move(trays);
        object["alerts"] = Tree(Json::arrayValue);
        object["tags"] = arrayOf(device.tags);
        return object;
    }

    template <typename Range>
    static Tree arrayOf(const Range& range)
    {
        Tree array(Json::arrayValue);
        for (const auto& element : range) {
            array.append(element);
        }
        return array;
    }

    static Tree copy(const Tree& tree) { return tree; }

    static Tree read(std::istream& in)
    {
        Tree tree;
        Json::parseFromStream(Json::CharReaderBuilder(), in, &tree, nullptr);
        return tree;
    }

    /// On one line, and UTF-8 as it is: what the others write by default.
    static std::string write(const Tree& tree)
    {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        builder["emitUTF8"] = true;
        return Json::writeString(builder, tree);
    }
};

} // namespace

void registerJsonCpp(const Inputs& inputs)
{
    const std::string name = "JsonCpp";
    check<JsonCpp>(name);
    registerReading<JsonCpp>("hosts", name, inputs.hosts.text);
    registerReading<JsonCpp>("mixed", name, inputs.mixed.text);
    registerTree<JsonCpp>("hosts", name, inputs.hosts.content);
    registerTree<JsonCpp>("mixed", name, inputs.mixed.content);
    registerCopying<JsonCpp>("hosts", name, inputs.hosts.content);
    registerCopying<JsonCpp>("mixed", name, inputs.mixed.content);
}
