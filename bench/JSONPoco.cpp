#include "bench/JSONLibrary.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/JSON/Stringifier.h>

namespace {

using Poco::JSON::Array;
using Poco::JSON::Object;

/// Its arrays and objects are shared by their copies, so there is no copying to measure.
struct PocoJSON
{
    using Tree = Poco::Dynamic::Var;

    static Tree build(const Hosts& hosts)
    {
        Array::Ptr array = new Array;
        for (const std::string& host : hosts) {
            Object::Ptr object = new Object;
            object->set("hostname", host);
            array->add(object);
        }
        return array;
    }

    static Tree build(const Devices& devices)
    {
        Array::Ptr array = new Array;
        for (const Device& device : devices) {
            array->add(build(device));
        }
        return array;
    }

    static Object::Ptr build(const Device& device)
    {
        Object::Ptr position = new Object;
        position->set("building", device.building);
        position->set("coordinates", arrayOf(std::array{device.latitude, device.longitude}));
        Array::Ptr trays = new Array;
        for (const Tray& tray : device.trays) {
            Object::Ptr object = new Object;
            object->set("name", tray.name);
            object->set("capacity", tray.capacity);
            object->set("level", tray.level);
            trays->add(object);
        }
        Object::Ptr object = new Object;
        object->set("id", device.id);
        object->set("name", device.name);
        object->set("description", device.description);
        object->set("online", device.online);
        object->set("contact", Tree());
        object->set("load", device.load);
        object->set("temperature", device.temperature);
        object->set("current", device.current);
        object->set("position", position);
        object->set("pages", arrayOf(device.pages));
        object->set("trays", trays);
        object->set("alerts", Array::Ptr(new Array));
        object->set("tags", arrayOf(device.tags));
        return object;
    }

    template <typename Range>
    static Array::Ptr arrayOf(const Range& range)
    {
        Array::Ptr array = new Array;
        for (const auto& element : range) {
            array->add(element);
        }
        return array;
    }

    static Tree read(std::istream& in) { return Poco::JSON::Parser().parse(in); }

    static std::string write(const Tree& tree)
    {
        std::ostringstream out;
        Poco::JSON::Stringifier::stringify(tree, out);
        return out.str();
    }
};

} // namespace

void registerPoco(const Inputs& inputs)
{
    const std::string name = "Poco";
    check<PocoJSON>(name);
    registerReading<PocoJSON>("hosts", name, inputs.hosts.text);
    registerReading<PocoJSON>("mixed", name, inputs.mixed.text);
    registerTree<PocoJSON>("hosts", name, inputs.hosts.content);
    registerTree<PocoJSON>("mixed", name, inputs.mixed.content);
}
