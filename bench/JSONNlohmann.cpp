#include "bench/JSONLibrary.h"

#include <nlohmann/json.hpp>

namespace {

struct Nlohmann
{
    using Tree = nlohmann::json;

    static Tree build(const Hosts& hosts)
    {
        Tree::array_t array;
        array.reserve(hosts.size());
        for (const std::string& host : hosts) {
            Tree::object_t object;
            object.emplace("hostname", host);
            array.emplace_back(std::move(object));
        }
        return array;
    }

    static Tree build(const Devices& devices)
    {
        Tree::array_t array;
        array.reserve(devices.size());
        for (const Device& device : devices) {
            array.push_back(build(device));
        }
        return array;
    }

    static Tree build(const Device& device)
    {
        Tree::object_t position;
        position.emplace("building", device.building);
        position.emplace("coordinates", Tree::array_t{device.latitude, device.longitude});
        Tree::array_t trays;
        for (const Tray& tray : device.trays) {
            Tree::object_t object;
            object.emplace("name", tray.name);
            object.emplace("capacity", tray.capacity);
            object.emplace("level", tray.level);
            trays.emplace_back(std::move(object));
        }
        Tree::object_t object;
        object.emplace("id", device.id);
        object.emplace("name", device.name);
        object.emplace("description", device.description);
        object.emplace("online", device.online);
        object.emplace("contact", nullptr);
        object.emplace("load", device.load);
        object.emplace("temperature", device.temperature);
        object.emplace("current", device.current);
        object.emplace("position", std::move(position));
        object.emplace("pages", Tree::array_t(device.pages.begin(), device.pages.end()));
        object.emplace("trays", std::move(trays));
        object.emplace("alerts", Tree::array_t());
        object.emplace("tags", Tree::array_t(device.tags.begin(), device.tags.end()));
        return object;
    }

    static Tree copy(const Tree& tree) { return tree; }
    static Tree read(std::istream& in) { return Tree::parse(in); }
    static std::string write(const Tree& tree) { return tree.dump(); }
};

} // namespace

void registerNlohmann(const Inputs& inputs)
{
    const std::string name = "nlohmann";
    check<Nlohmann>(name);
    registerReading<Nlohmann>("hosts", name, inputs.hosts.text);
    registerReading<Nlohmann>("mixed", name, inputs.mixed.text);
    registerTree<Nlohmann>("hosts", name, inputs.hosts.content);
    registerTree<Nlohmann>("mixed", name, inputs.mixed.content);
    registerCopying<Nlohmann>("hosts", name, inputs.hosts.content);
    registerCopying<Nlohmann>("mixed", name, inputs.mixed.content);
}
