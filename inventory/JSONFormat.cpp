#include "inventory/JSONFormat.h"

#include <string_view>

namespace inventory {

namespace {

template <typename T>
void put(Value::Hash& hash, const char* key, const std::optional<T>& value)
{
    if (value) {
        hash.emplace(key, Value(*value));
    }
}

Value supplyValue(const Supply& supply)
{
    Value::Hash members;
    put(members, "name", supply.name);
    put(members, "type", supply.type);
    put(members, "class", supply.kind);
    put(members, "level", supply.level);
    put(members, "capacity", supply.capacity);
    put(members, "unit", supply.unit);
    put(members, "percent", supply.percent());
    return Value(std::move(members));
}

Value agentValue(const Agent& agent)
{
    Value::Hash members;
    members.emplace("hostname", Value(agent.address.text()));
    put(members, "answers", agent.answers);
    put(members, "name", agent.name);
    put(members, "description", agent.description);
    put(members, "location", agent.location);
    put(members, "contact", agent.contact);
    put(members, "objectID", agent.objectID);
    put(members, "uptime", agent.uptime);
    put(members, "printer", agent.printer);
    put(members, "model", agent.model);
    put(members, "serial", agent.serial);
    put(members, "status", agent.status);
    put(members, "pages", agent.pages);
    if (!agent.supplies.empty()) {
        Value::Array supplies;
        for (const Supply& supply : agent.supplies) {
            supplies.push_back(supplyValue(supply));
        }
        members.emplace("supplies", Value(std::move(supplies)));
    }
    return Value(std::move(members));
}

Value prometheusValue(const Agent& agent)
{
    Value::Hash labels;
    put(labels, "snmp_name", agent.name);
    put(labels, "snmp_model", agent.model);
    put(labels, "snmp_location", agent.location);
    labels.emplace("snmp_printer", Value(agent.isPrinter() ? "true" : "false"));
    Value::Hash members;
    members.emplace("targets", Value(Value::Array{Value(agent.address.text())}));
    members.emplace("labels", Value(std::move(labels)));
    return Value(std::move(members));
}

Value zabbixValue(const Agent& agent)
{
    Value::Hash macros;
    macros.emplace("{#ADDRESS}", Value(agent.address.text()));
    put(macros, "{#NAME}", agent.name);
    put(macros, "{#MODEL}", agent.model);
    macros.emplace("{#PRINTER}", Value(agent.isPrinter() ? "1" : "0"));
    return Value(std::move(macros));
}

std::string arrayOf(const std::vector<Agent>& agents, Value (*value)(const Agent&))
{
    Value::Array array;
    array.reserve(agents.size());
    for (const Agent& agent : agents) {
        array.push_back(value(agent));
    }
    return jsonLine(Value(std::move(array)));
}

} // namespace

std::string jsonLine(const Value& value)
{
    // The writer has escaped the controls below U+0020. What is left stands inside strings only.
    const std::string json = value.to_json();
    std::string line;
    line.reserve(json.size() + 1);
    for (std::size_t at = 0; at < json.size(); ++at) {
        const auto octet = static_cast<unsigned char>(json[at]);
        const auto second = at + 1 < json.size() ? static_cast<unsigned char>(json[at + 1]) : octet;
        if (octet == 0x7f) {
            line += "\\u007f";
        } else if (octet == 0xc2 && second >= 0x80 && second <= 0x9f) {
            constexpr std::string_view digits = "0123456789abcdef";
            line += "\\u00";
            line += digits[second >> 4U];
            line += digits[second & 0xfU];
            ++at;
        } else {
            line += json[at];
        }
    }
    return line + "\n";
}

std::string toJSON(const std::vector<Agent>& agents)
{
    return arrayOf(agents, &agentValue);
}

std::string toPrometheus(const std::vector<Agent>& agents)
{
    return arrayOf(agents, &prometheusValue);
}

std::string toZabbix(const std::vector<Agent>& agents)
{
    return arrayOf(agents, &zabbixValue);
}

std::string toAddresses(const std::vector<Agent>& agents)
{
    std::string lines;
    for (const Agent& agent : agents) {
        lines += agent.address.text() + "\n";
    }
    return lines;
}

} // namespace inventory
